// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>

#include "format/Occurrences.h"
#include "tests/format/LibcTime.h"

namespace annivo {
namespace {

struct Day {
  int year;
  int month;
  int day;
  auto operator<=>(const Day&) const = default;
};

bool isLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysIn(int month, int year) {
  if (month == 2) return isLeap(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

Day after(Day day) {
  if (++day.day > daysIn(day.month, day.year)) {
    day.day = 1;
    if (++day.month > 12) {
      day.month = 1;
      ++day.year;
    }
  }
  return day;
}

/// The day on which `born` returns in that year.
Day returnIn(int year, Day born) {
  const bool missing = born.month == 2 && born.day == 29 && !isLeap(year);
  return {year, born.month, missing ? 28 : born.day};
}

/// Each day of ten years as the present one, a second before noon, at noon and at its end, against
/// dates at noon: ages by comparing calendar days, moments by the C library.
void sweep(const char* name) {
  const LibcTime libc(name);
  const NSTimeZone zone(name);
  std::map<Day, Date> noons;
  const auto noon = [&](Day d) {
    const auto [at, isNew] = noons.try_emplace(d);
    if (isNew) at->second = libc.local(d.year, d.month, d.day, 12);
    return at->second;
  };
  for (const Day born :
       {Day{1980, 2, 28}, Day{1980, 2, 29}, Day{2000, 2, 29}, Day{1980, 3, 1}, Day{1981, 3, 1},
        Day{1980, 12, 31}, Day{1981, 1, 1}, Day{2025, 1, 1}, Day{2028, 2, 29}}) {
    for (Day today{2023, 1, 1}; today.year < 2033; today = after(today)) {
      for (const auto& [hour, minute, second, noonHasCome] :
           {std::tuple{11, 59, 59, false}, {12, 0, 0, true}, {23, 59, 59, true}}) {
        const Day thisYears = returnIn(today.year, born);
        const bool hasCome = thisYears < today || (thisYears == today && noonHasCome);
        int age = today.year - born.year - (hasCome ? 0 : 1);
        // Before the date itself whole years are counted toward zero: one less has begun, unless
        // the date lies whole years ahead to the second.
        if (age < 0 && !(hasCome && thisYears == today && hour == 12)) ++age;

        std::vector<Occurrence> expected;
        for (int n = age; n < age + 3; ++n) {
          if (n >= 0) expected.push_back({n, noon(returnIn(born.year + n, born))});
        }
        const Date now = libc.local(today.year, today.month, today.day, hour, minute, second);
        ASSERT_EQ(occurrences(noon(born), now, zone), expected)
            << name << ", born " << born.year << '-' << born.month << '-' << born.day << ", now "
            << today.year << '-' << today.month << '-' << today.day << ' ' << hour;
      }
    }
  }
}

TEST(OccurrencesSweep, UTC) { sweep("UTC"); }
TEST(OccurrencesSweep, NewYork) { sweep("America/New_York"); }
TEST(OccurrencesSweep, Santiago) { sweep("America/Santiago"); }
TEST(OccurrencesSweep, Berlin) { sweep("Europe/Berlin"); }
TEST(OccurrencesSweep, Kolkata) { sweep("Asia/Kolkata"); }
TEST(OccurrencesSweep, LordHowe) { sweep("Australia/Lord_Howe"); }
TEST(OccurrencesSweep, Kiritimati) { sweep("Pacific/Kiritimati"); }
TEST(OccurrencesSweep, PagoPago) { sweep("Pacific/Pago_Pago"); }

}  // namespace
}  // namespace annivo
