// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <string>

namespace annivo {

/// What the readings of databases within a run share: how long locks of other programs are waited
/// for, and where a private copy may be made.
class StoreReadings {
 public:
  explicit StoreReadings(std::chrono::milliseconds lockWait = std::chrono::seconds{5},
                         std::string temporaryFolder = "/tmp")
      : lockWait_(lockWait), temporaryFolder_(std::move(temporaryFolder)) {}

  /// Waits a little for the lock on a file. False, at once, when `lockWait` was spent on that file
  /// already: who asks of a locked store a second thing does not wait a second time.
  bool waitForLock(const std::string& path);
  [[nodiscard]] const std::string& temporaryFolder() const { return temporaryFolder_; }

 private:
  std::chrono::milliseconds lockWait_;
  std::string temporaryFolder_;
  std::map<std::string, std::chrono::milliseconds> waited_;  ///< by path
};

}  // namespace annivo
