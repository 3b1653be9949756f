// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "base/Date.h"

namespace annivo {

/// A wall-clock reading in some zone.
struct CivilTime {
  std::int64_t year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::chrono::microseconds fraction{0};
  friend auto operator<=>(const CivilTime&, const CivilTime&) = default;
};

/// A time zone of the system's zone database. Cheap to copy; may be used by several threads.
class NSTimeZone {
 public:
  /// UTC.
  NSTimeZone();
  /// The zone of that name or TZ value ("Europe/Berlin", ":Europe/Berlin", "/path/to/tzfile",
  /// "UTC"). A POSIX value that the database does not hold ("UTC+5", "<+0530>-5:30") has its
  /// standard offset all year round; a value that names no zone is UTC. Read when first needed.
  explicit NSTimeZone(const std::string& name);
  /// The person's zone: `tz` (the value of TZ) when not empty, else /etc/localtime.
  static NSTimeZone system(const std::string& tz);

  /// The reading at that moment. Of a day that the zone left out when it crossed the date line,
  /// 12:00:00 UTC, as which days are kept, reads as noon.
  [[nodiscard]] CivilTime civil(Date date) const;
  /// The moment of a wall-clock reading. Fields beyond their range are carried over (day 31 of
  /// February is a day in March). A reading that the zone skips is moved on by the length of the
  /// gap; of one that comes twice, the first.
  [[nodiscard]] Date date(const CivilTime& civil) const;
  /// Offset from UTC at that moment.
  [[nodiscard]] std::chrono::seconds offset(Date date) const;

 private:
  struct Rules;
  std::shared_ptr<const Rules> rules_;
};

/// A date with its reading in a zone, for years to be reckoned from it.
class NSCalendarDate {
 public:
  NSCalendarDate(Date date, const NSTimeZone& zone);

  /// The date moved by whole years on local wall time; 29 February becomes 28 February in a common
  /// year. Results outside the years 1 to 9999 are held at that range.
  [[nodiscard]] Date dateByAddingYears(std::int64_t years) const;
  /// Whole years from here to `to` in the arithmetic of dateByAddingYears, truncated toward zero:
  /// the largest n >= 0 with this + n years <= to, or, where `to` is earlier, the negative of the
  /// largest n with this - n years >= to.
  [[nodiscard]] std::int64_t wholeYearsTo(Date to) const;

 private:
  Date date_;
  NSTimeZone zone_;
  CivilTime civil_;
};

/// "%Y" of the date in the zone: the year in decimal, at least four digits.
[[nodiscard]] std::string yearText(Date date, const NSTimeZone& zone);

/// Midnight at the start of the date's local day, reckoned with the zone's offset at `date` itself
/// (so the time of day keeps its clock reading on a day whose clock changes).
[[nodiscard]] Date startOfDayByOffset(Date date, const NSTimeZone& zone);

}  // namespace annivo
