// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/coredata/CivilDay.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

/// "2026-07-04 12:00:00" of a moment in a zone.
std::string local(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(civil.year),
                civil.month, civil.day, civil.hour, civil.minute, civil.second);
  return text;
}

TEST(CivilDay, IsTheSameDayInEveryZoneSeasonAndCentury) {
  // UTC-12, UTC, +5:30, +12, +13, +14, and zones that move their clocks.
  const char* const zones[] = {"Etc/GMT+12",         "UTC",
                               "Asia/Kolkata",       "Asia/Anadyr",
                               "Etc/GMT-12",         "Pacific/Auckland",
                               "Pacific/Tongatapu",  "Etc/GMT-13",
                               "Pacific/Kiritimati", "Etc/GMT-14",
                               "Pacific/Chatham",    "Pacific/Apia",
                               "Asia/Manila",        "America/Juneau",
                               "Pacific/Honolulu",   "Europe/Berlin"};
  for (const char* name : zones) {
    const NSTimeZone zone(name);
    for (const int year : {1604, 1900, 1980, 2026}) {
      for (const unsigned month : {1U, 7U}) {
        for (const unsigned day : {1U, 31U}) {
          const CivilTime civil = zone.civil(civilDay(utc(year, month, day, 12), zone));
          EXPECT_EQ(civil.year, year) << name;
          EXPECT_EQ(civil.month, static_cast<int>(month)) << name << ' ' << year;
          EXPECT_EQ(civil.day, static_cast<int>(day)) << name << ' ' << year << '-' << month;
        }
      }
    }
  }
}

TEST(CivilDay, IsLocalNoonOnlyWhereTheInstantFallsOnAnotherDay) {
  const Date summer = utc(2026, 7, 4, 12);
  const Date winter = utc(2026, 1, 4, 12);
  const struct {
    const char* zone;
    Date stored;
    const char* expected;
  } rows[] = {
      {"UTC", summer, "2026-07-04 12:00:00"},
      {"Etc/GMT+12", summer, "2026-07-04 00:00:00"},
      {"Asia/Kolkata", summer, "2026-07-04 17:30:00"},
      {"Etc/GMT-11", summer, "2026-07-04 23:00:00"},
      {"Etc/GMT-12", summer, "2026-07-04 12:00:00"},
      {"Pacific/Auckland", summer, "2026-07-04 12:00:00"},
      {"Pacific/Auckland", winter, "2026-01-04 12:00:00"},
      {"Etc/GMT-13", winter, "2026-01-04 12:00:00"},
      {"Etc/GMT-14", winter, "2026-01-04 12:00:00"},
      // Before 1845 Manila was 15:56 behind, and Juneau 15:02 ahead until 1867.
      {"Asia/Manila", utc(1604, 3, 1, 12), "1604-03-01 12:00:00"},
      {"America/Juneau", utc(1604, 3, 1, 12), "1604-03-01 12:00:00"},
  };
  for (const auto& row : rows) {
    const NSTimeZone zone(row.zone);
    EXPECT_EQ(local(civilDay(row.stored, zone), zone), row.expected) << row.zone;
  }
}

TEST(CivilDay, IsAlsoADayThatTheZoneLeftOut) {
  const struct {
    const char* zone;
    int year;
    unsigned month, day;
  } rows[] = {{"Pacific/Apia", 2011, 12, 30},       {"Pacific/Fakaofo", 2011, 12, 30},
              {"Pacific/Kiritimati", 1994, 12, 31}, {"Pacific/Kanton", 1994, 12, 31},
              {"Pacific/Kwajalein", 1993, 8, 21},   {"Asia/Manila", 1844, 12, 31},
              {"Pacific/Guam", 1844, 12, 31}};
  for (const auto& row : rows) {
    const NSTimeZone zone(row.zone);
    const Date before = utc(row.year, row.month, row.day, 12) - std::chrono::days{1};
    const Date kept = civilDay(utc(row.year, row.month, row.day, 12), zone);
    const Date after = utc(row.year, row.month, row.day, 12) + std::chrono::days{1};
    const auto day = [&](Date date) { return local(date, zone).substr(0, 10); };
    EXPECT_EQ(day(kept), describe(utc(row.year, row.month, row.day)).substr(0, 10)) << row.zone;
    EXPECT_EQ(day(civilDay(before, zone)), describe(before).substr(0, 10)) << row.zone;
    EXPECT_EQ(day(civilDay(after, zone)), describe(after).substr(0, 10)) << row.zone;
  }
}

TEST(CivilDay, KeepsTheLeapDay) {
  for (const char* name : {"UTC", "Etc/GMT+12", "Pacific/Kiritimati"}) {
    const NSTimeZone zone(name);
    const CivilTime civil = zone.civil(civilDay(utc(1604, 2, 29, 12), zone));
    EXPECT_EQ(civil.month, 2) << name;
    EXPECT_EQ(civil.day, 29) << name;
  }
}

TEST(CivilDay, LeavesEveryOtherInstantAsStored) {
  const NSTimeZone zone("Pacific/Kiritimati");
  for (const Date stored :
       {utc(2026, 7, 4), utc(2026, 7, 4, 11, 59, 59), utc(2026, 7, 4, 12, 0, 1),
        utc(1604, 7, 4, 10), utc(2026, 7, 4, 12) + std::chrono::microseconds{1}}) {
    EXPECT_EQ(civilDay(stored, zone), stored);
  }
}

}  // namespace
}  // namespace annivo
