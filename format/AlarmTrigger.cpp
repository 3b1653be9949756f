// SPDX-License-Identifier: MIT
#include "format/AlarmTrigger.h"

#include <algorithm>
#include <limits>

namespace annivo {

std::int32_t triggerIntervalFromDaysAndHours(const PropertyList& days, const PropertyList& hours,
                                             const NSTimeZone& zone) {
  constexpr std::uint32_t kSecondsADay = 86400;
  const Date* time = hours.date();
  const double timeOfDay = time ? timeInterval(startOfDayByOffset(*time, zone), *time) : 0;
  const auto before =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(days.intValue()) * kSecondsADay);
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(
      std::clamp(timeOfDay - before, double{Limits::min()}, double{Limits::max()}));
}

}  // namespace annivo
