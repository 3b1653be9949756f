// SPDX-License-Identifier: MIT
#include "tests/support/EditDatabase.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace annivo {

EditDatabase::EditDatabase(const std::string& path) {
  EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK) << path;
}

EditDatabase::~EditDatabase() { sqlite3_close(database_); }

EditDatabase& EditDatabase::run(const std::string& sql) {
  EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sql << ": " << sqlite3_errmsg(database_);
  return *this;
}

EditDatabase& EditDatabase::keepLog() {
  sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  return *this;
}

}  // namespace annivo
