// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Date.h"
#include "base/Error.h"

namespace annivo {

enum class FileType { regular, directory, symbolicLink, other };
enum class Links { follow, doNotFollow };

struct FileAttributes {
  FileType type = FileType::other;
  std::uint64_t size = 0;
  Date modificationDate{};
  mode_t permissions = 0;
};

struct DirectoryEntry {
  std::string name;
  FileType type = FileType::other;  ///< of the entry itself, links not followed
};

/// A file open for appending (the ledger's journal). Closed on destruction.
class AppendingFile {
 public:
  virtual ~AppendingFile() = default;
  /// Appends all bytes or fails; what a failure left behind may be a part of them.
  virtual Result<void> append(std::string_view bytes) = 0;
};

/// A folder held open, whose files are read by name: far cheaper than by path where many are. It
/// stays the folder that it was when another is put in its place.
class ReadableFolder {
 public:
  virtual ~ReadableFolder() = default;
  /// As contentsOfFileItself; `name` is one path component. The content is put into `memory`, that
  /// of the file before, say.
  [[nodiscard]] virtual Result<std::string> contentsOfFileItself(const std::string& name,
                                                                 std::size_t limit,
                                                                 std::string memory) const = 0;
  /// When an entry of it was last made, renamed or removed; nothing while there is no such folder.
  [[nodiscard]] virtual std::optional<Date> modificationDate() const = 0;
};

/// A held lock; released on destruction (and by the system when the process ends).
class FileLock {
 public:
  virtual ~FileLock() = default;
};

/// The files. All paths are absolute. The one seam through which the program changes the disk:
/// folders are made 0700, files 0600.
class NSFileManager {
 public:
  static constexpr std::size_t kDefaultLimit = std::size_t{512} * 1024 * 1024;
  virtual ~NSFileManager() = default;

  /// Absent when nothing is there (a dangling link, when followed).
  [[nodiscard]] virtual Result<FileAttributes> attributesAtPath(const std::string& path,
                                                                Links links) const = 0;
  /// The whole content of a regular file; links are followed. Anything else (a folder, a FIFO, a
  /// device) is unreadable and never blocks. A file over `limit` bytes is unreadable.
  [[nodiscard]] virtual Result<std::string> contentsAtPath(
      const std::string& path, std::size_t limit = kDefaultLimit) const = 0;
  /// The same for a file inside a folder that is not to be left: a link is unreadable.
  [[nodiscard]] virtual Result<std::string> contentsOfFileItself(const std::string& path,
                                                                 std::size_t limit) const;
  /// Where there is no such folder yet, every file in it is absent. The file manager must outlive
  /// the result.
  [[nodiscard]] virtual std::unique_ptr<ReadableFolder> openFolder(const std::string& path) const;
  /// Entries of a folder without "." and "..", sorted by name bytes.
  [[nodiscard]] virtual Result<std::vector<DirectoryEntry>> contentsOfDirectory(
      const std::string& path) const = 0;
  /// The full path of the file that a link stands for, whether it is there or not; `path` itself
  /// where there is no link. A link that somebody else made is unreadable.
  [[nodiscard]] virtual Result<std::string> linkTarget(const std::string& path) const {
    return path;
  }
  /// Whether this process may create and remove entries in a folder or write a file.
  [[nodiscard]] virtual bool isWritable(const std::string& path) const = 0;

  /// Replaces the file by way of "<folder>/.<name>.tmp" and rename. The folder must exist. After a
  /// failure the old file is as it was and no temporary file is left. Not synced: see synchronize.
  virtual Result<void> writeAtomically(const std::string& path, std::string_view bytes) = 0;
  /// The same, and durable when it returns (file and folder synced).
  virtual Result<void> writeDurably(const std::string& path, std::string_view bytes) = 0;
  /// Opens for appending, creating the file.
  virtual Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) = 0;
  /// Creates one folder, durably; ok when a folder is there already. Parents must exist.
  virtual Result<void> createDirectory(const std::string& path) = 0;
  /// Removes a file or link, never a folder; absent when nothing is there.
  virtual Result<void> removeFile(const std::string& path) = 0;
  virtual Result<void> rename(const std::string& from, const std::string& to) = 0;
  /// Makes all that was written so far to the file system of `path` durable (syncfs).
  virtual Result<void> synchronize(const std::string& path) = 0;
  /// Waits for the exclusive lock on a file, creating it.
  virtual Result<std::unique_ptr<FileLock>> lock(const std::string& path) = 0;

  /// Whether the file system itself has at `path` what this has there, so that a library that opens
  /// files by their paths reads the same. Where it has not, contentsAtPath gives the content.
  [[nodiscard]] virtual bool isOnDisk(const std::string& path) const = 0;

  /// Whether another thread may read files and synchronize while this one goes on.
  [[nodiscard]] virtual bool supportsOtherThreads() const { return false; }

  // The following use the operations above.
  [[nodiscard]] bool fileExistsAtPath(const std::string& path) const;
  /// createDirectory for `path` and every missing folder above it, up to but not above `root`,
  /// which must exist and lie at or above `path`.
  Result<void> createDirectoriesUnder(const std::string& root, const std::string& path);
  /// Where setAside would move what is at `path`: "<path>.damaged-20261120T184600Z" (of `now`, in
  /// UTC), or with "-2", "-3" … behind it where something is there already.
  [[nodiscard]] std::string pathAside(const std::string& path, Date now) const;
  /// Renames a damaged file, which somebody may still want to mend, to its pathAside, and gives
  /// that. Absent when nothing is at `path`.
  Result<std::string> setAside(const std::string& path, Date now);
};

class PosixFileManager final : public NSFileManager {
 public:
  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override;
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override;
  Result<std::string> contentsOfFileItself(const std::string& path,
                                           std::size_t limit) const override;
  std::unique_ptr<ReadableFolder> openFolder(const std::string& path) const override;
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  bool isWritable(const std::string& path) const override;
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override;
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override;
  Result<void> createDirectory(const std::string& path) override;
  Result<void> removeFile(const std::string& path) override;
  Result<void> rename(const std::string& from, const std::string& to) override;
  Result<void> synchronize(const std::string& path) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& path) override;
  bool isOnDisk(const std::string&) const override { return true; }
  bool supportsOtherThreads() const override { return true; }
};

/// A depth-first walk that yields paths relative to its root, parents before their contents, the
/// entries of a folder in name order. Links are not entered. A folder that is there and cannot be
/// listed yields nothing beneath it and a failure; a missing root yields nothing at all.
class NSDirectoryEnumerator {
 public:
  NSDirectoryEnumerator(const NSFileManager& files, std::string root);
  /// The next entry, or nothing at the end.
  std::optional<std::string> nextObject();
  /// Does not enter the entry that nextObject just returned.
  void skipDescendents() { enterPending_ = false; }
  /// Attributes of the entry just returned, its links not followed.
  [[nodiscard]] std::optional<FileAttributes> fileAttributes() const;
  /// Why folders met so far could not be listed, in the order of the walk.
  [[nodiscard]] const std::vector<Error>& failures() const { return failures_; }

 private:
  struct Level {
    std::string prefix;
    std::vector<DirectoryEntry> entries;
    std::size_t next = 0;
  };
  void enter(const std::string& relativePath);

  const NSFileManager& files_;
  std::string root_;
  std::vector<Level> levels_;
  std::vector<Error> failures_;
  std::string current_;
  bool enterPending_ = false;
};

/// `name` as one path component: refused (kind refused, naming `what`) when it is empty, "." or
/// "..", longer than 200 bytes, or holds "/", NUL or any other control character.
[[nodiscard]] Result<std::string> pathComponent(std::string_view name, const std::string& what);

}  // namespace annivo
