// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
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
/// 4. Where all went well but for events in calendars that may not be written for now, it stays and
///    says so: it is settled, and the first run that may write one of them takes its events up.
///
/// A run that finds it unsettled knows that the one before was cut off or met a failure.
class RunMark {
 public:
  struct Calendar {
    std::string uid;
    std::string key;  ///< of the parent's preference
  };

  /// `folder` is the ledger's, `otherFolder` the one that a run may have had to use in its place.
  /// Looks for the mark in both. The other folder is open to everybody, so only the mark's
  /// existence is taken from there, not its content.
  RunMark(Platform& platform, std::string folder, const std::string& otherFolder);

  /// Whether an earlier run left the mark unsettled.
  [[nodiscard]] bool wasFound() const { return wasFound_; }
  /// The calendars that the mark names.
  [[nodiscard]] const std::vector<Calendar>& calendars() const { return calendars_; }

  /// Sets the mark, with one more calendar where one is made; to be called before anything is
  /// changed, which may only be where this is true. A failure is presented, once, and lasts for the
  /// run.
  [[nodiscard]] bool beginChanges(std::optional<Calendar> made = std::nullopt);
  /// Whether the mark could not be set: then nothing was changed, and nothing makes the next run
  /// do it but that the time of this one is not stored.
  [[nodiscard]] bool couldNotBeSet() const { return couldNotBeSet_; }
  /// Takes note of a failure that the next run has to make good, so that the mark stays. What was
  /// refused or malformed would be so again: nothing to make good.
  void noteFailure(const Error& error);
  void noteFailure();
  /// The UIDs of calendars out of which events could not be taken, for they may not be written.
  [[nodiscard]] const std::vector<std::string>& lockedCalendars() const { return locked_; }
  void addLockedCalendar(const std::string& uid);
  void removeLockedCalendar(const std::string& uid);
  /// Removes or settles the mark where there was no failure; to be called when everything is on
  /// disk.
  void endChanges();

 private:
  void read();
  enum class State { unfinished, settled };
  Result<void> write(State state);
  Result<void> remove();
  /// Removes temporary files that a killed run left in the ledger's folder.
  void removeTemporaries();

  Platform& platform_;
  std::string folder_;
  std::string path_;
  std::string otherPath_;  ///< "": no mark there
  bool wasFound_ = false;
  bool isSet_ = false;      ///< it is on disk, unsettled
  bool isSettled_ = false;  ///< it is on disk, settled
  bool failed_ = false;     ///< something went wrong that the next run has to make good
  bool couldNotBeSet_ = false;
  std::vector<Calendar> calendars_;
  std::vector<std::string> locked_;
  bool lockedChanged_ = false;
};

}  // namespace annivo
