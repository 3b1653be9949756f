// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace annivo {

/// Whether a check for updates is due: interval minus elapsed, each first cut to 32 bits (the
/// interval to its low 32 bits, the elapsed seconds toward zero and held at the limits), is less
/// than 1, and checks are enabled. `elapsed` is negative for a last check in the future.
[[nodiscard]] bool updateCheckIsDue(std::int64_t interval, double elapsed, bool enabled);

}  // namespace annivo
