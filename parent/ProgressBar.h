// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

#include "parent/Console.h"

namespace annivo {

/// A bar on the error stream: only on a terminal, and only once the work has taken a second.
class ProgressBar {
 public:
  explicit ProgressBar(const Console& console)
      : console_(console), start_(std::chrono::steady_clock::now()) {}
  void show(std::uint64_t done, std::uint64_t all);
  /// Takes the bar away.
  void clear();

 private:
  const Console& console_;
  std::chrono::steady_clock::time_point start_;
  int shown_ = -1;  ///< the last percentage
};

}  // namespace annivo
