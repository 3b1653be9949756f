// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "base/NSCalendarDate.h"

namespace annivo {

/// One yearly return of a date.
struct Occurrence {
  std::int64_t age = 0;  ///< years since the date itself
  Date date{};
  friend bool operator==(const Occurrence&, const Occurrence&) = default;
};

/// The last return of `date` that is not after `now`, and the two that follow it; for a date in
/// the future those of the three that are not before the date itself. The day and its time of day
/// are those of `date` in `zone`.
[[nodiscard]] std::vector<Occurrence> occurrences(Date date, Date now, const NSTimeZone& zone);

}  // namespace annivo
