// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/ForwardingFileManager.h"

namespace annivo {

/// Passes everything on to another file manager, but for the failures that a test asks for. The
/// operations that change the disk are counted from 1 and recorded: "write", "writeDurably",
/// "open" (for appending), "append", "createDirectory" (of one that is not there), "remove",
/// "rename", "synchronize", "lock".
class FailingFileManager final : public ForwardingFileManager {
 public:
  struct Change {
    std::string operation;
    std::string path;
  };
  explicit FailingFileManager(NSFileManager& inner) : ForwardingFileManager(inner) {}

  /// The `number`-th change from now on fails with `code` and changes nothing.
  void failChange(std::size_t number, int code = ENOSPC);
  /// The same for it and all later ones, as on a disk that stays full.
  void failChangesFrom(std::size_t number, int code = ENOSPC);
  /// As if the process were killed in the middle of the `number`-th change: a write leaves half a
  /// temporary file, an append half its bytes, and nothing later reaches the disk.
  void killAtChange(std::size_t number);
  void failNoMore() { first_.reset(); }
  /// The file or folder is there, and cannot be read or listed.
  void makeUnreadable(const std::string& path) { unreadable_.insert(path); }
  void makeReadable(const std::string& path) { unreadable_.erase(path); }
  /// Neither the file nor anything below the folder can be changed.
  void makeUnwritable(const std::string& path) { unwritable_.insert(path); }

  /// Every change that was asked for, those that failed too.
  [[nodiscard]] const std::vector<Change>& changes() const { return changes_; }
  /// How many changes of files and folders were asked for; locks and synchronisations apart.
  [[nodiscard]] std::size_t fileChanges() const;

  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override;
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override;
  bool isWritable(const std::string& path) const override;
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override;
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override;
  Result<void> createDirectory(const std::string& path) override;
  Result<void> removeFile(const std::string& path) override;
  Result<void> rename(const std::string& from, const std::string& to) override;
  Result<void> synchronize(const std::string& path) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& path) override;

 private:
  class OpenFile;
  enum class Extent { one, rest };
  void plan(std::size_t number, Extent extent, int code);
  /// Counts a change; the error it is to fail with, if any.
  std::optional<Error> check(const std::string& operation, const std::string& path);
  [[nodiscard]] bool killedNow() const { return kill_ && changes_.size() == first_; }
  void leaveTemporary(const std::string& path, std::string_view bytes);
  [[nodiscard]] bool isUnwritable(const std::string& path) const;

  std::vector<Change> changes_;
  std::optional<std::size_t> first_;
  Extent extent_ = Extent::one;
  int code_ = 0;
  bool kill_ = false;
  std::set<std::string> unreadable_;
  std::set<std::string> unwritable_;
};

}  // namespace annivo
