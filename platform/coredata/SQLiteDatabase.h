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
  /// Opens for reading only: nothing is written, not even beside the file where that can be had
  /// (a store in a folder without write permission reads too; a WAL beside it is honoured). Waits
  /// up to 5 s for a writer. The file must exist.
  static Result<SQLiteDatabase> openForReading(const std::string& path);
  /// Creates a new database file, mode 0600; the file must not exist.
  static Result<SQLiteDatabase> create(const std::string& path);
  SQLiteDatabase(SQLiteDatabase&& other) noexcept;
  SQLiteDatabase& operator=(SQLiteDatabase&&) = delete;
  ~SQLiteDatabase();

  Result<SQLiteStatement> prepare(const std::string& sql) const;
  /// Runs statements that yield no rows.
  Result<void> execute(const std::string& sql) const;
  /// Column names of a table in upper case, in order; empty when there is no such table.
  Result<std::vector<std::string>> columns(const std::string& table) const;

 private:
  SQLiteDatabase(sqlite3* database, std::string path);
  [[nodiscard]] Result<void> checkWhole(const std::string& file) const;

  sqlite3* database_;
  std::unique_ptr<std::string> path_;
};

}  // namespace annivo
