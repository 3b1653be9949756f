// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace annivo {

/// Counts what the databases that are opened while it lives are asked to do. One at a time.
class SQLiteWork {
 public:
  SQLiteWork();
  ~SQLiteWork();
  SQLiteWork(const SQLiteWork&) = delete;
  SQLiteWork& operator=(const SQLiteWork&) = delete;

  /// Every statement that was run, in order.
  [[nodiscard]] const std::vector<std::string>& statements() const { return statements_; }
  /// Instructions of SQLite's virtual machine: for the same data the same on every machine.
  [[nodiscard]] std::uint64_t steps() const { return steps_; }

  // For the callbacks.
  void addStatement(const char* sql) { statements_.emplace_back(sql); }
  void addStep() { ++steps_; }

 private:
  std::vector<std::string> statements_;
  std::uint64_t steps_ = 0;
};

}  // namespace annivo
