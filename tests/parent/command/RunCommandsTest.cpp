// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

class RunCommands : public testing::Test {
 protected:
  void importAll() { world.import(sampleCards()); }
  CommandHome world;
};

// preview

TEST_F(RunCommands, PreviewShowsWhatARunWouldDoAndWritesNothing) {
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

TEST_F(RunCommands, PreviewSaysWhyEachDateYieldsNothing) {
  world.import(sampleCards() + vCard("FN:Future\nBDAY:20400101\nUID:u5\nCATEGORIES:Family\n"));
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

TEST_F(RunCommands, PreviewOfASwitchedOffAgentTakesTheEventsOut) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  world.runAgent();
  (void)world.done({"settings", "agent", "off"});
  const CommandOutcome outcome = world.run({"preview"});
  EXPECT_EQ(outcome.err,
            "The agent is off: a run only takes its events out (\"annivo on\" switches it on).\n");
  EXPECT_NE(outcome.out.find("To remove (12)\n"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.out.find("Left out"), std::string::npos) << outcome.out;
  EXPECT_NE(world.done({"preview", "--json"}).find("\"switchedOff\": true"), std::string::npos);
}

TEST_F(RunCommands, PreviewOfAMissingCalendarSaysThatItIsCreated) {
  importAll();
  world.home.parentPreferences({{"birthCalUID", "GONE"}, {"birthCalTitle", "New one"}});
  EXPECT_NE(world.done({"preview"}).find("To create: the calendar \"New one\"\n"),
            std::string::npos);
}

TEST_F(RunCommands, PreviewAsJSONHoldsTheThreeListsAndWhatIsLeftOut) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "birthdays"});
  const std::string out = world.done({"preview", "--json"});
  for (const char* key : {"\"added\": [", "\"changed\": []", "\"removed\": []", "\"leftOut\": [",
                          "\"switchedOff\": false", "\"title\": \"Ann Smith: 46th birthday\""}) {
    EXPECT_NE(out.find(key), std::string::npos) << key << out;
  }
}

// list

TEST_F(RunCommands, ListShowsTheEventsOfTheDaysAskedFor) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  (void)world.done({"alarms", "add", "sound", "--for", "birthdays"});
  world.runAgent();
  EXPECT_EQ(world.done({"list"}),
            "DATE        EVENT                        CALENDAR  ALARMS\n"
            "2027-01-02  Carl Day: 17th First met     Dates     message 2 days before at 08:00\n"
            "2027-02-28  Bob Jones: birthday          Dates     message 2 days before at 08:00; "
            "sound on the day at 08:00\n"
            "2027-06-10  Ann Smith: 47th birthday     Dates     message 2 days before at 08:00; "
            "sound on the day at 08:00\n"
            "2027-09-17  Ann Smith: 22nd anniversary  Dates     message 2 days before at 08:00\n"
            "4 events.\n");
  const auto count = [&](const char* from, const char* days) {
    return world.done({"list", "--json", "--from", from, "--days", days}) == "[]\n" ? 0 : 1;
  };
  EXPECT_EQ(count("2027-06-10", "1"), 1);
  EXPECT_EQ(count("2027-06-09", "1"), 0);
  EXPECT_EQ(count("2027-06-11", "1"), 0);
  EXPECT_EQ(count("2027-06-09", "2"), 1);
}

TEST_F(RunCommands, ListAsJSON) {
  world.import(vCard("FN:Ann \\\"A\\\"\nBDAY:--0610\nUID:u1\n"));
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  world.runAgent();
  const std::string list = world.done({"list", "--json"});
  EXPECT_TRUE(
      list.starts_with("[\n  {\n    \"alarms\": [\n      {\n        \"kind\": \"message\",\n"
                       "        \"seconds\": -144000\n      }\n    ],\n"
                       "    \"calendar\": \"Dates\",\n    \"date\": \"2027-06-10\",\n"
                       "    \"title\": "))
      << list;
}

TEST_F(RunCommands, ListRefusesWhatIsNoDay) {
  for (const char* day : {"tomorrow", "2026-02-30", "2026-6", "2026-06-10x"}) {
    EXPECT_NE(world.refused({"list", "--from", day}).find("is no day such as 2026-06-10"),
              std::string::npos)
        << day;
  }
}

// status

TEST_F(RunCommands, StatusOfAFreshHome) {
  const std::string out = world.done({"status"});
  EXPECT_NE(out.find("Agent:         on\nLast run:      never\nBirthdays:     none\n"),
            std::string::npos)
      << out;
}

TEST_F(RunCommands, StatusWritesNothing) {
  importAll();
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  const auto before = world.home.folder().fingerprint();
  EXPECT_NE(world.done({"status"}).find("brings the calendars up to date"), std::string::npos);
  EXPECT_EQ(world.home.folder().fingerprint(), before);
}

TEST_F(RunCommands, StatusTellsWhatTheNextRunDoes) {
  world.home.ownPreferences({{"lastUpdate", utc(2026, 11, 20)}});
  EXPECT_NE(world.done({"status", "--json"}).find("\"nextRun\": \"nothing\""), std::string::npos);
  (void)world.done({"settings", "agent", "off"});
  EXPECT_NE(world.done({"status", "--json"}).find("\"nextRun\": \"empty\""), std::string::npos);
}

TEST_F(RunCommands, StatusAsJSON) {
  const std::string never = world.done({"status", "--json"});
  EXPECT_NE(never.find("  \"agent\": true,\n"), std::string::npos) << never;
  EXPECT_NE(never.find("  \"lastRun\": null,\n"), std::string::npos) << never;
  world.home.ownPreferences({{"lastUpdate", utc(2026, 11, 20, 7, 8)}});
  const std::string once = world.done({"status", "--json"});
  EXPECT_NE(once.find("  \"lastRun\": \"2026-11-20T07:08:00Z\",\n"), std::string::npos) << once;
}

TEST_F(RunCommands, OnSwitchesOnAndTakesBackAnOrderToEmpty) {
  world.home.parentPreferences({{"appRunning", false}});
  world.home.ownPreferences({{"alarmSet", "1"}});
  (void)world.done({"on"});
  EXPECT_TRUE(world.stored("appRunning").isTheTrueObject());
  EXPECT_TRUE(world.home.storedPreferences(kAgentDomain)["alarmSet"].isNil());
}

TEST_F(RunCommands, RunRefusesWhileTheAgentIsOff) {
  (void)world.done({"settings", "agent", "off"});
  EXPECT_EQ(world.refused({"run"}), "the agent is switched off; \"annivo on\" switches it on");
  EXPECT_TRUE(world.stored("lastLaunched").isNil());
}

}  // namespace
}  // namespace annivo
