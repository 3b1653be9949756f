// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "format/ZPKAnvCCalendarItemsFormat.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

using Dictionary = PropertyList::Dictionary;
using Rows = PropertyList::Array;

constexpr double kHour = 3600;

Dictionary row(const PropertyList& type, const PropertyList& days, int hour,
               const PropertyList& birth = true, const PropertyList& anni = true) {
  return {{"type", type},
          {"days", days},
          {"time", utc(2026, 11, 20, hour)},
          {"birth", birth},
          {"anni", anni}};
}

Dictionary preferences(const PropertyList& alarmTable) {
  return {{"alarmTable", alarmTable},
          {"alarmFilePath", "/home/ann/To do"},
          {"selectedSystemSound", "Basso"},
          {"setEmail", "ann@example.org"}};
}

/// A formatter over the real writer, whose alarm list is looked at.
struct Alarms {
  explicit Alarms(const std::string& zone = "UTC") : home({.timeZone = zone}) {}

  [[nodiscard]] std::vector<CalAlarm> of(const PropertyList& prefs,
                                         CalendarType type = CalendarType::birthdays) {
    formatter.setAlarmsWithDataForType(prefs, type);
    return writer.alarmArray();
  }
  [[nodiscard]] std::vector<double> triggers(const Rows& rows,
                                             CalendarType type = CalendarType::birthdays) {
    std::vector<double> result;
    for (const auto& alarm : of(preferences(rows), type)) {
      result.push_back(alarm.relativeTrigger.value_or(-1));
    }
    return result;
  }

  TestHome home;
  ZPKCalendarItems writer{home.platform()};
  ZPKAnvCCalendarItemsFormat formatter{home.platform(), writer, {}};
};

using Triggers = std::vector<double>;

TEST(AlarmTable, EachKindCarriesWhatFitsIt) {
  const auto alarms = Alarms().of(
      preferences(Rows{row("Message", "2", 8), row("Email", "0", 8), row("Sound", "1", 8),
                       row("Open File", "0", 0), row("Message with Sound", "0", 1)}));
  EXPECT_EQ(alarms,
            (std::vector<CalAlarm>{{-40 * kHour, std::nullopt, std::nullopt, std::nullopt},
                                   {8 * kHour, "ann@example.org", std::nullopt, std::nullopt},
                                   {-16 * kHour, std::nullopt, std::nullopt, "Basso"},
                                   {0.0, std::nullopt, "file:///home/ann/To%20do", std::nullopt},
                                   {kHour, std::nullopt, std::nullopt, "Basso"}}));
}

TEST(AlarmTable, RowsThatAreNoneGiveNoAlarmWhateverTheirFlags) {
  EXPECT_EQ(Alarms().triggers(Rows(5, row("None", "2", 8))), Triggers{});
}

TEST(AlarmTable, ARowServesTheCalendarsOfItsFlags) {
  Alarms alarms;
  const Rows rows{row("Message", "0", 1, true, false), row("Message", "0", 2, false, true),
                  row("Message", "0", 3, true, true), row("Message", "0", 4, false, false)};
  EXPECT_EQ(alarms.triggers(rows, CalendarType::birthdays), (Triggers{kHour, 3 * kHour}));
  EXPECT_EQ(alarms.triggers(rows, CalendarType::anniversaries), (Triggers{2 * kHour, 3 * kHour}));
}

TEST(AlarmTable, OnlyTheBooleanTrueSelectsARow) {
  for (const PropertyList& flag :
       {PropertyList(false), PropertyList(1), PropertyList(1.0), PropertyList("1"),
        PropertyList("true"), PropertyList("YES"), PropertyList(), PropertyList(Rows{true}),
        PropertyList(Dictionary{{"birth", true}}), PropertyList(utc(2026, 1, 1)),
        PropertyList(PropertyList::Data{"\x09"})}) {
    EXPECT_EQ(Alarms().triggers({row("Message", "0", 8, flag)}), Triggers{});
  }
}

TEST(AlarmTable, RowsKeepTheirOrderAndTheirDoubles) {
  EXPECT_EQ(Alarms().triggers({row("Message", "0", 3), row("Message", "0", 1),
                               row("Message", "0", 3), row("Sound", "0", 2)}),
            (Triggers{3 * kHour, kHour, 3 * kHour, 2 * kHour}));
}

TEST(AlarmTable, EachCallBeginsWithAnEmptyList) {
  Alarms alarms;
  EXPECT_EQ(alarms.triggers({row("Message", "0", 1, true, false)}, CalendarType::birthdays),
            Triggers{kHour});
  EXPECT_EQ(alarms.triggers({row("Message", "0", 2, false, true)}, CalendarType::anniversaries),
            Triggers{2 * kHour});
  EXPECT_EQ(alarms.of(Dictionary{}), std::vector<CalAlarm>{});
}

TEST(AlarmTable, ATableThatIsNoneGivesNoAlarm) {
  Alarms alarms;
  for (const PropertyList& table :
       {PropertyList(), PropertyList("Message"), PropertyList(1), PropertyList(true),
        PropertyList(row("Message", "0", 8)), PropertyList(Rows{})}) {
    EXPECT_EQ(alarms.of(preferences(table)), std::vector<CalAlarm>{});
  }
  EXPECT_EQ(alarms.of(PropertyList()), std::vector<CalAlarm>{});
  EXPECT_EQ(alarms.of(PropertyList("text")), std::vector<CalAlarm>{});
}

TEST(AlarmTable, RowsThatAreNoDictionaryAreLeftOut) {
  EXPECT_EQ(Alarms().triggers({"Message", 1, true, Rows{row("Message", "0", 8)}, PropertyList(),
                               utc(2026, 1, 1), row("Message", "0", 8)}),
            Triggers{8 * kHour});
}

TEST(AlarmTable, WhatARowLacksCountsAsEmpty) {
  EXPECT_EQ(Alarms().of(preferences(Rows{Dictionary{{"birth", true}}})),
            (std::vector<CalAlarm>{{0.0, std::nullopt, std::nullopt, std::nullopt}}));
  EXPECT_EQ(Alarms().of(preferences(Rows{Dictionary{{"birth", true}, {"days", "2"}}})),
            (std::vector<CalAlarm>{{-48 * kHour, std::nullopt, std::nullopt, std::nullopt}}));
}

TEST(AlarmTable, ValuesOfAnotherTypeCountAsEmpty) {
  const Dictionary odd{
      {"type", 7}, {"days", Rows{2}}, {"time", "08:00"}, {"birth", true}, {"more", "ignored"}};
  EXPECT_EQ(Alarms().of(preferences(Rows{odd})),
            (std::vector<CalAlarm>{{0.0, std::nullopt, std::nullopt, std::nullopt}}));
}

TEST(AlarmTable, NoneIsCaseSensitiveAndExact) {
  EXPECT_EQ(Alarms().triggers({row("none", "0", 1), row("None ", "0", 2), row("", "0", 3)}),
            (Triggers{kHour, 2 * kHour, 3 * kHour}));
}

TEST(AlarmTable, APlaceholderAddressIsPassedOnAsItStands) {
  auto prefs = preferences(Rows{row("Email", "0", 8)});
  prefs["setEmail"] = "no e-mail address";
  EXPECT_EQ(Alarms().of(prefs).front().emailAddress, "no e-mail address");
}

TEST(AlarmTable, SettingsOfAnotherTypeLeaveTheAlarmItsTrigger) {
  auto prefs = preferences(Rows{row("Open File", "0", 8)});
  for (const PropertyList& path : {PropertyList(), PropertyList(5), PropertyList(Rows{})}) {
    prefs["alarmFilePath"] = path;
    EXPECT_EQ(Alarms().of(prefs),
              (std::vector<CalAlarm>{{8 * kHour, std::nullopt, std::nullopt, std::nullopt}}));
  }
}

TEST(AlarmTable, TheTimeOfDayIsThatOfTheDefaultZone) {
  EXPECT_EQ(Alarms("Asia/Kolkata").triggers({row("Message", "0", 20)}), Triggers{1.5 * kHour});
}

}  // namespace
}  // namespace annivo
