// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "codecs/icalendar/CalEvent.h"
#include "codecs/icalendar/EventFile.h"
#include "format/Occurrences.h"
#include "platform/coredata/CivilDay.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

Date utc(std::int64_t year, int month, int day, int hour = 12, int minute = 0, int second = 0) {
  return NSTimeZone().date(
      {.year = year, .month = month, .day = day, .hour = hour, .minute = minute, .second = second});
}

std::vector<Occurrence> inUTC(Date date, Date now) { return occurrences(date, now, NSTimeZone()); }

std::string shown(const std::vector<Occurrence>& all) {
  std::string text;
  for (const auto& [age, date] : all) text += std::to_string(age) + " on " + describe(date) + "; ";
  return text;
}

void expect(const std::vector<Occurrence>& result, const std::vector<Occurrence>& expected) {
  EXPECT_EQ(shown(result), shown(expected));
  EXPECT_EQ(result, expected);
}

TEST(Occurrences, TheLastReturnAndTheTwoAfterIt) {
  const Date now = utc(2026, 11, 15);
  expect(inUTC(utc(1980, 6, 10), now),
         {{46, utc(2026, 6, 10)}, {47, utc(2027, 6, 10)}, {48, utc(2028, 6, 10)}});
  expect(inUTC(utc(1980, 12, 20), now),
         {{45, utc(2025, 12, 20)}, {46, utc(2026, 12, 20)}, {47, utc(2027, 12, 20)}});
}

TEST(Occurrences, OnTheDayItselfThatDayIsTheFirst) {
  const Date born = utc(1980, 6, 10);
  expect(inUTC(born, utc(2026, 6, 10)),
         {{46, utc(2026, 6, 10)}, {47, utc(2027, 6, 10)}, {48, utc(2028, 6, 10)}});
  EXPECT_EQ(inUTC(born, utc(2026, 6, 10) - 1us).front().age, 45);
  EXPECT_EQ(inUTC(born, utc(2026, 6, 10, 23, 59, 59)).front().age, 46);
}

TEST(Occurrences, TheDateItselfIsAgeZero) {
  const Date born = utc(2026, 6, 10);
  const std::vector<Occurrence> expected{{0, born}, {1, utc(2027, 6, 10)}, {2, utc(2028, 6, 10)}};
  expect(inUTC(born, born), expected);
  expect(inUTC(born, utc(2026, 11, 15)), expected);
}

TEST(Occurrences, ADateLessThanAYearAheadCountsFromZero) {
  const Date born = utc(2026, 11, 15, 12, 0, 1);
  expect(inUTC(born, utc(2026, 11, 15)),
         {{0, born}, {1, utc(2027, 11, 15, 12, 0, 1)}, {2, utc(2028, 11, 15, 12, 0, 1)}});
  EXPECT_EQ(inUTC(utc(2027, 11, 14), utc(2026, 11, 15)).size(), 3U);
}

TEST(Occurrences, ADayThatTheZoneLeftOutComesBackOnThatDay) {
  const struct {
    const char* zone;
    int year, month, day;
    const char* days[3];
  } rows[] = {
      {"Pacific/Apia", 2011, 12, 30, {"20111230", "20121230", "20131230"}},
      {"Pacific/Kiritimati", 1994, 12, 31, {"19941231", "19951231", "19961231"}},
      {"Pacific/Kwajalein", 1993, 8, 21, {"19930821", "19940821", "19950821"}},
      {"Asia/Manila", 1844, 12, 31, {"18441231", "18451231", "18461231"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.zone);
    const NSTimeZone zone(row.zone);
    const Date born = civilDay(utc(row.year, row.month, row.day), zone);
    const auto all = occurrences(born, born + 1h, zone);
    ASSERT_EQ(all.size(), 3U);
    for (std::size_t i = 0; i < all.size(); ++i) {
      EXPECT_EQ(all[i].age, static_cast<std::int64_t>(i));
      const auto event = CalEvent::event();
      event->setStartDate(all[i].date);
      event->setIsAllDay(true);
      const std::string file = EventFile::newText(*event, born, zone);
      EXPECT_NE(file.find(std::string("DTSTART;VALUE=DATE:") + row.days[i] + "\r\n"),
                std::string::npos)
          << file;
    }
  }
}

TEST(Occurrences, DatesFurtherAheadYieldFewer) {
  const Date now = utc(2026, 11, 15);
  expect(inUTC(utc(2027, 11, 15), now), {{0, utc(2027, 11, 15)}, {1, utc(2028, 11, 15)}});
  expect(inUTC(utc(2028, 11, 14), now), {{0, utc(2028, 11, 14)}, {1, utc(2029, 11, 14)}});
  expect(inUTC(utc(2028, 11, 15), now), {{0, utc(2028, 11, 15)}});
  expect(inUTC(utc(2029, 11, 14), now), {{0, utc(2029, 11, 14)}});
  expect(inUTC(utc(2029, 11, 15), now), {});
  expect(inUTC(utc(9999, 1, 1), now), {});
}

TEST(Occurrences, TheLeapDayIsThe28thInACommonYear) {
  const Date born = utc(2000, 2, 29);
  expect(inUTC(born, utc(2026, 2, 27)),
         {{25, utc(2025, 2, 28)}, {26, utc(2026, 2, 28)}, {27, utc(2027, 2, 28)}});
  expect(inUTC(born, utc(2026, 2, 28)),
         {{26, utc(2026, 2, 28)}, {27, utc(2027, 2, 28)}, {28, utc(2028, 2, 29)}});
  expect(inUTC(born, utc(2028, 2, 28)),
         {{27, utc(2027, 2, 28)}, {28, utc(2028, 2, 29)}, {29, utc(2029, 2, 28)}});
  expect(inUTC(born, utc(2028, 2, 29)),
         {{28, utc(2028, 2, 29)}, {29, utc(2029, 2, 28)}, {30, utc(2030, 2, 28)}});
}

TEST(Occurrences, ALeapDayOf2096MeetsTheCommonYear2100) {
  expect(inUTC(utc(2096, 2, 29), utc(2100, 3, 1)),
         {{4, utc(2100, 2, 28)}, {5, utc(2101, 2, 28)}, {6, utc(2102, 2, 28)}});
}

TEST(Occurrences, DatesOfEarlierCenturies) {
  const Date now = utc(2026, 11, 15);
  EXPECT_EQ(shown(inUTC(utc(1850, 6, 10), now)),
            shown({{176, utc(2026, 6, 10)}, {177, utc(2027, 6, 10)}, {178, utc(2028, 6, 10)}}));
  // The year of a date without one is a leap year.
  EXPECT_EQ(shown(inUTC(utc(1604, 2, 29), now)),
            shown({{422, utc(2026, 2, 28)}, {423, utc(2027, 2, 28)}, {424, utc(2028, 2, 29)}}));
  EXPECT_EQ(inUTC(utc(1, 1, 1), now).front().age, 2025);
}

TEST(Occurrences, TheTimeOfDayIsKeptToItsFraction) {
  const Date born = utc(1980, 6, 10, 23, 59, 59) + 123456us;
  EXPECT_EQ(inUTC(born, utc(2026, 11, 15)).front().date, utc(2026, 6, 10, 23, 59, 59) + 123456us);
}

TEST(Occurrences, TheDayIsThatOfTheZone) {
  // 02:00 UTC on 1 March 1980 is still 29 February in New York.
  const NSTimeZone newYork("America/New_York");
  expect(occurrences(utc(1980, 3, 1, 2), utc(2026, 11, 15), newYork),
         {{46, utc(2026, 3, 1, 2)}, {47, utc(2027, 3, 1, 2)}, {48, utc(2028, 3, 1, 2)}});
  EXPECT_EQ(newYork.civil(utc(2026, 3, 1, 2)).day, 28);
}

TEST(Occurrences, TheClockReadingStaysThroughDaylightSaving) {
  // Noon in Berlin, in 1979 without and since 1980 with summer time.
  expect(occurrences(utc(1979, 7, 1, 11), utc(2026, 11, 15), NSTimeZone("Europe/Berlin")),
         {{47, utc(2026, 7, 1, 10)}, {48, utc(2027, 7, 1, 10)}, {49, utc(2028, 7, 1, 10)}});
}

TEST(Occurrences, ALocalTimeThatDoesNotExistIsMovedOnByTheGap) {
  // 02:30 on 8 March; in 2026 New York's clocks go from 02:00 to 03:00 that night.
  const NSTimeZone zone("America/New_York");
  const Date born = utc(1990, 3, 8, 7, 30);
  expect(
      occurrences(born, utc(2026, 11, 15), zone),
      {{36, utc(2026, 3, 8, 7, 30)}, {37, utc(2027, 3, 8, 7, 30)}, {38, utc(2028, 3, 8, 7, 30)}});
  EXPECT_EQ(zone.civil(utc(2026, 3, 8, 7, 30)).hour, 3);
  EXPECT_EQ(occurrences(born, utc(2026, 3, 8, 7, 30), zone).front().age, 36);
  EXPECT_EQ(occurrences(born, utc(2026, 3, 8, 7, 29), zone).front().age, 35);
}

TEST(Occurrences, OfALocalTimeThatExistsTwiceTheFirstIsTaken) {
  // 01:30 on 1 November; in 2026 New York's clocks go back from 02:00 to 01:00 that night.
  const NSTimeZone zone("America/New_York");
  const Date born = utc(1990, 11, 1, 6, 30);
  const Date first = utc(2026, 11, 1, 5, 30);
  EXPECT_EQ(occurrences(born, first, zone).front(), (Occurrence{36, first}));
  EXPECT_EQ(occurrences(born, first - 1s, zone).front().age, 35);
  EXPECT_EQ(occurrences(born, first + 1h, zone).front(), (Occurrence{36, first}));
}

TEST(Occurrences, AMidnightThatDoesNotExist) {
  // Santiago's clocks go from midnight to 01:00 on 6 September 2026.
  const NSTimeZone zone("America/Santiago");
  const Date born = zone.date({.year = 1985, .month = 9, .day = 6});
  const Date event = occurrences(born, utc(2026, 11, 15), zone).front().date;
  EXPECT_EQ(event, utc(2026, 9, 6, 4));
  EXPECT_EQ(zone.civil(event), (CivilTime{.year = 2026, .month = 9, .day = 6, .hour = 1}));
}

TEST(Occurrences, ADayThatAZoneLeftOut) {
  // Samoa had no 30 December 2011.
  const NSTimeZone zone("Pacific/Apia");
  const Date born = zone.date({.year = 2000, .month = 12, .day = 30, .hour = 12});
  const auto result = occurrences(born, zone.date({.year = 2012, .month = 6, .day = 1}), zone);
  ASSERT_EQ(result.size(), 3U);
  EXPECT_EQ(result[0].age, 11);
  EXPECT_EQ(zone.civil(result[0].date),
            (CivilTime{.year = 2011, .month = 12, .day = 31, .hour = 12}));
  EXPECT_EQ(zone.civil(result[1].date),
            (CivilTime{.year = 2012, .month = 12, .day = 30, .hour = 12}));
}

TEST(Occurrences, AtTheEndOfTheCalendarNothingOverflows) {
  const auto result = inUTC(utc(1980, 6, 10), utc(9999, 12, 31));
  ASSERT_EQ(result.size(), 3U);
  EXPECT_EQ(result[0], (Occurrence{8019, utc(9999, 6, 10)}));
  EXPECT_LE(result[0].date, result[1].date);
  EXPECT_LE(result[1].date, result[2].date);
}

}  // namespace
}  // namespace annivo
