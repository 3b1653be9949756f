// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "format/AlarmTrigger.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

constexpr std::int32_t kHour = 3600;
constexpr std::int32_t kDay = 86400;
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

Date at(int hour, int minute = 0, int second = 0) {
  return NSTimeZone().date(
      {.year = 2026, .month = 11, .day = 20, .hour = hour, .minute = minute, .second = second});
}

std::int32_t trigger(const PropertyList& days, const PropertyList& time) {
  return triggerIntervalFromDaysAndHours(days, time, NSTimeZone());
}

TEST(AlarmTrigger, DaysBeforeAtATimeOfDay) {
  EXPECT_EQ(trigger("2", at(8)), -40 * kHour);
  EXPECT_EQ(trigger("0", at(8)), 8 * kHour);
  EXPECT_EQ(trigger("1", at(23, 30)), -kHour / 2);
  EXPECT_EQ(trigger("0", at(0)), 0);
  EXPECT_EQ(trigger("1", at(0)), -kDay);
  EXPECT_EQ(trigger("0", at(23, 59, 59)), kDay - 1);
  EXPECT_EQ(trigger("-1", at(8)), kDay + 8 * kHour);
}

TEST(AlarmTrigger, DaysAreReadAsAWholeNumber) {
  struct Row {
    const char* what;
    PropertyList days;
    std::int32_t expected;
  };
  const std::vector<Row> rows{
      {"number", 2, 2},
      {"leading digits", "3 days", 3},
      {"white space before", " 4", 4},
      {"plus sign", "+5", 5},
      {"fraction is left out", "1.9", 1},
      {"real", 1.9, 1},
      {"boolean", true, 1},
      {"no digits", "soon", 0},
      {"empty", "", 0},
      {"missing", PropertyList(), 0},
      {"array", PropertyList::Array{2}, 0},
      {"dictionary", PropertyList::Dictionary{{"days", 2}}, 0},
      {"date", at(8), 0},
      {"data", PropertyList::Data{"2"}, 0},
  };
  for (const auto& [what, days, expected] : rows) {
    EXPECT_EQ(trigger(days, at(0)), -expected * kDay) << what;
  }
}

TEST(AlarmTrigger, WhatIsNoDateCountsAsMidnight) {
  for (const PropertyList& time :
       {PropertyList(), PropertyList("08:00"), PropertyList(8), PropertyList(true),
        PropertyList(PropertyList::Array{at(8)}), PropertyList(28800.0)}) {
    EXPECT_EQ(trigger("2", time), -2 * kDay);
  }
}

TEST(AlarmTrigger, SecondsOfDaysWrapIn32Bits) {
  struct Row {
    const char* days;
    std::int32_t expected;
  };
  for (const auto& [days, expected] : {
           Row{"24855", -2147472000},  // the last that fits
           Row{"24856", 2147408896},   // 2,147,558,400 is -2,147,408,896
           Row{"-24856", -2147408896},
           Row{"49710", 23296},  // just under 2^32
           Row{"49711", -63104},
           Row{"1000000", -500654080},
           Row{"31342325", -2147483520},
           Row{"2147483647", 86400},
           Row{"99999999999999999999", 86400},  // a text is held at the limit of 32 bits first
           Row{"-2147483648", 0},
       }) {
    EXPECT_EQ(trigger(days, at(0)), expected) << days;
  }
}

TEST(AlarmTrigger, IsHeldAtTheLimitOf32Bits) {
  EXPECT_EQ(trigger("16777216", at(0)), kMost);  // the product is -2^31
  EXPECT_EQ(trigger("2212107", at(0)), kMost - 127);
  EXPECT_EQ(trigger("2212107", at(0, 2, 7)), kMost);
  EXPECT_EQ(trigger("2212107", at(0, 2, 8)), kMost);
  EXPECT_EQ(trigger("2212107", at(8)), kMost);
}

TEST(AlarmTrigger, IsTruncatedTowardZero) {
  EXPECT_EQ(trigger("0", at(8) + 999'999us), 8 * kHour);
  EXPECT_EQ(trigger("1", at(8) + 1us), -16 * kHour + 1);
  EXPECT_EQ(trigger("1", at(23, 59, 59) + 500ms), 0);
}

TEST(AlarmTrigger, IsMeasuredWithinTheTimesOwnDay) {
  const NSTimeZone berlin("Europe/Berlin");
  for (const auto& [month, day] : {std::pair{1, 15}, {7, 15}}) {
    const Date eight = berlin.date({.year = 2026, .month = month, .day = day, .hour = 8});
    EXPECT_EQ(triggerIntervalFromDaysAndHours("0", eight, berlin), 8 * kHour);
  }
  // Days whose clock changes: spring forward on 29 March, back on 25 October 2026.
  for (const auto& [month, day] : {std::pair{3, 29}, {10, 25}}) {
    for (const int hour : {0, 1, 4, 8, 23}) {
      const Date time = berlin.date({.year = 2026, .month = month, .day = day, .hour = hour});
      EXPECT_EQ(triggerIntervalFromDaysAndHours("0", time, berlin), hour * kHour)
          << month << '-' << day << ' ' << hour;
    }
  }
}

TEST(AlarmTrigger, TheDatePartIsNotUsed) {
  for (const std::int64_t year : {1, 1604, 1899, 1970, 2001, 2026, 9999}) {
    const Date time = NSTimeZone().date({.year = year, .month = 6, .day = 1, .hour = 8});
    EXPECT_EQ(trigger("1", time), -16 * kHour) << year;
  }
}

TEST(AlarmTrigger, TheTimeOfDayIsThatOfTheZone) {
  const Date time = at(20);
  EXPECT_EQ(triggerIntervalFromDaysAndHours("0", time, NSTimeZone("Asia/Kolkata")),
            kHour + kHour / 2);
  EXPECT_EQ(triggerIntervalFromDaysAndHours("0", time, NSTimeZone("America/New_York")), 15 * kHour);
}

}  // namespace
}  // namespace annivo
