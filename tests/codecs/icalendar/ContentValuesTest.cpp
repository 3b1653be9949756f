// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "codecs/icalendar/ContentValues.h"
#include "tests/platform/calendarstore/CalendarHome.h"

namespace annivo {
namespace {

TEST(DurationText, IsTheShortestOfThatLength) {
  const std::pair<std::int64_t, const char*> table[] = {
      {0, "PT0S"},
      {-900, "-PT15M"},
      {-3600, "-PT1H"},
      {-86400, "-P1D"},
      {-54000, "-PT15H"},
      {32400, "PT9H"},
      {3605, "PT1H0M5S"},
      {-144000, "-P1DT16H"},
      {90061, "P1DT1H1M1S"},
      {86401, "P1DT1S"},
      {-2147483648, "-P24855DT3H14M8S"},
  };
  for (const auto& [seconds, text] : table) {
    EXPECT_EQ(durationText(seconds), text);
    EXPECT_EQ(durationFromText(text), seconds);
  }
}

TEST(DurationFromText, ReadsEveryForm) {
  EXPECT_EQ(durationFromText("+PT15M"), 900);
  EXPECT_EQ(durationFromText("P2W"), 1209600);
  EXPECT_EQ(durationFromText("-p1dt2h"), -93600);
  EXPECT_EQ(durationFromText("-P0DT0H10M0S"), -600);
  EXPECT_EQ(durationFromText("P99999999999999999999D"), 999999999993600);
}

TEST(DurationFromText, RefusesWhatIsNone) {
  for (const char* text : {"", "P", "PT", "-P", "P1", "1D", "P1DT", "PT1D", "P1H", "PT1HX", "P-1D",
                           "PTT1H", "20210302T152000Z", "PT1H "}) {
    EXPECT_EQ(durationFromText(text), std::nullopt) << text;
  }
}

EventTime read(const std::string& text, const NSTimeZone& zone) {
  ContentLines lines(text);
  ContentLine line;
  EXPECT_TRUE(lines.next(line));
  const auto value = dateValue(line, zone);
  EXPECT_TRUE(value) << text;
  return value.value_or(Date{});
}

TEST(DateValue, ReadsDaysMomentsAndZones) {
  const NSTimeZone berlin("Europe/Berlin");
  const Date noon = NSTimeZone().date({.year = 2026, .month = 7, .day = 1, .hour = 12});
  EXPECT_EQ(read("DTSTART;VALUE=DATE:20260701", berlin).date(), midnight(berlin, 2026, 7, 1));
  EXPECT_TRUE(read("DTSTART:20260701", berlin).day());
  EXPECT_EQ(read("DTSTART:20260701T120000Z", berlin).date(), noon);
  EXPECT_EQ(read("DTSTART;TZID=America/New_York:20260701T080000", berlin).date(), noon);
  EXPECT_EQ(read("DTSTART:20260701T140000", berlin).date(), noon);
  EXPECT_FALSE(read("DTSTART:20260701T140000", berlin).day());
}

TEST(DateValue, AZoneNameNeverLeadsOutOfTheZoneDatabase) {
  const NSTimeZone berlin("Europe/Berlin");
  const Date local = berlin.date({.year = 2026, .month = 7, .day = 1, .hour = 14});
  for (const char* zone : {"/dev/zero", "../../../dev/zero", "\":/etc/passwd\"", "a/../b", "",
                           "W. Europe Standard Time", "\"/x y\""}) {
    EXPECT_EQ(read(std::string("DTSTART;TZID=") + zone + ":20260701T140000", berlin).date(), local)
        << zone;
  }
}

TEST(DateValue, RefusesWhatIsNoDate) {
  for (const char* text :
       {"", "2026", "20261301", "20260230", "2026070 ", "20260701T", "00000101", "20260701T250000",
        "20260701T1200000", "20260701X120000", "20260701T120000ZZ", "+2260701"}) {
    const std::string whole = std::string("DTSTART:") + text;
    ContentLines lines(whole);
    ContentLine line;
    ASSERT_TRUE(lines.next(line));
    EXPECT_FALSE(dateValue(line, NSTimeZone())) << text;
  }
}

TEST(DayText, MovesByDaysAndStaysWithinFourDigits) {
  const NSTimeZone berlin("Europe/Berlin");
  const auto text = [&](int year, int month, int day, int later) {
    return dayText(dayOf(midnight(berlin, year, month, day), berlin) + std::chrono::days{later});
  };
  EXPECT_EQ(text(2028, 2, 28, 1), "20280229");
  EXPECT_EQ(text(2026, 12, 31, 1), "20270101");
  EXPECT_EQ(text(9999, 12, 31, 0), "99991231");
  EXPECT_EQ(text(9999, 12, 31, 1), std::nullopt);
  EXPECT_EQ(text(1, 1, 1, 0), "00010101");
  EXPECT_EQ(text(1, 1, 1, -1), std::nullopt);
}

TEST(UTCText, IsInUTC) { EXPECT_EQ(utcText(kReferenceDate), "20010101T000000Z"); }

TEST(IdentityText, KeepsMicrosecondsAndEveryByte) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  const LedgerIdentity identities[] = {
      {.myUID = "A-1:ABPerson", .calendarUID = "B-2", .date = kReferenceDate},
      {.myUID = "", .calendarUID = "", .date = kUnixEpoch - std::chrono::microseconds{1}},
      {.myUID = bytes,
       .calendarUID = "//%2F;,\\",
       .date = kReferenceDate + std::chrono::microseconds{123457}},
  };
  for (const LedgerIdentity& identity : identities) {
    for (const std::string& eventUID : {std::string("E-1"), std::string(), bytes}) {
      const std::string text = identityText(identity, eventUID);
      EXPECT_EQ(text.find_first_of("\\;,\r\n \"%"), text.npos);
      const auto value = identityFromText(text);
      ASSERT_TRUE(value);
      EXPECT_EQ(value->identity, identity);
      EXPECT_EQ(value->eventUID, eventUID);
    }
  }
  EXPECT_EQ(identityText(identities[0], "E-1"), "978307200000000/B-2/A-1:ABPerson/E-1");
}

TEST(IdentityFromText, RefusesWhatIsNone) {
  for (const char* text : {"", "/", "//", "///", "1/2", "1/2/3", "1/2/3/4/5", "x/a/b/c", "1x/a/b/c",
                           "/a/b/c", "99999999999999999999/a/b/c"}) {
    EXPECT_FALSE(identityFromText(text)) << text;
  }
}

}  // namespace
}  // namespace annivo
