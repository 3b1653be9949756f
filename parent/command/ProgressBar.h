// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "parent/command/Console.h"

namespace annivo {

/// A bar on the error stream: only on a terminal, and only once the work has taken a second.
class ProgressBar {
 public:
  using Now = std::function<std::chrono::steady_clock::time_point()>;
  explicit ProgressBar(const Console& console, Now now = std::chrono::steady_clock::now)
      : console_(console), now_(std::move(now)), start_(now_()) {}
  void show(std::uint64_t done, std::uint64_t all);
  /// Takes the bar away.
  void clear();

 private:
  const Console& console_;
  Now now_;
  std::chrono::steady_clock::time_point start_;
  int shown_ = -1;  ///< the last percentage
};

}  // namespace annivo
