// SPDX-License-Identifier: MIT
#include "platform/coredata/CivilDay.h"

namespace annivo {

Date civilDay(Date stored, const NSTimeZone& zone) {
  const auto day = std::chrono::floor<std::chrono::days>(stored);
  if (stored - day != std::chrono::hours{12}) return stored;
  const std::chrono::year_month_day meant{day};
  const CivilTime noon{.year = static_cast<int>(meant.year()),
                       .month = static_cast<int>(static_cast<unsigned>(meant.month())),
                       .day = static_cast<int>(static_cast<unsigned>(meant.day())),
                       .hour = 12};
  const CivilTime local = zone.civil(stored);
  const bool sameDay =
      local.year == noon.year && local.month == noon.month && local.day == noon.day;
  return sameDay ? stored : zone.date(noon);
}

}  // namespace annivo
