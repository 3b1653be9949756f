// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>

#include "base/Date.h"

namespace annivo {

/// A fresh folder under the temporary folder, removed with all it holds on destruction. The paths
/// its operations take are relative to it; folders on the way are made.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  /// The full path of `relative`.
  [[nodiscard]] std::string path(const std::string& relative) const;
  void writeFile(const std::string& relative, const std::string& bytes) const;
  /// The content; the test fails when there is no such file.
  [[nodiscard]] std::string readFile(const std::string& relative) const;
  [[nodiscard]] bool exists(const std::string& relative) const;
  void makeFolder(const std::string& relative) const;
  /// Removes a file, or a folder with what it holds.
  void remove(const std::string& relative) const;
  /// Sets the modification time.
  void touch(const std::string& relative, Date date) const;
  /// Makes another user the owner of the folder and all that it holds; only the superuser may.
  void giveTo(unsigned user) const;
  [[nodiscard]] Date modificationDate(const std::string& relative) const;

  /// Every entry below `relative` by its path: files with their content, links as "-> target",
  /// folders as "/".
  [[nodiscard]] std::map<std::string, std::string> snapshot(const std::string& relative = "") const;
  /// Every entry below with inode, size and time of last change: equal only when nothing was
  /// written, replaced or removed in between.
  [[nodiscard]] std::map<std::string, std::string> fingerprint(
      const std::string& relative = "") const;

 private:
  std::string path_;
};

}  // namespace annivo
