// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <ctime>

namespace annivo {

/// Fails the test when its scope takes more than a second of this process's own time: what hangs or
/// grows with the square of its input takes minutes. How busy the machine is does not count, nor
/// does what the sanitizers add.
class TimeLimit {
 public:
  TimeLimit() = default;
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
  ~TimeLimit() { EXPECT_LT(std::clock() - start_, kSeconds * CLOCKS_PER_SEC); }

 private:
#ifdef __SANITIZE_ADDRESS__
  static constexpr std::clock_t kSeconds = 10;
#else
  static constexpr std::clock_t kSeconds = 1;
#endif
  std::clock_t start_ = std::clock();
};

}  // namespace annivo
