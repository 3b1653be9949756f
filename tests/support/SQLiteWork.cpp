// SPDX-License-Identifier: MIT
#include "tests/support/SQLiteWork.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace annivo {

namespace {

/// Databases may outlive the one that counts.
SQLiteWork* counting = nullptr;

int onStatement(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* sql) {
  if (counting != nullptr) counting->addStatement(static_cast<const char*>(sql));
  return 0;
}

int onStep(void* /*context*/) {
  if (counting != nullptr) counting->addStep();
  return 0;
}

int onOpen(sqlite3* database, char** /*message*/, const void* /*routines*/) {
  sqlite3_trace_v2(database, SQLITE_TRACE_STMT, onStatement, nullptr);
  sqlite3_progress_handler(database, 1, onStep, nullptr);
  return SQLITE_OK;
}

}  // namespace

SQLiteWork::SQLiteWork() {
  EXPECT_EQ(counting, nullptr);
  counting = this;
  EXPECT_EQ(sqlite3_auto_extension(reinterpret_cast<void (*)()>(onOpen)), SQLITE_OK);
}

SQLiteWork::~SQLiteWork() {
  counting = nullptr;
  sqlite3_reset_auto_extension();
}

}  // namespace annivo
