// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "platform/coredata/SQLiteFile.h"
#include "platform/coredata/StoreReadings.h"
#include "platform/foundation/NSFileManager.h"

struct sqlite3;
struct sqlite3_stmt;

namespace annivo {

/// A prepared statement; finalised on destruction, before its database goes.
class SQLiteStatement {
 public:
  SQLiteStatement(SQLiteStatement&& other) noexcept;
  SQLiteStatement& operator=(SQLiteStatement&&) = delete;
  ~SQLiteStatement();

  void bind(int parameter, std::int64_t value);
  void bind(int parameter, double value);
  void bind(int parameter, std::string_view text);
  void bindBlob(int parameter, std::string_view bytes);
  void bindNull(int parameter);
  /// True while there is a row; false at the end (the statement is then reset and can run again).
  Result<bool> step();

  [[nodiscard]] bool isNull(int column) const;
  /// The number in an INTEGER or REAL column; nothing for nil and every other type.
  [[nodiscard]] std::optional<double> number(int column) const;
  [[nodiscard]] std::optional<std::int64_t> integer(int column) const;
  /// The bytes of a TEXT column (valid until the next step); nothing for every other type.
  [[nodiscard]] std::optional<std::string_view> text(int column) const;

 private:
  friend class SQLiteDatabase;
  SQLiteStatement(sqlite3_stmt* statement, const std::string& path)
      : statement_(statement), path_(&path) {}
  sqlite3_stmt* statement_;
  const std::string* path_;
};

/// One database file. Errors name the file.
class SQLiteDatabase {
 public:
  /// How often a file that another program changes meanwhile is read before it counts as
  /// unreadable.
  static constexpr int kMostReadings = 3;

  /// Opens for reading only: nothing is written, not even beside the file (a store in a folder
  /// without write permission reads too; a WAL beside it is honoured). What a crash left to be
  /// rolled back is rolled back in a private copy. Waits for writers as `readings` says. The file
  /// must exist.
  static Result<SQLiteDatabase> openForReading(
      const std::string& path,
      const std::shared_ptr<StoreReadings>& readings = std::make_shared<StoreReadings>());
  /// As above, for a file that `files` may hold elsewhere than on the disk.
  static Result<SQLiteDatabase> openForReading(
      const NSFileManager& files, const std::string& path,
      const std::shared_ptr<StoreReadings>& readings = std::make_shared<StoreReadings>());
  /// A new, empty database in memory, which errors call `path`.
  static Result<SQLiteDatabase> createInMemory(const std::string& path);
  SQLiteDatabase(SQLiteDatabase&& other) noexcept;
  SQLiteDatabase& operator=(SQLiteDatabase&&) = delete;
  ~SQLiteDatabase();

  Result<SQLiteStatement> prepare(const std::string& sql) const;
  /// Runs statements that yield no rows.
  Result<void> execute(const std::string& sql) const;
  /// Column names of a table in upper case, in order; empty when there is no such table.
  Result<std::vector<std::string>> columns(const std::string& table) const;
  /// Whether another program changed the file since it was opened, and what was read may be of
  /// neither state; it is then to be opened and read anew. Never where locks keep the states apart.
  [[nodiscard]] bool wasChanged() const;
  /// The content of the database's file.
  [[nodiscard]] Result<std::string> bytes() const;

 private:
  SQLiteDatabase(sqlite3* database, std::string path);
  static Result<SQLiteDatabase> open(const SQLiteFile& file, SQLiteFile::Manner manner,
                                     const std::string& path,
                                     std::shared_ptr<StoreReadings> readings);
  static Result<SQLiteDatabase> openCopy(const SQLiteFile& file, const std::string& path,
                                         const StoreReadings& readings);
  static Result<SQLiteDatabase> openBytes(std::string_view bytes, const std::string& path);
  /// Runs `first` before anything is read.
  Result<void> beginReading(const SQLiteFile& file, const std::string& first);
  [[nodiscard]] Result<void> checkWhole(const SQLiteFile& file) const;

  /// What a busy handler is given.
  struct Waiting {
    std::shared_ptr<StoreReadings> readings;
    std::string path;
  };
  struct Unlocked {
    SQLiteFile file;
    SQLiteFile::Stamp stamp;  ///< before it was opened
  };
  std::unique_ptr<Waiting> waiting_;
  std::optional<Unlocked> unlocked_;
  sqlite3* database_;
  std::unique_ptr<std::string> path_;
};

}  // namespace annivo
