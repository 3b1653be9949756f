// SPDX-License-Identifier: MIT
#include "format/Occurrences.h"

namespace annivo {

std::vector<Occurrence> occurrences(Date date, Date now, const NSTimeZone& zone) {
  constexpr int kPasses = 3;
  std::vector<Occurrence> result;
  result.reserve(kPasses);
  const NSCalendarDate recorded(date, zone);
  const std::int64_t years = recorded.wholeYearsTo(now);
  for (int i = 0; i < kPasses; ++i) {
    const std::int64_t age = years + i;
    if (age >= 0) result.push_back({.age = age, .date = recorded.dateByAddingYears(age)});
  }
  return result;
}

}  // namespace annivo
