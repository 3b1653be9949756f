// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

namespace annivo {

namespace fs = std::filesystem;

namespace {

/// `path` as the path of a "file:" URI.
std::string uriPath(const std::string& path) {
  std::string uri;
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      std::array<char, 4> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned>(c));
      uri += escaped.data();
    } else {
      uri += c;
    }
  }
  return uri;
}

std::optional<SQLiteFile::Stamp::File> stampOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return SQLiteFile::Stamp::File{
      .device = status.st_dev,
      .number = status.st_ino,
      .size = status.st_size,
      .changed = status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

bool isNotEmpty(const std::string& path) {
  const auto stamp = stampOf(path);
  return stamp && stamp->size > 0;
}

bool isReadable(const std::string& path) { return ::access(path.c_str(), R_OK) == 0; }

std::string realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real == nullptr ? path : real.get();
}

/// Whether the file's header asks for a write-ahead log (read version 2).
bool wantsWriteAheadLog(const std::string& path) {
  std::array<char, 20> header{};
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const auto count = ::pread(file, header.data(), header.size(), 0);
  ::close(file);
  return count == static_cast<ssize_t>(header.size()) && header[19] == 2;
}

Result<void> copyFile(const std::string& from, const std::string& to) {
  std::error_code failed;
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, failed);
  if (!failed) fs::permissions(to, fs::perms::owner_read | fs::perms::owner_write, failed);
  if (failed) return errorFromErrno(failed.value(), "copy", from);
  return {};
}

}  // namespace

Result<PrivateFolder> PrivateFolder::make(const std::string& temporaryFolder) {
  std::string path = temporaryFolder + "/annivo-XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) {
    return errorFromErrno(errno, "make a folder in", temporaryFolder);
  }
  return PrivateFolder(std::move(path));
}

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})) {}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;  // It is empty of all that counts, and the system's to clear.
  if (!path_.empty()) fs::remove_all(path_, ignored);
}

SQLiteFile::SQLiteFile(const std::string& path) : path_(path), real_(realPath(path)) {}

Result<void> SQLiteFile::check() const {
  struct stat status {};
  if (::stat(real_.c_str(), &status) != 0) return errorFromErrno(errno, "read", path_);
  if (S_ISDIR(status.st_mode)) return errorFromErrno(EISDIR, "read", path_);
  if (!S_ISREG(status.st_mode)) return errorFromErrno(EACCES, "read", path_);
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    const std::string beside = real_ + suffix;
    if (::lstat(beside.c_str(), &status) != 0 || S_ISREG(status.st_mode)) continue;
    return Error{.kind = Error::Kind::unreadable,
                 .domain = "NSCocoaErrorDomain",
                 .code = 256,
                 .description = "The database \"" + path_ + "\" cannot be used: \"" + beside +
                                "\" is no regular file.",
                 .failureReason = ""};
  }
  return {};
}

SQLiteFile::Manner SQLiteFile::manner() const {
  const bool hasIndex = isReadable(real_ + "-shm");
  if (isNotEmpty(real_ + "-wal")) return hasIndex ? Manner::locked : Manner::privateIndex;
  if (!wantsWriteAheadLog(real_)) return Manner::locked;
  return hasIndex && isReadable(real_ + "-wal") ? Manner::locked : Manner::immutable;
}

std::string SQLiteFile::uri(Manner manner) const {
  std::string uri = "file:" + uriPath(real_) + "?mode=ro";
  switch (manner) {
    case Manner::locked:
      return uri + "&readonly_shm=1";
    case Manner::privateIndex:
      return uri + "&vfs=unix-none";
    case Manner::immutable:
      return uri + "&immutable=1";
  }
  return uri;
}

SQLiteFile::Stamp SQLiteFile::stamp() const {
  Stamp stamp{.file = stampOf(real_), .log = stampOf(real_ + "-wal")};
  if (stamp.log && stamp.log->size == 0) stamp.log.reset();
  return stamp;
}

bool SQLiteFile::isCut(std::int64_t pageSize) const {
  if (isNotEmpty(real_ + "-wal")) return false;
  const auto file = stampOf(real_);
  return file && file->size % std::max<std::int64_t>(pageSize, 1) != 0;
}

Result<void> SQLiteFile::copyWithJournal(const std::string& folder) const {
  constexpr int kTries = 3;
  const std::string journal = real_ + "-journal";
  for (int i = 0; i < kTries; ++i) {
    const auto before = std::pair(stampOf(real_), stampOf(journal));
    const std::string copy = folder + "/store";
    if (auto copied = copyFile(real_, copy); !copied) return copied;
    if (before.second) {
      if (auto copied = copyFile(journal, copy + "-journal"); !copied) return copied;
    }
    if (std::pair(stampOf(real_), stampOf(journal)) == before) return {};
    std::error_code none;
    fs::remove(copy + "-journal", none);
  }
  return keepsChanging(path_);
}

Error keepsChanging(const std::string& path) {
  return {.kind = Error::Kind::unreadable,
          .domain = "NSCocoaErrorDomain",
          .code = 256,
          .description = "The database \"" + path +
                         "\" cannot be used: another program keeps changing it while it is read.",
          .failureReason = ""};
}

}  // namespace annivo
