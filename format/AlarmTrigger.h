// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "base/NSCalendarDate.h"
#include "codecs/plist/PropertyList.h"

namespace annivo {

/// `triggerIntervalFromDays:andHours:`. Seconds from the midnight that begins an event's day to an
/// alarm `days` (read as a whole number) days before it, at the time of day of `hours`.
///
/// The time of day is measured on its own day, so a clock change between that day and the event's
/// does not shift it; `hours` that is no date counts as midnight. Days are turned into seconds in
/// 32 bits and wrap there. The result is truncated toward zero and held at the limits of 32 bits.
[[nodiscard]] std::int32_t triggerIntervalFromDaysAndHours(const PropertyList& days,
                                                           const PropertyList& hours,
                                                           const NSTimeZone& zone);

}  // namespace annivo
