// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

class SettingsCommand : public testing::Test {
 protected:
  void importAll() { world.import(sampleCards()); }
  CommandHome world;
};

TEST_F(SettingsCommand, ShowsEveryPreferenceThatTheAgentReads) {
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

TEST_F(SettingsCommand, StoresATitleTemplateAndShowsAnExample) {
  EXPECT_EQ(world.done({"settings", "birthday-title", "{last name}, {first name} ({age})"}),
            "birthday-title: {last name}, {first name} ({age})  (\"Smith, Ann (47)\")\n");
  EXPECT_EQ(world.stored("titleBirthdays"),
            PropertyList(PropertyList::Array{"Last name", ",", "First name", "(", "age", ")"}));
  EXPECT_EQ(world.done({"settings", "birthday-title"}),
            "{last name}, {first name} ({age})  (\"Smith, Ann (47)\")\n");
  (void)world.done({"settings", "birthday-title", "--reset"});
  EXPECT_TRUE(world.stored("titleBirthdays").isNil());
}

TEST_F(SettingsCommand, TakesABracketedWordAsItStands) {
  (void)world.done({"settings", "birthday-title", "[{first name}]"});
  EXPECT_EQ(world.stored("titleBirthdays"),
            PropertyList(PropertyList::Array{"[", "First name", "]"}));
}

TEST_F(SettingsCommand, ChoosesAGroupByNameOrUID) {
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

TEST_F(SettingsCommand, StoresExcludedLabelsAsDatesCarryThem) {
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

TEST_F(SettingsCommand, AsJSONHoldsAllOrOne) {
  const std::string all = world.done({"settings", "--json"});
  EXPECT_NE(all.find("  \"sound\": \"Basso\",\n"), std::string::npos) << all;
  EXPECT_NE(all.find("  \"update-interval\": 604800\n}\n"), std::string::npos) << all;
  EXPECT_EQ(world.done({"settings", "sound", "--json"}),
            "{\n  \"name\": \"sound\",\n  \"value\": \"Basso\"\n}\n");
}

TEST_F(SettingsCommand, RefusesAMisspeltOptionAmongTheValues) {
  EXPECT_EQ(world.run({"settings", "sound", "--now"}).status, 2);
  EXPECT_TRUE(world.stored("selectedSystemSound").isNil());
}

TEST_F(SettingsCommand, KeepsTheAgentsOwnSwitchesInItsDomain) {
  (void)world.done({"settings", "logging", "on"});
  (void)world.done({"settings", "empty-calendars", "on"});
  const PropertyList own = world.home.storedPreferences(kAgentDomain);
  EXPECT_EQ(own["doLog"], PropertyList(1));
  EXPECT_EQ(own["alarmSet"], PropertyList("1"));
  EXPECT_EQ(world.done({"settings", "logging"}), "on\n");
}

TEST_F(SettingsCommand, KeepsKeysThatItDoesNotKnow) {
  world.home.parentPreferences({{"other", "kept"}});
  (void)world.done({"settings", "sound", "Glass"});
  EXPECT_TRUE(world.stored("other").isEqualToString("kept"));
}

}  // namespace
}  // namespace annivo
