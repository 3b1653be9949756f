// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

#include "base/Error.h"

namespace annivo {

/// A folder for one copy, mode 0700; goes with all that is in it.
class PrivateFolder {
 public:
  static Result<PrivateFolder> make(const std::string& temporaryFolder);
  PrivateFolder(PrivateFolder&& other) noexcept;
  PrivateFolder& operator=(PrivateFolder&&) = delete;
  ~PrivateFolder();
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  explicit PrivateFolder(std::string path) : path_(std::move(path)) {}
  std::string path_;  ///< "": moved away
};

/// A database file as it lies on disk, with its journal, WAL and index beside it, and how it is
/// opened so that nothing is written there.
class SQLiteFile {
 public:
  /// A link is followed: what lies beside the file lies beside its target.
  explicit SQLiteFile(const std::string& path);

  /// Unreadable where the file, or what lies beside it, is anything but a regular file: opening a
  /// FIFO would wait for ever. Absent where there is none.
  [[nodiscard]] Result<void> check() const;

  enum class Manner {
    /// With SQLite's own locks. A shared index of a WAL ("-shm") is looked at, never changed; when
    /// nobody has the store open, SQLite makes an index of its own in memory.
    locked,
    /// A WAL without a shared index: nobody has the store open, as whoever has keeps one. SQLite
    /// would make the index file; with its lock-free file layer in exclusive mode it makes it in
    /// memory.
    privateIndex,
    /// A store made for a WAL that has none: nobody has it open, and SQLite would make both files.
    immutable,
  };
  [[nodiscard]] Manner manner() const;
  /// A "file:" URI.
  [[nodiscard]] std::string uri(Manner manner) const;

  /// What tells a change of the file or its WAL.
  struct Stamp {
    struct File {
      dev_t device;
      ino_t number;
      off_t size;
      std::int64_t changed;  ///< nanoseconds
      friend bool operator==(const File&, const File&) = default;
    };
    std::optional<File> file;
    std::optional<File> log;  ///< the WAL; none where it is empty
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  [[nodiscard]] Stamp stamp() const;
  /// Whether the file breaks off in the middle of a page that no WAL holds.
  [[nodiscard]] bool isCut(std::int64_t pageSize) const;
  /// Copies file and journal, both of one moment, to "store" and "store-journal" in `folder`.
  [[nodiscard]] Result<void> copyWithJournal(const std::string& folder) const;

 private:
  std::string path_;  ///< as it was given, for errors
  std::string real_;
};

/// Another program did not leave the file alone for long enough to read it.
[[nodiscard]] Error keepsChanging(const std::string& path);

}  // namespace annivo
