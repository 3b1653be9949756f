// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

class CalendarCommands : public testing::Test {
 protected:
  void importAll() { world.import(sampleCards()); }
  CommandHome world;
};

TEST_F(CalendarCommands, CalendarsAreCreatedChosenAndGivenUp) {
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

TEST_F(CalendarCommands, CalendarsAsJSON) {
  const std::string uid = world.addCalendar("Home \"x\"");
  (void)world.done({"calendars", "choose", "birthdays", uid});
  EXPECT_EQ(
      world.done({"calendars", "--json"}),
      "[\n  {\n    \"anniversaries\": false,\n    \"birthdays\": true,\n    \"editable\": true,\n"
      "    \"title\": \"Home \\\"x\\\"\",\n    \"uid\": \"" +
          uid + "\"\n  }\n]\n");
}

TEST_F(CalendarCommands, CalendarsCreateCanChooseAtOnce) {
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  EXPECT_NE(world.done({"calendars"}).find("birthdays, anniversaries"), std::string::npos);
}

TEST_F(CalendarCommands, CalendarsRefusesWhatCannotBeChosen) {
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

TEST_F(CalendarCommands, AlarmThatIsThereAlreadyIsNotAddedTwice) {
  const CommandOutcome outcome = world.run(
      {"alarms", "add", "message", "--days", "2", "--time", "8:00", "--for", "birthdays"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "1  message 2 days before at 08:00, for birthdays and anniversaries\n");
  EXPECT_EQ(outcome.err, "There is such an alarm already; nothing is added.\n");
  EXPECT_TRUE(world.stored("alarmTable").isNil());
}

TEST_F(CalendarCommands, AlarmsAreAddedAndRemoved) {
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

}  // namespace
}  // namespace annivo
