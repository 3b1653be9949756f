// SPDX-License-Identifier: MIT
#include "base/NSCalendarDate.h"

#include <cctz/civil_time.h>
#include <cctz/time_zone.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <utility>

#include "base/PosixZone.h"

namespace annivo {

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

Date held(Date date) { return std::clamp(date, kEarliestDate, kLatestDate); }

/// Whether the zone left out the whole day of a reading, as those do that cross the date line.
bool skipsDayOf(const cctz::civil_second& reading, const cctz::time_zone& zone) {
  const auto found = zone.lookup(reading);
  return found.kind == cctz::time_zone::civil_lookup::SKIPPED &&
         found.pre - found.post >= std::chrono::hours{24};
}

cctz::time_zone loadZone(const std::string& name) {
  cctz::time_zone zone;
  if (cctz::load_time_zone(name, &zone)) return zone;
  if (const auto offset = standardOffsetOfPosixZone(name)) return cctz::fixed_time_zone(*offset);
  return cctz::utc_time_zone();
}

}  // namespace

// The zone's file is read when the first date is converted: many runs convert none.
struct NSTimeZone::Rules {
  explicit Rules(std::string zoneName) : name(std::move(zoneName)) {}

  [[nodiscard]] const cctz::time_zone& zone() const {
    std::call_once(once, [this] { loaded = loadZone(name); });
    return loaded;
  }

 private:
  std::string name;
  mutable std::once_flag once;
  mutable cctz::time_zone loaded;
};

NSTimeZone::NSTimeZone() : NSTimeZone("UTC") {}

NSTimeZone::NSTimeZone(const std::string& name)
    : rules_(std::make_shared<const Rules>(name.starts_with(':') ? name.substr(1) : name)) {}

NSTimeZone NSTimeZone::system(const std::string& tz) {
  return NSTimeZone(tz.empty() ? "/etc/localtime" : tz);
}

CivilTime NSTimeZone::civil(Date date) const {
  const auto whole = std::chrono::floor<seconds>(date);
  const auto found = rules_->zone().lookup(whole);
  cctz::civil_second reading = found.cs;
  // Noon in UTC lies on another day here only where the offset is 12 hours or more.
  constexpr int kHalfDay = 12 * 60 * 60;
  if ((found.offset >= kHalfDay || found.offset < -kHalfDay) &&
      date - std::chrono::floor<std::chrono::days>(date) == std::chrono::hours{12}) {
    const cctz::civil_second meant = cctz::civil_second() + whole.time_since_epoch().count();
    if (skipsDayOf(meant, rules_->zone())) reading = meant;
  }
  return {.year = reading.year(),
          .month = reading.month(),
          .day = reading.day(),
          .hour = reading.hour(),
          .minute = reading.minute(),
          .second = reading.second(),
          .fraction = date - whole};
}

Date NSTimeZone::date(const CivilTime& civil) const {
  const cctz::civil_second reading(civil.year, civil.month, civil.day, civil.hour, civil.minute,
                                   civil.second);
  // The offset before a change is right for all: it moves a skipped reading on by the gap and
  // gives the first of two.
  return rules_->zone().lookup(reading).pre + civil.fraction;
}

seconds NSTimeZone::offset(Date date) const {
  return seconds{rules_->zone().lookup(std::chrono::floor<seconds>(date)).offset};
}

NSCalendarDate::NSCalendarDate(Date date, const NSTimeZone& zone)
    : date_(held(date)), zone_(zone), civil_(zone.civil(date_)) {}

Date NSCalendarDate::dateByAddingYears(std::int64_t years) const {
  if (years == 0) return date_;
  CivilTime civil = civil_;
  civil.year += std::clamp<std::int64_t>(years, -20000, 20000);
  if (civil.year < 1) return kEarliestDate;
  if (civil.year > 9999) return kLatestDate;
  const bool leap = std::chrono::year{static_cast<int>(civil.year)}.is_leap();
  if (civil.month == 2 && civil.day == 29 && !leap) civil.day = 28;
  return held(zone_.date(civil));
}

std::int64_t NSCalendarDate::wholeYearsTo(Date to) const {
  const int direction = to < date_ ? -1 : 1;
  std::int64_t years = direction * (zone_.civil(to).year - civil_.year);
  const auto passes = [&](std::int64_t count) {
    const Date reached = dateByAddingYears(direction * count);
    return direction > 0 ? reached > to : reached < to;
  };
  while (years > 0 && passes(years)) --years;
  return direction * std::max<std::int64_t>(years, 0);
}

std::string yearText(Date date, const NSTimeZone& zone) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%04lld", static_cast<long long>(zone.civil(date).year));
  return text.data();
}

Date startOfDayByOffset(Date date, const NSTimeZone& zone) {
  const seconds offset = zone.offset(date);
  return Date{std::chrono::floor<std::chrono::days>(date + offset)} - offset;
}

}  // namespace annivo
