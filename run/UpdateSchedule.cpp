// SPDX-License-Identifier: MIT
#include "run/UpdateSchedule.h"

#include <algorithm>
#include <limits>

namespace annivo {

bool updateCheckIsDue(std::int64_t interval, double elapsed, bool enabled) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t intervalSeconds = static_cast<std::int32_t>(interval);
  const auto elapsedSeconds = static_cast<std::int64_t>(
      std::clamp(elapsed, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
  return enabled && intervalSeconds - elapsedSeconds < 1;
}

}  // namespace annivo
