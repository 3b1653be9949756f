// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// Files that read through to others and keep every change in memory. What the others refuse to
/// write (a folder or file without permission) is refused here too.
class OverlayFileManager final : public NSFileManager {
 public:
  /// Both outlive this object.
  OverlayFileManager(const NSFileManager& base, const Clock& clock) : base_(base), clock_(clock) {}

  /// Puts a file's content over the base, whatever permissions say.
  void putFile(const std::string& path, std::string bytes);
  /// Puts a folder over the base.
  void putDirectory(const std::string& path);
  /// Hides what the base has there.
  void putAbsence(const std::string& path);
  /// The files that were written, created or removed, sorted; one that is again what the base holds
  /// is none.
  [[nodiscard]] std::vector<std::string> changedFiles() const;

  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override;
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override;
  Result<std::string> contentsOfFileItself(const std::string& path,
                                           std::size_t limit) const override;
  std::unique_ptr<ReadableFolder> openFolder(const std::string& path) const override;
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override {
    return base_.linkTarget(path);
  }
  bool isWritable(const std::string& path) const override;
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override;
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override;
  Result<void> createDirectory(const std::string& path) override;
  Result<void> removeFile(const std::string& path) override;
  Result<void> rename(const std::string& from, const std::string& to) override;
  Result<void> synchronize(const std::string& path) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& path) override;
  bool isOnDisk(const std::string& path) const override;
  bool supportsOtherThreads() const override { return base_.supportsOtherThreads(); }

 private:
  struct Entry {
    enum class Kind { file, directory, removed } kind = Kind::file;
    std::string bytes;
    Date modificationDate{};
  };
  class Appending;
  class Folder;

  [[nodiscard]] const Entry* find(const std::string& path) const;
  /// Of a file that this holds or hides; nothing when the base has to say.
  [[nodiscard]] std::optional<Result<std::string>> ownContents(const std::string& path,
                                                               std::size_t limit) const;
  Entry& entry(const std::string& path);
  /// Only of a folder that the base does not have.
  Result<void> renameDirectory(const std::string& from, const std::string& to);
  [[nodiscard]] Result<void> mayChange(const std::string& path) const;

  const NSFileManager& base_;
  const Clock& clock_;
  /// By name. Every file that is read is looked up, so that must cost nothing to speak of.
  using Entries = std::map<std::string, Entry, std::less<>>;
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };
  /// By folder.
  std::unordered_map<std::string, Entries, TextHash, std::equal_to<>> folders_;
  /// Held while folders_ changes, and while files are read, which another thread may do.
  mutable std::mutex changing_;
};

}  // namespace annivo
