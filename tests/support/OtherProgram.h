// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/support/EditDatabase.h"

namespace annivo {

/// Another process that has a database open. (SQLite lets the connections of one process share what
/// those of two do not.)
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& path) {
    int commands[2];
    int answers[2];
    EXPECT_EQ(::pipe(commands) + ::pipe(answers), 0);
    child_ = ::fork();
    if (child_ == 0) {
      ::close(commands[1]);
      ::close(answers[0]);
      serve(path, commands[0], answers[1]);
    }
    ::close(commands[0]);
    ::close(answers[1]);
    commands_ = commands[1];
    answers_ = answers[0];
  }
  ~OtherProgram() {
    ::close(commands_);
    ::close(answers_);
    ::waitpid(child_, nullptr, 0);
  }
  /// Returns when it is done.
  void run(const std::string& sql) const {
    const std::string line = sql + '\n';
    EXPECT_EQ(::write(commands_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    char answer = 0;
    EXPECT_EQ(::read(answers_, &answer, 1), 1);
  }

 private:
  [[noreturn]] static void serve(const std::string& path, int commands, int answers) {
    {
      EditDatabase database(path);
      std::string sql;
      for (char c = 0; ::read(commands, &c, 1) == 1;) {
        if (c != '\n') {
          sql += c;
          continue;
        }
        database.run(sql);
        sql.clear();
        if (::write(answers, "", 1) != 1) break;
      }
    }
    ::_exit(0);
  }

  pid_t child_ = 0;
  int commands_ = -1;
  int answers_ = -1;
};

}  // namespace annivo
