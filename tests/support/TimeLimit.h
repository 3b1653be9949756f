// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <ctime>

namespace annivo {

/// Fails the test when its scope takes more than a second of this process's own time; how busy the
/// machine is does not count.
class TimeLimit {
 public:
  TimeLimit() = default;
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
  ~TimeLimit() { EXPECT_LT(std::clock() - start_, CLOCKS_PER_SEC); }

 private:
  std::clock_t start_ = std::clock();
};

}  // namespace annivo
