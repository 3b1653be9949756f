// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "platform/Platform.h"

namespace annivo {

/// The mark of a run that changes something, "Annivo 2.unfinished" in the ledger's folder.
///
/// 1. Written durably before the first change of a run.
/// 2. Names each calendar that the run creates, before it is created, with the preference that is
///    to name it.
/// 3. Removed after everything is on disk, and only if all went well.
///
/// A run that finds it knows that the one before was cut off or met a failure.
class RunMark {
 public:
  struct Calendar {
    std::string uid;
    std::string key;  ///< of the parent's preference
  };

  /// `folder` is the ledger's, `otherFolder` the one that a run may have had to use in its place.
  /// Looks whether the mark is in either; from the other, which anybody may write to, only that it
  /// is there is taken.
  RunMark(Platform& platform, std::string folder, const std::string& otherFolder);

  /// Whether an earlier run left the mark.
  [[nodiscard]] bool wasFound() const { return wasFound_; }
  /// Whether the mark is on disk.
  [[nodiscard]] bool isSet() const { return isSet_; }
  /// The calendars that the mark names.
  [[nodiscard]] const std::vector<Calendar>& calendars() const { return calendars_; }

  /// Sets the mark, if it is not set.
  Result<void> set();
  /// Sets the mark with one more calendar.
  Result<void> setWithCalendar(Calendar calendar);
  Result<void> remove();

 private:
  void read();
  Result<void> write();
  /// Removes temporary files that a killed run left in the ledger's folder.
  void removeTemporaries();

  Platform& platform_;
  std::string folder_;
  std::string path_;
  std::string otherPath_;  ///< "": no mark there
  bool wasFound_ = false;
  bool isSet_ = false;
  std::vector<Calendar> calendars_;
};

}  // namespace annivo
