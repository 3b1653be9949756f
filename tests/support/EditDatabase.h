// SPDX-License-Identifier: MIT
#pragma once

#include <string>

struct sqlite3;

namespace annivo {

/// A database file open for writing, as another program has it.
class EditDatabase {
 public:
  explicit EditDatabase(const std::string& path);
  ~EditDatabase();
  EditDatabase(const EditDatabase&) = delete;
  EditDatabase& operator=(const EditDatabase&) = delete;

  /// Runs statements; a failure fails the test.
  EditDatabase& run(const std::string& sql);
  /// Leaves the WAL and its index as they are when the database is closed, as a crash would.
  EditDatabase& keepLog();

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace annivo
