// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "base/NSCalendarDate.h"
#include "base/PosixZone.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

std::string text(const CivilTime& time) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%04lld-%02d-%02d %02d:%02d:%02d",
                static_cast<long long>(time.year), time.month, time.day, time.hour, time.minute,
                time.second);
  return buffer;
}

TEST(NSTimeZone, ReadsTheClockOfManyZones) {
  const struct {
    const char* zone;
    Date date;
    const char* reading;
  } rows[] = {
      {"UTC", utc(2026, 11, 20, 18, 46), "2026-11-20 18:46:00"},
      {"Etc/GMT+12", utc(2026, 1, 1, 11, 59), "2025-12-31 23:59:00"},
      {"Asia/Kolkata", utc(2026, 6, 10, 18, 30), "2026-06-11 00:00:00"},
      {"Pacific/Auckland", utc(2026, 7, 1, 12), "2026-07-02 00:00:00"},
      {"Pacific/Auckland", utc(2026, 1, 1, 12), "2026-01-02 01:00:00"},
      {"Pacific/Tongatapu", utc(2026, 6, 10, 12), "2026-06-11 01:00:00"},
      {"Pacific/Kiritimati", utc(2026, 6, 10, 12), "2026-06-11 02:00:00"},
      {"Europe/Berlin", utc(2026, 7, 1), "2026-07-01 02:00:00"},
      // Before standard time: local mean time.
      {"Europe/Berlin", utc(1604, 2, 29, 12), "1604-02-29 12:53:28"},
      {"Europe/Berlin", utc(1893, 3, 31), "1893-03-31 00:53:28"},
      {"America/New_York", utc(1604, 1, 1, 12), "1604-01-01 07:03:58"},
      // Far ahead the last rule goes on.
      {"Europe/Berlin", utc(2500, 7, 1), "2500-07-01 02:00:00"},
      {"Europe/Berlin", utc(9999, 1, 1), "9999-01-01 01:00:00"},
      {"America/Sao_Paulo", utc(2017, 10, 15, 2, 59, 59), "2017-10-14 23:59:59"},
      {"America/Sao_Paulo", utc(2017, 10, 15, 3), "2017-10-15 01:00:00"},
      {"Pacific/Apia", utc(2011, 12, 30, 9, 59, 59), "2011-12-29 23:59:59"},
      {"Pacific/Apia", utc(2011, 12, 30, 10), "2011-12-31 00:00:00"},
      {"UTC", utc(1, 1, 1), "0001-01-01 00:00:00"},
  };
  for (const auto& row : rows) {
    const NSTimeZone zone(row.zone);
    EXPECT_EQ(text(zone.civil(row.date)), row.reading) << row.zone;
    EXPECT_EQ(zone.date(zone.civil(row.date)), row.date) << row.zone << " " << row.reading;
  }
}

TEST(NSTimeZone, KeepsTheFractionOfASecondAlsoBeforeTheEpoch) {
  const NSTimeZone zone("Asia/Kolkata");
  for (const Date date :
       {utc(2026, 1, 1) + 1us, utc(1931, 5, 6) - 1us, utc(1604, 1, 1) + 999999us}) {
    const CivilTime civil = zone.civil(date);
    EXPECT_GE(civil.fraction, 0us);
    EXPECT_LT(civil.fraction, 1s);
    EXPECT_EQ(zone.date(civil), date);
  }
}

TEST(NSTimeZone, MovesASkippedReadingOnAndTakesTheFirstOfTwo) {
  const struct {
    const char* zone;
    CivilTime reading;
    Date date;
  } rows[] = {
      // 02:30 is skipped: 03:30 summer time.
      {"Europe/Berlin", {2026, 3, 29, 2, 30}, utc(2026, 3, 29, 1, 30)},
      {"Europe/Berlin", {2026, 3, 29, 2, 0}, utc(2026, 3, 29, 1)},
      {"Europe/Berlin", {2026, 3, 29, 1, 59, 59}, utc(2026, 3, 29, 0, 59, 59)},
      // 02:30 comes twice.
      {"Europe/Berlin", {2026, 10, 25, 2, 30}, utc(2026, 10, 25, 0, 30)},
      {"Europe/Berlin", {2026, 10, 25, 3, 0}, utc(2026, 10, 25, 2)},
      // Midnight is skipped: the day begins at one.
      {"America/Sao_Paulo", {2017, 10, 15}, utc(2017, 10, 15, 3)},
      {"Asia/Beirut", {2022, 3, 27}, utc(2022, 3, 26, 22)},
      {"Africa/Cairo", {2023, 4, 28}, utc(2023, 4, 27, 22)},
      // The hour before midnight comes twice.
      {"America/Sao_Paulo", {2018, 2, 17, 23, 30}, utc(2018, 2, 18, 1, 30)},
      // A whole day is skipped.
      {"Pacific/Apia", {2011, 12, 30, 12}, utc(2011, 12, 30, 22)},
      // Half an hour.
      {"Australia/Lord_Howe", {2026, 10, 4, 2, 15}, utc(2026, 10, 3, 15, 45)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(describe(NSTimeZone(row.zone).date(row.reading)), describe(row.date)) << row.zone;
  }
}

TEST(NSTimeZone, ReadsNoonInUTCOfADayLeftOutAsNoonOfThatDay) {
  const std::pair<const char*, CivilTime> rows[] = {
      {"Pacific/Apia", {.year = 2011, .month = 12, .day = 30, .hour = 12}},
      {"Pacific/Kiritimati", {.year = 1994, .month = 12, .day = 31, .hour = 12}},
      {"Pacific/Kwajalein", {.year = 1993, .month = 8, .day = 21, .hour = 12}},
      {"Asia/Manila", {.year = 1844, .month = 12, .day = 31, .hour = 12}}};
  for (const auto& [name, noon] : rows) {
    const NSTimeZone zone(name);
    const Date moment = NSTimeZone().date(noon);
    EXPECT_EQ(zone.civil(moment), noon) << name;
    for (const auto near : {-1us, 1us}) {
      EXPECT_NE(zone.civil(moment + near).day, noon.day) << name;
    }
  }
}

TEST(NSTimeZone, CarriesFieldsBeyondTheirRange) {
  const NSTimeZone zone("UTC");
  EXPECT_EQ(zone.date({2026, 2, 31}), utc(2026, 3, 3));
  EXPECT_EQ(zone.date({2026, 13, 1}), utc(2027, 1, 1));
  EXPECT_EQ(zone.date({2026, 1, 0}), utc(2025, 12, 31));
  EXPECT_EQ(zone.date({2026, 1, 1, 24}), utc(2026, 1, 2));
  EXPECT_EQ(zone.date({2026, 1, 1, 0, -1}), utc(2025, 12, 31, 23, 59));
}

TEST(NSTimeZone, UnderstandsTheFormsOfTZ) {
  const Date summer = utc(2026, 7, 1);
  const struct {
    const char* tz;
    std::chrono::seconds offset;
  } rows[] = {
      {"UTC", 0s},
      {"Europe/Berlin", 2h},
      {":Europe/Berlin", 2h},
      {"/usr/share/zoneinfo/Europe/Berlin", 2h},
      {":/usr/share/zoneinfo/Asia/Kolkata", 5h + 30min},
      {"UTC+5", -5h},
      {"UTC-5", 5h},
      {"ABC5", -5h},
      {"<+0530>-5:30", 5h + 30min},
      {"<-03>3", -3h},
      {"XYZ-1:02:03", 1h + 2min + 3s},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1h},  // without rules of summer time
      {"No/Such_Zone", 0s},
      {"nonsense", 0s},
      {"AB5", 0s},
      {"ABC5:99", 0s},
      {"ABC25", 0s},
      {"/etc/passwd", 0s},
      {"../../../etc/passwd", 0s},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NSTimeZone(row.tz).offset(summer), row.offset) << row.tz;
  }
  EXPECT_EQ(NSTimeZone().offset(summer), 0s);
  EXPECT_EQ(NSTimeZone::system("Asia/Kolkata").offset(summer), 5h + 30min);
}

TEST(NSTimeZone, TakesTheMachinesOwnZoneWhereTZIsNotSet) {
  EXPECT_EQ(NSTimeZone::system("").offset(utc(2026, 7, 1)),
            NSTimeZone("/etc/localtime").offset(utc(2026, 7, 1)));
}

TEST(DateByAddingYears, KeepsTheWallClock) {
  const struct {
    const char* zone;
    Date date;
    std::int64_t years;
    Date result;
  } rows[] = {
      {"UTC", utc(1980, 6, 10, 12), 46, utc(2026, 6, 10, 12)},
      {"UTC", utc(2026, 6, 10, 12), 0, utc(2026, 6, 10, 12)},
      {"UTC", utc(2026, 6, 10, 12), -46, utc(1980, 6, 10, 12)},
      {"UTC", utc(2024, 2, 29, 12), 1, utc(2025, 2, 28, 12)},
      {"UTC", utc(2024, 2, 29, 12), 4, utc(2028, 2, 29, 12)},
      {"UTC", utc(1604, 2, 29, 12), 296, utc(1900, 2, 28, 12)},
      {"UTC", utc(1604, 2, 29, 12), 396, utc(2000, 2, 29, 12)},
      {"UTC", utc(2024, 2, 29, 12), -1, utc(2023, 2, 28, 12)},
      {"UTC", utc(2025, 2, 28, 12), 3, utc(2028, 2, 28, 12)},
      // 29 February here, 1 March in UTC.
      {"Etc/GMT+12", utc(2024, 3, 1, 11), 1, utc(2025, 3, 1, 11)},
      // Without and with summer time, the same hour.
      {"Europe/Berlin", utc(1975, 7, 1, 11), 51, utc(2026, 7, 1, 10)},
      {"Europe/Berlin", utc(1604, 7, 1, 12), 422, utc(2026, 7, 1, 10, 53, 28)},
      // Into a skipped hour and a skipped day.
      {"Europe/Berlin", utc(2025, 3, 29, 1, 30), 1, utc(2026, 3, 29, 1, 30)},
      {"Pacific/Apia", utc(2010, 12, 30, 22), 1, utc(2011, 12, 30, 22)},
      {"America/Sao_Paulo", utc(2016, 10, 15, 3), 1, utc(2017, 10, 15, 3)},
      // Held in the range of dates.
      {"UTC", utc(2026, 1, 1), 8000, kLatestDate},
      {"UTC", utc(2026, 1, 1), -3000, kEarliestDate},
      {"UTC", utc(2026, 1, 1), std::numeric_limits<std::int64_t>::max(), kLatestDate},
      {"UTC", utc(2026, 1, 1), std::numeric_limits<std::int64_t>::min(), kEarliestDate},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(describe(NSCalendarDate(row.date, NSTimeZone(row.zone)).dateByAddingYears(row.years)),
              describe(row.result))
        << row.zone << " " << describe(row.date) << " + " << row.years;
  }
}

TEST(DateByAddingYears, TakesTheFirstOfTwoReadings) {
  const NSTimeZone zone("Europe/Berlin");
  // 26 October 2025 02:30 comes twice; a year before it does not.
  EXPECT_EQ(NSCalendarDate(utc(2024, 10, 26, 0, 30), zone).dateByAddingYears(1),
            utc(2025, 10, 26, 0, 30));
}

TEST(WholeYears, CountsInTheSameArithmetic) {
  const struct {
    const char* zone;
    Date from;
    Date to;
    std::int64_t years;
  } rows[] = {
      {"UTC", utc(1980, 6, 10, 12), utc(2026, 11, 15), 46},
      {"UTC", utc(1980, 12, 20, 12), utc(2026, 11, 15), 45},
      // On the day itself: up to the second.
      {"UTC", utc(1980, 6, 10, 12), utc(2026, 6, 10, 12), 46},
      {"UTC", utc(1980, 6, 10, 12), utc(2026, 6, 10, 11, 59, 59), 45},
      {"UTC", utc(2026, 6, 10), utc(2026, 6, 10), 0},
      // Leap days.
      {"UTC", utc(2024, 2, 29), utc(2025, 2, 28), 1},
      {"UTC", utc(2024, 2, 29), utc(2025, 2, 27, 23, 59, 59), 0},
      {"UTC", utc(2024, 2, 29), utc(2028, 2, 28, 23, 59, 59), 3},
      {"UTC", utc(2024, 2, 29), utc(2028, 2, 29), 4},
      {"UTC", utc(2023, 2, 28), utc(2024, 2, 28), 1},
      {"UTC", utc(1604, 2, 29, 12), utc(2026, 2, 28, 12), 422},
      // The future: truncated toward zero.
      {"UTC", utc(2027, 6, 10), utc(2026, 11, 20), 0},
      {"UTC", utc(2027, 11, 20), utc(2026, 11, 20), -1},
      {"UTC", utc(2027, 11, 19), utc(2026, 11, 20), 0},
      {"UTC", utc(2029, 11, 21), utc(2026, 11, 20), -3},
      {"UTC", utc(2028, 2, 29), utc(2027, 2, 28), -1},
      // By the clock of the zone.
      {"Pacific/Kiritimati", utc(1980, 6, 9, 12), utc(2026, 6, 10, 6), 46},
      {"Europe/Berlin", utc(1970, 7, 1, 11), utc(2026, 7, 1, 10), 56},
      {"Europe/Berlin", utc(1970, 7, 1, 11), utc(2026, 7, 1, 9, 59, 59), 55},
      {"UTC", kEarliestDate, kLatestDate, 9998},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NSCalendarDate(row.from, NSTimeZone(row.zone)).wholeYearsTo(row.to), row.years)
        << row.zone << " " << describe(row.from) << " to " << describe(row.to);
  }
}

TEST(WholeYears, IsTheLargestNumberThatFits) {
  const std::uint32_t seed = 7;
  SCOPED_TRACE(seed);
  std::mt19937_64 random(seed);
  const auto anyDate = [&] {
    const auto span = static_cast<std::uint64_t>((utc(2400, 1, 1) - utc(1604, 1, 1)).count());
    return utc(1604, 1, 1) + std::chrono::microseconds{random() % span};
  };
  for (const char* name : {"UTC", "Europe/Berlin", "Pacific/Apia", "America/Sao_Paulo",
                           "Pacific/Kiritimati", "Africa/Cairo"}) {
    const NSTimeZone zone(name);
    for (int i = 0; i < 500; ++i) {
      const Date from = anyDate();
      const Date to = anyDate();
      const NSCalendarDate start(from, zone);
      const std::int64_t n = start.wholeYearsTo(to);
      const auto reached = [&](std::int64_t years) { return start.dateByAddingYears(years); };
      if (from <= to) {
        EXPECT_TRUE(n >= 0 && reached(n) <= to && reached(n + 1) > to)
            << name << " " << describe(from) << " to " << describe(to) << ": " << n;
      } else {
        EXPECT_TRUE(n <= 0 && reached(n) >= to && reached(n - 1) < to)
            << name << " " << describe(from) << " to " << describe(to) << ": " << n;
      }
    }
  }
}

TEST(YearText, IsTheYearOfTheZone) {
  EXPECT_EQ(yearText(utc(2026, 12, 31, 12), NSTimeZone("Pacific/Kiritimati")), "2027");
  EXPECT_EQ(yearText(utc(2027, 1, 1, 11), NSTimeZone("Etc/GMT+12")), "2026");
  EXPECT_EQ(yearText(utc(1604, 2, 29, 12), NSTimeZone("Asia/Kolkata")), "1604");
  EXPECT_EQ(yearText(utc(987, 6, 1), NSTimeZone()), "0987");
}

TEST(StartOfDayByOffset, IsMidnightByTheOffsetOfTheDateItself) {
  EXPECT_EQ(startOfDayByOffset(utc(2026, 11, 20, 8), NSTimeZone()), utc(2026, 11, 20));
  EXPECT_EQ(startOfDayByOffset(utc(2026, 11, 20), NSTimeZone()), utc(2026, 11, 20));
  EXPECT_EQ(startOfDayByOffset(utc(2026, 11, 20) - 1us, NSTimeZone()), utc(2026, 11, 19));
  const NSTimeZone berlin("Europe/Berlin");
  EXPECT_EQ(startOfDayByOffset(utc(2026, 7, 1, 6), berlin), utc(2026, 6, 30, 22));
  // On a day whose clock changes 08:00 stays eight hours.
  const Date eight = berlin.date({2026, 3, 29, 8});
  EXPECT_EQ(eight - startOfDayByOffset(eight, berlin), 8h);
  const Date before1900 = utc(1604, 7, 1, 12);
  EXPECT_EQ(before1900 - startOfDayByOffset(before1900, berlin), 12h + 53min + 28s);
}

TEST(PosixZone, GivesNoOffsetForOtherForms) {
  for (const char* value :
       {"", "UTC", "A", "5", "<+05", "<>5", "ABC+", "ABC5:", "ABC5/3", "ABC5 "}) {
    EXPECT_EQ(standardOffsetOfPosixZone(value), std::nullopt) << value;
  }
}

}  // namespace
}  // namespace annivo
