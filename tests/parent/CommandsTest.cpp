// SPDX-License-Identifier: MIT
// The commands that need no agent process, each on a home of its own.
#include <gtest/gtest.h>

#include "tests/parent/CommandHome.h"

namespace annivo {
namespace {

const std::string kCards =
    vCard(
        "FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:19800610\nANNIVERSARY:20050917\nUID:u1\n"
        "CATEGORIES:Family\n") +
    vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:--0229\nUID:u2\n") +
    vCard(
        "FN:Carl Day\nN:Day;Carl;;;\nUID:u3\nitem1.X-ABDATE:2010-01-02\nitem1.X-ABLabel:First "
        "met\n") +
    vCard("FN:Nobody\nN:Nobody;;;;\nUID:u4\n");

class Commands : public testing::Test {
 protected:
  void importAll() { world.import(kCards); }
  CommandHome world;
};

// import

TEST_F(Commands, ImportSaysWhatItTookAndWhatNot) {
  world.home.writeFile("a.vcf", kCards + vCard("FN:Late\nBDAY:---10\n") + "BEGIN:VCARD\n");
  const std::string file = world.home.path("a.vcf");
  EXPECT_EQ(world.done({"import", file}),
            "skipped card " + file +
                ":36: the card never ends (END:VCARD is missing)\n"
                "skipped date " +
                file +
                ":31 Late: BDAY: names a day without a month (\"---10\")\n"
                "Source \"vCards\": 5 people, 4 dates, 1 group.\n");
  EXPECT_EQ(world.done({"import", file}).substr(world.done({"import", file}).rfind(';')),
            "; nothing has changed.\n");
}

TEST_F(Commands, ImportAsJSON) {
  world.home.writeFile("a.vcf", vCard("FN:Ann \\\"A\\\"\nBDAY:19800610\n"));
  EXPECT_EQ(world.done({"import", world.home.path("a.vcf"), "--source", "x", "--json"}),
            "{\n  \"changed\": true,\n  \"dates\": 1,\n  \"groups\": 0,\n  \"people\": 1,\n"
            "  \"skippedCards\": [],\n  \"skippedDates\": [],\n  \"source\": \"x\"\n}\n");
}

TEST_F(Commands, ImportOfAMissingPathIsOneLine) {
  EXPECT_NE(world.refused({"import", "/nowhere.vcf"}).find("/nowhere.vcf"), std::string::npos);
}

// people, groups, labels

TEST_F(Commands, PeopleShowsEverybodyWithTheirDates) {
  importAll();
  EXPECT_EQ(world.done({"people"}),
            "NAME       DATES                                        UID\n"
            "Ann Smith  1980-06-10 birthday, 2005-09-17 anniversary  u1:ABPerson\n"
            "Bob Jones  --02-29 birthday                             u2:ABPerson\n"
            "Carl Day   2010-01-02 First met                         u3:ABPerson\n"
            "Nobody                                                  u4:ABPerson\n"
            "4 people, 4 dates.\n");
}

TEST_F(Commands, PeopleAsJSON) {
  world.import(vCard("FN:Ann\nBDAY:--0229\nUID:u1\n"));
  EXPECT_EQ(world.done({"people", "--json"}),
            "[\n  {\n    \"dates\": [\n      {\n        \"date\": \"--02-29\",\n"
            "        \"label\": \"birthday\",\n        \"shown\": \"birthday\",\n"
            "        \"uid\": \"u1:ABPerson\"\n      }\n    ],\n    \"name\": \"Ann\",\n"
            "    \"uid\": \"u1:ABPerson\"\n  }\n]\n");
}

TEST_F(Commands, ListingsOfAnEmptyHomeSayWhatToDo) {
  EXPECT_EQ(world.done({"people"}), "0 people, 0 dates. \"annivo import\" brings in vCards.\n");
  EXPECT_EQ(world.done({"groups"}), "0 groups.\n");
  EXPECT_EQ(world.done({"labels"}), "0 labels.\n");
  EXPECT_EQ(world.done({"calendars"}),
            "0 calendars.\nNone is chosen, so no event is written: \"annivo calendars choose both "
            "CALENDAR\".\n");
  EXPECT_EQ(world.done({"list"}), "0 events.\n");
  for (const char* command : {"people", "groups", "labels", "calendars", "list"}) {
    EXPECT_EQ(world.done({command, "--json"}), "[]\n") << command;
  }
}

TEST_F(Commands, NamesCannotSteerATerminalOrAddALine) {
  world.import(
      vCard("FN:A\x1b[31m\\nB\xC2\x9B"
            "2J\nBDAY:20000101\nUID:u\n"));
  const std::string out = world.done({"people"});
  EXPECT_EQ(out.find('\x1b'), std::string::npos);
  EXPECT_EQ(out.find("\xC2\x9B"), std::string::npos);
  EXPECT_NE(out.find("A\\x1b[31m B\\u009b2J"), std::string::npos) << out;
}

TEST_F(Commands, GroupsCountsPeopleWithDates) {
  importAll();
  const std::string out = world.done({"groups"});
  EXPECT_NE(out.find("Family  1"), std::string::npos) << out;
  EXPECT_NE(out.find("1 group.\n"), std::string::npos);
}

TEST_F(Commands, LabelsShowsWordsAndWhatIsStored) {
  importAll();
  EXPECT_EQ(world.done({"labels"}),
            "LABEL        DATES  STORED AS\n"
            "birthday     2      birthday\n"
            "anniversary  1      Anniversary\n"
            "First met    1      First met\n"
            "3 labels.\n");
}

// calendars

TEST_F(Commands, CalendarsAreCreatedChosenAndGivenUp) {
  const std::string home = world.addCalendar("Home");
  const std::string work = world.addCalendar("Work");
  (void)world.done({"calendars", "choose", "both", "home"});
  EXPECT_TRUE(world.stored("birthCalUID").isEqualToString(home));
  EXPECT_TRUE(world.stored("aneeCalUID").isEqualToString(home));
  EXPECT_EQ(world.stored("birthCalTitle"), world.stored("aneeCalTitle"));
  (void)world.done({"calendars", "choose", "anniversaries", work});
  EXPECT_TRUE(world.stored("birthCalUID").isEqualToString(home));
  EXPECT_TRUE(world.stored("aneeCalUID").isEqualToString(work));
  EXPECT_NE(world.stored("birthCalTitle"), world.stored("aneeCalTitle"));
  EXPECT_NE(world.done({"calendars"}).find("Work      anniversaries  yes"), std::string::npos);
  (void)world.done({"calendars", "none", "birthdays"});
  EXPECT_TRUE(world.stored("birthCalUID").isEqualToString(""));
  EXPECT_TRUE(world.stored("aneeCalUID").isEqualToString(work));
}

TEST_F(Commands, CalendarsCreateCanChooseAtOnce) {
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  EXPECT_NE(world.done({"calendars"}).find("birthdays, anniversaries"), std::string::npos);
}

TEST_F(Commands, CalendarsRefusesWhatCannotBeChosen) {
  EXPECT_NE(world.refused({"calendars", "choose", "both", "Gone"}).find("no calendar \"Gone\""),
            std::string::npos);
  const std::string uid = world.addCalendar("Twice");
  (void)world.addCalendar("Twice");
  EXPECT_NE(world.refused({"calendars", "choose", "both", "Twice"}).find(uid), std::string::npos);
  world.home.writeFile("Library/Calendars/R.calendar/Info.plist",
                       xmlPropertyList(PropertyList::Dictionary{
                           {"Key", "R"}, {"Title", "Read"}, {"Type", "Subscription"}}));
  EXPECT_EQ(world.refused({"calendars", "choose", "both", "Read"}),
            "the calendar \"Read\" cannot be written; choose another");
  EXPECT_EQ(world.refused({"calendars", "create", "  "}), "a calendar needs a title");
}

// settings

TEST_F(Commands, SettingsShowsEveryPreferenceThatTheAgentReads) {
  const std::string out = world.done({"settings"});
  for (const char* name :
       {"birthday-calendar", "anniversary-calendar", "birthday-title", "anniversary-title", "group",
        "excluded-labels", "alarms", "email", "sound", "file", "agent", "empty-calendars",
        "update-checks", "update-interval", "logging", "last-update-check", "last-launched",
        "last-run"}) {
    EXPECT_NE(out.find('\n' + std::string(name) + ' '), std::string::npos) << name << out;
  }
  EXPECT_NE(out.find("message 2 days before at 08:00, for birthdays and anniversaries"),
            std::string::npos);
}

TEST_F(Commands, SettingsStoresATitleTemplateAndShowsAnExample) {
  EXPECT_EQ(world.done({"settings", "birthday-title", "{last name}, {first name} ({age})"}),
            "birthday-title: {last name} , {first name} ( {age} )  (\"Smith, Ann (47)\")\n");
  EXPECT_EQ(world.stored("titleBirthdays"),
            PropertyList(PropertyList::Array{"Last name", ",", "First name", "(", "age", ")"}));
  EXPECT_EQ(world.done({"settings", "birthday-title"}),
            "{last name} , {first name} ( {age} )  (\"Smith, Ann (47)\")\n");
  (void)world.done({"settings", "birthday-title", "--reset"});
  EXPECT_TRUE(world.stored("titleBirthdays").isNil());
}

TEST_F(Commands, SettingsTakesABracketedWordAsItStands) {
  (void)world.done({"settings", "birthday-title", "[{first name}]"});
  EXPECT_EQ(world.stored("titleBirthdays"),
            PropertyList(PropertyList::Array{"[", "First name", "]"}));
}

TEST_F(Commands, SettingsChoosesAGroupByNameOrUID) {
  importAll();
  (void)world.done({"settings", "group", "family"});
  const std::string uid = world.stored("selectedGroupUID").stringOr("");
  EXPECT_TRUE(uid.ends_with(":ABGroup"));
  EXPECT_TRUE(world.stored("selectedGroup").isEqualToString("Family"));
  EXPECT_EQ(world.done({"settings", "group"}), "Family\n");
  (void)world.done({"settings", "group", "all"});
  EXPECT_TRUE(world.stored("selectedGroupUID").isNil());
  (void)world.done({"settings", "group", uid});
  EXPECT_TRUE(world.stored("selectedGroupUID").isEqualToString(uid));
  EXPECT_EQ(world.refused({"settings", "group", "Nobody"}),
            "there is no group \"Nobody\"; \"annivo groups\" lists those there are");
}

TEST_F(Commands, SettingsStoresExcludedLabelsAsDatesCarryThem) {
  importAll();
  (void)world.done({"settings", "excluded-labels", "anniversary", "first MET"});
  EXPECT_EQ(world.stored("theLabels"),
            PropertyList(PropertyList::Array{"Anniversary", "First met"}));
  EXPECT_EQ(world.done({"settings", "excluded-labels"}), "anniversary, First met\n");
  EXPECT_EQ(world.refused({"settings", "excluded-labels", "name day"}),
            "no date has the label \"name day\"; \"annivo labels\" lists those there are");
  (void)world.done({"settings", "excluded-labels", "none"});
  EXPECT_TRUE(world.stored("theLabels").isNil());
}

struct Value {
  const char* name;
  std::vector<std::string> words;
  const char* key;
  PropertyList expected;  ///< nil: refused
};

class SettingValue : public testing::TestWithParam<Value> {};

TEST_P(SettingValue, IsStoredOrRefused) {
  CommandHome world;
  std::vector<std::string> words{"settings"};
  words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
  if (GetParam().expected.isNil()) {
    EXPECT_FALSE(world.refused(words).empty());
  } else {
    (void)world.done(words);
  }
  EXPECT_EQ(world.stored(GetParam().key), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, SettingValue,
    testing::Values(
        Value{"Email", {"email", "a@example.org"}, "setEmail", "a@example.org"},
        Value{"EmailWithoutAt", {"email", "example.org"}, "setEmail", {}},
        Value{"EmailWithoutName", {"email", "@example.org"}, "setEmail", {}},
        Value{"EmailWithoutHost", {"email", "a@"}, "setEmail", {}},
        Value{"EmailTwice", {"email", "a@b", "c@d"}, "setEmail", {}},
        Value{"EmailWithLineBreak", {"email", "a@b\nc"}, "setEmail", {}},
        Value{"Sound", {"sound", "Glass"}, "selectedSystemSound", "Glass"},
        Value{"SoundEmpty", {"sound", ""}, "selectedSystemSound", {}},
        Value{"File", {"file", "/etc/../etc/passwd"}, "alarmFilePath", "/etc/passwd"},
        Value{"FileMissing", {"file", "/no/such"}, "alarmFilePath", {}},
        Value{"AgentOff", {"agent", "off"}, "appRunning", false},
        Value{"AgentOn", {"agent", "on"}, "appRunning", true},
        Value{"AgentMaybe", {"agent", "maybe"}, "appRunning", {}},
        Value{"ChecksOn", {"update-checks", "on"}, "SUEnableAutomaticChecks", true},
        Value{"ChecksStart", {"update-checks", "on"}, "SULastCheckTime", utc(2026, 11, 20, 18, 46)},
        Value{"Daily", {"update-interval", "daily"}, "SUScheduledCheckInterval", 86400},
        Value{"Days", {"update-interval", "3", "days"}, "SUScheduledCheckInterval", 259200},
        Value{"DaysZero", {"update-interval", "0"}, "SUScheduledCheckInterval", {}},
        Value{"DaysTooMany", {"update-interval", "3651"}, "SUScheduledCheckInterval", {}},
        Value{"Hours", {"update-interval", "3", "hours"}, "SUScheduledCheckInterval", {}},
        Value{"ReadOnly", {"last-run", "now"}, "lastUpdate", {}},
        Value{"Unknown", {"colour", "red"}, "colour", {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(Commands, SettingsKeepsTheAgentsOwnSwitchesInItsDomain) {
  (void)world.done({"settings", "logging", "on"});
  (void)world.done({"settings", "empty-calendars", "on"});
  const PropertyList own = world.home.storedPreferences(kAgentDomain);
  EXPECT_EQ(own["doLog"], PropertyList(1));
  EXPECT_EQ(own["alarmSet"], PropertyList("1"));
  EXPECT_EQ(world.done({"settings", "logging"}), "on\n");
}

TEST_F(Commands, SettingsKeepsKeysThatItDoesNotKnow) {
  world.home.parentPreferences({{"other", "kept"}});
  (void)world.done({"settings", "sound", "Glass"});
  EXPECT_TRUE(world.stored("other").isEqualToString("kept"));
}

// alarms

TEST_F(Commands, AlarmsAreAddedAndRemoved) {
  EXPECT_EQ(world.done({"alarms"}),
            "1  message 2 days before at 08:00, for birthdays and anniversaries\n");
  EXPECT_EQ(world.done(
                {"alarms", "add", "email", "--days", "0", "--time", "07:30", "--for", "birthdays"}),
            "1  message 2 days before at 08:00, for birthdays and anniversaries\n"
            "2  email on the day at 07:30, for birthdays\n");
  EXPECT_EQ(world.done({"alarms", "remove", "1"}), "2  email on the day at 07:30, for birthdays\n");
  EXPECT_EQ(world.done({"alarms", "--json"}),
            "[\n  {\n    \"anniversaries\": false,\n    \"birthdays\": true,\n    \"days\": 0,\n"
            "    \"kind\": \"email\",\n    \"number\": 2,\n    \"time\": \"07:30\"\n  }\n]\n");
  EXPECT_EQ(world.refused({"alarms", "remove", "1"}),
            "there is no alarm 1; \"annivo alarms\" lists those there are");
}

// preview

TEST_F(Commands, PreviewShowsWhatARunWouldDoAndWritesNothing) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  (void)world.done({"settings", "excluded-labels", "First met"});
  const auto before = world.home.folder().fingerprint();
  const std::string out = world.done({"preview"});
  EXPECT_EQ(world.home.folder().fingerprint(), before);
  EXPECT_EQ(out,
            "To add (9)\n"
            "  + 2026-02-28  Bob Jones: birthday  [Dates]\n"
            "  + 2026-06-10  Ann Smith: 46th birthday  [Dates]\n"
            "  + 2026-09-17  Ann Smith: 21st anniversary  [Dates]\n"
            "  + 2027-02-28  Bob Jones: birthday  [Dates]\n"
            "  + 2027-06-10  Ann Smith: 47th birthday  [Dates]\n"
            "  + 2027-09-17  Ann Smith: 22nd anniversary  [Dates]\n"
            "  + 2028-02-29  Bob Jones: birthday  [Dates]\n"
            "  + 2028-06-10  Ann Smith: 48th birthday  [Dates]\n"
            "  + 2028-09-17  Ann Smith: 23rd anniversary  [Dates]\n"
            "To change (0)\nTo remove (0)\n"
            "Left out (1)\n    Carl Day, First met 2010-01-02: its label is excluded\n");
}

TEST_F(Commands, PreviewSaysWhyEachDateYieldsNothing) {
  world.import(kCards + vCard("FN:Future\nBDAY:20400101\nUID:u5\nCATEGORIES:Family\n"));
  (void)world.done({"calendars", "create", "Birthdays", "--for", "birthdays"});
  const std::string noCalendar = world.done({"preview"});
  EXPECT_NE(noCalendar.find("Future, birthday 2040-01-01: the date lies too far in the future"),
            std::string::npos)
      << noCalendar;
  EXPECT_NE(noCalendar.find("Ann Smith, anniversary 2005-09-17: no calendar is chosen for "
                            "anniversaries and other dates"),
            std::string::npos)
      << noCalendar;
  (void)world.done({"settings", "group", "Family"});
  EXPECT_NE(world.done({"preview"})
                .find("Bob Jones, birthday --02-29: the person is not in the "
                      "chosen group"),
            std::string::npos);
}

TEST_F(Commands, PreviewOfAMissingCalendarSaysThatItIsCreated) {
  importAll();
  world.home.parentPreferences({{"birthCalUID", "GONE"}, {"birthCalTitle", "New one"}});
  EXPECT_NE(world.done({"preview"}).find("To create: the calendar \"New one\"\n"),
            std::string::npos);
}

TEST_F(Commands, PreviewAsJSONHoldsTheThreeListsAndWhatIsLeftOut) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "birthdays"});
  const std::string out = world.done({"preview", "--json"});
  for (const char* key : {"\"added\": [", "\"changed\": []", "\"removed\": []", "\"leftOut\": [",
                          "\"switchedOff\": false", "\"title\": \"Ann Smith: 46th birthday\""}) {
    EXPECT_NE(out.find(key), std::string::npos) << key << out;
  }
}

// list

TEST_F(Commands, ListRefusesWhatIsNoDay) {
  for (const char* day : {"tomorrow", "2026-02-30", "2026-6", "2026-06-10x"}) {
    EXPECT_NE(world.refused({"list", "--from", day}).find("is no day such as 2026-06-10"),
              std::string::npos)
        << day;
  }
}

// status

TEST_F(Commands, StatusOfAFreshHome) {
  const std::string out = world.done({"status"});
  EXPECT_NE(out.find("Agent:         on\nLast run:      never\nBirthdays:     none\n"),
            std::string::npos)
      << out;
}

TEST_F(Commands, StatusWritesNothing) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  const auto before = world.home.folder().fingerprint();
  EXPECT_NE(world.done({"status"}).find("brings the calendars up to date"), std::string::npos);
  EXPECT_EQ(world.home.folder().fingerprint(), before);
}

TEST_F(Commands, StatusTellsWhatTheNextRunDoes) {
  world.home.ownPreferences({{"lastUpdate", utc(2026, 11, 20)}});
  EXPECT_NE(world.done({"status", "--json"}).find("\"nextRun\": \"nothing\""), std::string::npos);
  (void)world.done({"settings", "agent", "off"});
  EXPECT_NE(world.done({"status", "--json"}).find("\"nextRun\": \"empty\""), std::string::npos);
}

TEST_F(Commands, OnSwitchesOnAndTakesBackAnOrderToEmpty) {
  world.home.parentPreferences({{"appRunning", false}});
  world.home.ownPreferences({{"alarmSet", "1"}});
  (void)world.done({"on"});
  EXPECT_TRUE(world.stored("appRunning").isTheTrueObject());
  EXPECT_TRUE(world.home.storedPreferences(kAgentDomain)["alarmSet"].isNil());
}

TEST_F(Commands, RunRefusesWhileTheAgentIsOff) {
  (void)world.done({"settings", "agent", "off"});
  EXPECT_EQ(world.refused({"run"}), "the agent is switched off; \"annivo on\" switches it on");
  EXPECT_TRUE(world.stored("lastLaunched").isNil());
}

// usage

TEST_F(Commands, UsageErrorsEndWithTwoAndOneLine) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"frobnicate"},
                                                {"import"},
                                                {"calendars", "choose"},
                                                {"calendars", "choose", "weekdays", "x"},
                                                {"alarms", "add", "fax"},
                                                {"alarms", "add", "message", "--days", "x"},
                                                {"list", "--days", "0"},
                                                {"people", "--nope"},
                                                {"people", "extra"}}) {
    const CommandOutcome outcome = world.run(words);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("annivo: ")) << outcome.err;
  }
}

TEST_F(Commands, HelpAndVersionGoToTheResults) {
  EXPECT_NE(world.done({"--help"}).find("preview"), std::string::npos);
  EXPECT_NE(world.done({"alarms", "add", "--help"}).find("--time"), std::string::npos);
  EXPECT_EQ(world.done({"--version"}), "annivo 2.0.0\n");
}

}  // namespace
}  // namespace annivo
