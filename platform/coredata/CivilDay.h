// SPDX-License-Identifier: MIT
#pragma once

#include "base/Date.h"
#include "base/NSCalendarDate.h"

namespace annivo {

/// A stored day as the person means it. Days are kept as 12:00:00 UTC; where that very instant
/// falls on another local day (UTC+12 and east, and a few old local mean times), noon of the same
/// civil day in `zone`. Every other instant and zone, and a day that the zone left out: `stored`
/// itself.
[[nodiscard]] Date civilDay(Date stored, const NSTimeZone& zone);

}  // namespace annivo
