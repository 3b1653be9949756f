// SPDX-License-Identifier: MIT
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

#include "platform/foundation/Descriptor.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

namespace {

constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

FileType fileType(mode_t mode) {
  if (S_ISREG(mode)) return FileType::regular;
  if (S_ISDIR(mode)) return FileType::directory;
  if (S_ISLNK(mode)) return FileType::symbolicLink;
  return FileType::other;
}

Error unreadable(const std::string& path, const std::string& reason) {
  return {.kind = Error::Kind::unreadable,
          .domain = "NSCocoaErrorDomain",
          .description = "Cannot read " + path + ".",
          .failureReason = reason};
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string temporaryPath(const std::string& path) {
  const auto slash = path.rfind('/');
  return path.substr(0, slash + 1) + "." + path.substr(slash + 1) + ".tmp";
}

bool syncFolder(const std::string& path) {
  const Descriptor folder{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  return folder.valid() && ::fsync(folder.number()) == 0;
}

/// Opens a temporary file anew; one that an interrupted run left behind is replaced.
Descriptor createTemporary(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  Descriptor file{::open(path.c_str(), kFlags, kFileMode)};
  if (file.valid() || errno != EEXIST || ::unlink(path.c_str()) != 0) return file;
  return Descriptor{::open(path.c_str(), kFlags, kFileMode)};
}

enum class Durability { later, now };

Result<void> replaceFile(const std::string& path, std::string_view bytes, Durability durability) {
  const std::string temporary = temporaryPath(path);
  Descriptor file = createTemporary(temporary);
  if (!file.valid()) return errorFromErrno(errno, "write", path);
  const bool now = durability == Durability::now;
  const bool done = writeAll(file.number(), bytes) && (!now || ::fsync(file.number()) == 0) &&
                    file.close() && ::rename(temporary.c_str(), path.c_str()) == 0;
  if (!done) {
    const int code = errno;
    ::unlink(temporary.c_str());
    return errorFromErrno(code, "write", path);
  }
  if (now && !syncFolder(folderOf(path))) return errorFromErrno(errno, "synchronize", path);
  return {};
}

class PosixAppendingFile final : public AppendingFile {
 public:
  PosixAppendingFile(Descriptor file, std::string path)
      : file_(std::move(file)), path_(std::move(path)) {}
  Result<void> append(std::string_view bytes) override {
    if (!writeAll(file_.number(), bytes)) return errorFromErrno(errno, "write", path_);
    return {};
  }

 private:
  Descriptor file_;
  std::string path_;
};

class PosixFileLock final : public FileLock {
 public:
  explicit PosixFileLock(Descriptor file) : file_(std::move(file)) {}

 private:
  Descriptor file_;
};

FileType entryType(int folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_REG:
      return FileType::regular;
    case DT_DIR:
      return FileType::directory;
    case DT_LNK:
      return FileType::symbolicLink;
    case DT_UNKNOWN:
      break;
    default:
      return FileType::other;
  }
  struct stat status {};
  if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return FileType::other;
  return fileType(status.st_mode);
}

Result<std::string> readFile(const Descriptor& file, std::size_t limit, const auto& path,
                             std::string content = {}) {
  if (!file.valid()) return errorFromErrno(errno, "read", path());
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return errorFromErrno(errno, "read", path());
  if (!S_ISREG(status.st_mode)) return unreadable(path(), "It is not a regular file.");
  const auto tooLarge = [&] {
    return unreadable(path(), "It is larger than " + std::to_string(limit) + " bytes.");
  };
  if (static_cast<std::uint64_t>(status.st_size) > limit) return tooLarge();

  // One byte more than the file holds, so that the first read also sees its end.
  content.resize(static_cast<std::size_t>(status.st_size) + 1);
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = ::read(file.number(), content.data() + length, content.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errorFromErrno(errno, "read", path());
    length += static_cast<std::size_t>(count);
    if (count == 0 || length < content.size()) break;
    if (length > limit) return tooLarge();
    content.resize(std::min(2 * length, limit + 1));  // it is growing
  }
  content.resize(length);
  return content;
}

constexpr int kReading = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

Date modificationDateOf(const struct stat& status) {
  const auto modified = std::chrono::seconds{status.st_mtim.tv_sec} +
                        std::chrono::nanoseconds{status.st_mtim.tv_nsec};
  return Date{std::chrono::floor<std::chrono::microseconds>(modified)};
}

class PosixFolder final : public ReadableFolder {
 public:
  PosixFolder(Descriptor folder, std::string path)
      : folder_(std::move(folder)), path_(std::move(path)) {}
  Result<std::string> contentsOfFileItself(const std::string& name, std::size_t limit,
                                           std::string memory) const override {
    const Descriptor file{::openat(folder_.number(), name.c_str(), kReading | O_NOFOLLOW)};
    // One call is enough for a small file. Whatever does not let itself be read at an offset (a
    // FIFO, say, which would lose what it holds) is told apart by the other way.
    constexpr std::size_t kSmall = 2048;
    if (file.valid()) {
      memory.resize(kSmall);
      const ssize_t count = ::pread(file.number(), memory.data(), kSmall, 0);
      const auto length = static_cast<std::size_t>(count);
      if (count >= 0 && length < kSmall && length <= limit) {
        memory.resize(length);
        return memory;
      }
    }
    return readFile(
        file, limit, [&] { return path_ + "/" + name; }, std::move(memory));
  }
  std::optional<Date> modificationDate() const override {
    struct stat status {};
    if (::fstat(folder_.number(), &status) != 0) return std::nullopt;
    return modificationDateOf(status);
  }

 private:
  Descriptor folder_;
  std::string path_;
};

}  // namespace

Result<FileAttributes> PosixFileManager::attributesAtPath(const std::string& path,
                                                          Links links) const {
  struct stat status {};
  const int failed =
      links == Links::follow ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
  if (failed) return errorFromErrno(errno, "examine", path);
  return FileAttributes{.type = fileType(status.st_mode),
                        .size = static_cast<std::uint64_t>(status.st_size),
                        .modificationDate = modificationDateOf(status),
                        .permissions = status.st_mode & mode_t{07777}};
}

Result<std::string> PosixFileManager::contentsAtPath(const std::string& path,
                                                     std::size_t limit) const {
  const Descriptor file{::open(path.c_str(), kReading)};
  return readFile(file, limit, [&] { return path; });
}

Result<std::string> PosixFileManager::contentsOfFileItself(const std::string& path,
                                                           std::size_t limit) const {
  const Descriptor file{::open(path.c_str(), kReading | O_NOFOLLOW)};
  return readFile(file, limit, [&] { return path; });
}

std::unique_ptr<ReadableFolder> PosixFileManager::openFolder(const std::string& path) const {
  Descriptor folder{::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
  if (!folder.valid()) return NSFileManager::openFolder(path);
  return std::make_unique<PosixFolder>(std::move(folder), path);
}

Result<std::vector<DirectoryEntry>> PosixFileManager::contentsOfDirectory(
    const std::string& path) const {
  const auto close = [](DIR* folder) { ::closedir(folder); };
  const std::unique_ptr<DIR, decltype(close)> folder{::opendir(path.c_str()), close};
  if (!folder) return errorFromErrno(errno, "list", path);
  std::vector<DirectoryEntry> entries;
  errno = 0;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      entries.push_back({std::string(name), entryType(::dirfd(folder.get()), *entry)});
    }
    errno = 0;
  }
  if (errno != 0) return errorFromErrno(errno, "list", path);
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
  return entries;
}

Result<std::string> PosixFileManager::linkTarget(const std::string& path) const {
  constexpr int kMostLinks = 40;
  std::string target = path;
  for (int links = 0; links < kMostLinks; ++links) {
    struct stat status {};
    if (::lstat(target.c_str(), &status) != 0) {
      if (errno == ENOENT) return target;
      return errorFromErrno(errno, "examine", target);
    }
    if (!S_ISLNK(status.st_mode)) return target;
    if (status.st_uid != ::geteuid()) return unreadable(target, "It is somebody else's link.");
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(target.c_str(), text.data(), text.size());
    if (length < 0) return errorFromErrno(errno, "read", target);
    const std::string_view next(text.data(), static_cast<std::size_t>(length));
    target = next.starts_with('/') ? std::string(next) : folderOf(target).append("/").append(next);
  }
  return errorFromErrno(ELOOP, "read", path);
}

bool PosixFileManager::isWritable(const std::string& path) const {
  if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) return false;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return false;
  return !S_ISDIR(status.st_mode) ||
         ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

Result<void> PosixFileManager::writeAtomically(const std::string& path, std::string_view bytes) {
  return replaceFile(path, bytes, Durability::later);
}

Result<void> PosixFileManager::writeDurably(const std::string& path, std::string_view bytes) {
  return replaceFile(path, bytes, Durability::now);
}

Result<std::unique_ptr<AppendingFile>> PosixFileManager::openForAppending(const std::string& path) {
  Descriptor file{::open(
      path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC,
      kFileMode)};
  if (!file.valid()) return errorFromErrno(errno, "write", path);
  return std::unique_ptr<AppendingFile>(
      std::make_unique<PosixAppendingFile>(std::move(file), path));
}

Result<void> PosixFileManager::createDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), kFolderMode) == 0) {
    if (syncFolder(folderOf(path))) return {};
    return errorFromErrno(errno, "synchronize", path);
  }
  const int code = errno;
  struct stat status {};
  if (code == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return {};
  return errorFromErrno(code, "create the folder", path);
}

Result<void> PosixFileManager::removeFile(const std::string& path) {
  if (::unlink(path.c_str()) == 0) return {};
  return errorFromErrno(errno, "remove", path);
}

Result<void> PosixFileManager::rename(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) == 0) return {};
  return errorFromErrno(errno, "rename", from);
}

Result<void> PosixFileManager::synchronize(const std::string& path) {
  const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
  if (!file.valid() || ::syncfs(file.number()) != 0) {
    return errorFromErrno(errno, "synchronize", path);
  }
  return {};
}

Result<std::unique_ptr<FileLock>> PosixFileManager::lock(const std::string& path) {
  Descriptor file{::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kFileMode)};
  if (!file.valid()) return errorFromErrno(errno, "lock", path);
  while (::flock(file.number(), LOCK_EX) != 0) {
    if (errno != EINTR) return errorFromErrno(errno, "lock", path);
  }
  return std::unique_ptr<FileLock>(std::make_unique<PosixFileLock>(std::move(file)));
}

}  // namespace annivo
