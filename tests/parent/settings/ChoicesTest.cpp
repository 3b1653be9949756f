// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>

#include "parent/settings/AlarmTable.h"
#include "parent/settings/ChosenCalendars.h"
#include "parent/settings/TitleChoice.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

using Words = std::vector<std::string>;

struct Title {
  const char* name;
  Words words;
  Words expected;  ///< none: refused
};

class TitleChoice : public testing::TestWithParam<Title> {};

TEST_P(TitleChoice, BecomesATemplate) {
  const auto elements = templateFromWords(GetParam().words);
  ASSERT_EQ(elements.ok(), !GetParam().expected.empty());
  if (elements.ok()) {
    EXPECT_EQ(*elements, GetParam().expected);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, TitleChoice,
    testing::Values(
        Title{"Braces",
              {"{first name} {last name}: {ordinal age} {type}"},
              {"First name", "Last name", ":", "ordinal age", "type"}},
        Title{"BracesInAnySpelling", {"{FIRST-name}{Ordinal_Age}"}, {"First name", "ordinal age"}},
        Title{"SeparateWords", {"first-name", "turns", "age"}, {"First name", "turns", "age"}},
        Title{"LiteralOfSeveralWords",
              {"{first name} has a birthday"},
              {"First name", "has a birthday"}},
        Title{"Possessive", {"{first name} 's {type}"}, {"First name", "'s", "type"}},
        Title{"OnlyWords", {"A", "birthday"}, {"A", "birthday"}},
        Title{"UnknownValue", {"{surname}"}, {}}, Title{"OpenBrace", {"{first name"}, {}},
        Title{"Empty", {""}, {}}, Title{"WordThatIsAValue", {"the {type} age {x}"}, {}}),
    [](const auto& row) { return row.param.name; });

TEST(TitleChoices, NameTheValuesWhereOneIsUnknown) {
  const auto elements = templateFromWords({"{surname}"});
  ASSERT_FALSE(elements.ok());
  EXPECT_EQ(
      elements.error().description,
      "\"surname\" is no value of a title; there are {first name}, {middle name}, {last name}, "
      "{nickname}, {age}, {ordinal age}, {year}, {type}, {organization}");
}

TEST(TitleChoices, ReadBackAsTheyAreShown) {
  const Words elements{"First name", "Last name", ":", "ordinal age", "type"};
  EXPECT_EQ(*templateFromWords({templateText(elements)}), elements);
}

TEST(TitleChoices, ShowAnExampleInThePersonsLanguage) {
  const Words elements{"First name", "Last name", ":", "ordinal age", "type"};
  TestHome english;
  EXPECT_EQ(exampleTitle(english.platform(), CalendarType::birthdays, elements),
            "Ann Smith: 47th birthday");
  EXPECT_EQ(exampleTitle(english.platform(), CalendarType::anniversaries, elements),
            "Ann Smith: 47th anniversary");
  TestHome german({.languages = {"de"}});
  EXPECT_EQ(exampleTitle(german.platform(), CalendarType::birthdays, elements),
            "Ann Smith: 47. Geburtstag");
}

PropertyList table(const Words& kinds) {
  PropertyList::Array rows;
  for (const std::string& kind : kinds) {
    rows.push_back(PropertyList::Dictionary{{"type", kind},
                                            {"days", "2"},
                                            {"time", utc(2026, 1, 1, 7, 30)},
                                            {"birth", true},
                                            {"anni", false}});
  }
  return rows;
}

const ListedAlarm kAlarm{.kind = "email", .days = 3, .time = "9:05", .anniversaries = true};

TEST(AlarmTable, ListsTheRowsInUseByTheirPlace) {
  const auto alarms =
      listedAlarms(table({"None", "Open File", "Other"}), NSTimeZone("Europe/Berlin"));
  ASSERT_EQ(alarms.size(), 2U);
  EXPECT_EQ(alarms[0].number, 2);
  EXPECT_EQ(alarmText(alarms[0]), "file 2 days before at 08:30, for birthdays");
  EXPECT_EQ(alarms[1].kind, "Other");
}

TEST(AlarmTable, PutsAnAlarmIntoTheFirstFreeRow) {
  const NSTimeZone zone("Europe/Berlin");
  const auto added = withAlarm(table({"Message", "None", "Sound"}), kAlarm, utc(2026, 7, 1), zone);
  ASSERT_TRUE(added.ok());
  const PropertyList& row = (*added->array())[1];
  EXPECT_TRUE(row["type"].isEqualToString("Email"));
  EXPECT_TRUE(row["days"].isEqualToString("3"));
  EXPECT_EQ(*row["time"].date(), utc(2026, 7, 1, 7, 5));
  EXPECT_FALSE(row["birth"].isTheTrueObject());
  EXPECT_TRUE(row["anni"].isTheTrueObject());
  EXPECT_EQ(added->array()->size(), 5U);
  EXPECT_TRUE((*added->array())[2]["type"].isEqualToString("Sound"));
}

TEST(AlarmTable, HoldsFiveAlarmsAndNoSixth) {
  PropertyList full = table({"Message", "Message", "Message", "Message"});
  auto fifth = withAlarm(full, kAlarm, utc(2026, 1, 1), {});
  ASSERT_TRUE(fifth.ok());
  ListedAlarm sixth = kAlarm;
  sixth.days = 4;
  EXPECT_EQ(withAlarm(*fifth, sixth, utc(2026, 1, 1), {}).error().description,
            "all five alarms are in use; \"annivo alarms remove NUMBER\" frees one");
}

TEST(AlarmTable, StaysAsItIsWhereAnAlarmDoesTheSameAlready) {
  const ListedAlarm there{.kind = "message", .days = 2, .time = "07:30", .birthdays = true};
  const PropertyList one = table({"Message"});
  EXPECT_EQ(*withAlarm(one, there, utc(2026, 1, 1), {}), one);
  for (const auto& change : std::vector<std::function<void(ListedAlarm&)>>{
           [](ListedAlarm& alarm) { alarm.kind = "sound"; },
           [](ListedAlarm& alarm) { alarm.days = 3; },
           [](ListedAlarm& alarm) { alarm.time = "07:31"; },
           [](ListedAlarm& alarm) { alarm.anniversaries = true; }}) {
    ListedAlarm other = there;
    change(other);
    EXPECT_EQ(listedAlarms(*withAlarm(one, other, utc(2026, 1, 1), {}), {}).size(), 2U);
  }
}

TEST(AlarmTable, RefusesWhatIsNoAlarm) {
  for (const char* time : {"", "8", "24:00", "08:60", "-1:00", "08:00x", "noon"}) {
    ListedAlarm alarm = kAlarm;
    alarm.time = time;
    EXPECT_FALSE(withAlarm(table({}), alarm, utc(2026, 1, 1), {}).ok()) << time;
  }
  for (const auto& [days, fine] : {std::pair{-1, false}, {0, true}, {3650, true}, {3651, false}}) {
    ListedAlarm alarm = kAlarm;
    alarm.days = days;
    EXPECT_EQ(withAlarm(table({}), alarm, utc(2026, 1, 1), {}).ok(), fine) << days;
  }
  ListedAlarm alarm = kAlarm;
  alarm.kind = "fax";
  EXPECT_FALSE(withAlarm(table({}), alarm, utc(2026, 1, 1), {}).ok());
}

TEST(AlarmTable, FreesARowInUseAndNoOther) {
  const auto freed = withoutAlarm(table({"Message", "None"}), 1);
  ASSERT_TRUE(freed.ok());
  EXPECT_TRUE(listedAlarms(*freed, {}).empty());
  for (const int number : {-1, 0, 2, 3}) {
    EXPECT_FALSE(withoutAlarm(table({"Message", "None"}), number).ok()) << number;
  }
}

TEST(ChosenCalendars, HaveEqualTitlesExactlyWhenTheyAreOne) {
  const std::optional<ChosenCalendar> kNone;
  const ChosenCalendar a{"A", "Home"}, b{"B", "Home"}, c{"C", "Work"};
  struct Row {
    ChosenCalendars chosen;
    const char* birthdayUID;
    const char* anniversaryUID;
    bool equalTitles;
  };
  for (const Row& row :
       {Row{{a, a}, "A", "A", true}, Row{{a, b}, "A", "B", false}, Row{{a, c}, "A", "C", false},
        Row{{a, kNone}, "A", "", false}, Row{{kNone, a}, "", "A", false}}) {
    const auto values = calendarPreferences(row.chosen);
    EXPECT_TRUE(values.at("birthCalUID").isEqualToString(row.birthdayUID));
    EXPECT_TRUE(values.at("aneeCalUID").isEqualToString(row.anniversaryUID));
    EXPECT_EQ(values.at("birthCalTitle") == values.at("aneeCalTitle"), row.equalTitles);
  }
  EXPECT_TRUE(calendarPreferences({a, c}).at("birthCalTitle").isEqualToString("Home"));
  EXPECT_TRUE(calendarPreferences({a, c}).at("aneeCalTitle").isEqualToString("Work"));
  EXPECT_TRUE(calendarPreferences({kNone, c}).at("aneeCalTitle").isEqualToString("Work"));
}

}  // namespace
}  // namespace annivo
