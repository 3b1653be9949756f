// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "tests/e2e/AgentHome.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* kMetadata = "Library/Application Support/AddressBook/Metadata";

const PropertyList kPlainTitle = PropertyList::Array{"First name", "type"};

/// Preferences with two calendars of different titles and a template without ages.
PropertyList::Dictionary twoCalendars() {
  return {{"birthCalTitle", "Birthdays"},  {"aneeCalTitle", "Anniversaries"},
          {"birthCalUID", kBirthdays},     {"aneeCalUID", kAnniversaries},
          {"titleBirthdays", kPlainTitle}, {"titleAnniversaries", kPlainTitle},
          {"setEmail", "me@example.org"},  {"alarmTable", PropertyList::Array{}}};
}

class Agent : public testing::Test {
 protected:
  /// Ann's birthday and Bob's anniversary, two calendars, logging on.
  void SetUp() override {
    home.addCalendar(kBirthdays, "Birthdays");
    home.addCalendar(kAnniversaries, "Anniversaries");
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10}),
                      personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4})});
    home.setParent(twoCalendars());
    home.setOwn({{"doLog", 1}});
  }

  void change(const PropertyList::Dictionary& values) const {
    PropertyList::Dictionary parent = home.parent();
    for (const auto& [key, value] : values) parent[key] = value;
    home.setParent(parent);
  }

  const Texts threeBirthdays{"Ann birthday", "Ann birthday", "Ann birthday"};
  const Texts threeAnniversaries{"Bob anniversary", "Bob anniversary", "Bob anniversary"};
  AgentHome home;
};

TEST_F(Agent, WritesThreeEventsForEachDateAndThenHasNothingToUpdate) {
  const AgentRun first = home.run();
  EXPECT_EQ(first.status, 0) << first.errors;
  EXPECT_EQ(home.titles(kBirthdays), threeBirthdays) << first.errors;
  EXPECT_EQ(home.titles(kAnniversaries), threeAnniversaries);
  EXPECT_EQ(home.ledgerRecords(), 6U);

  const auto before = home.fingerprint();
  const AgentRun second = home.run();
  EXPECT_EQ(second.status, 0);
  Texts lines = second.log;
  std::erase_if(lines,
                [](const auto& line) { return line.starts_with("Calendar folder updated:"); });
  EXPECT_EQ(lines, (Texts{"Annivo starting", "Annivo ending - nothing to update"}));
  EXPECT_EQ(second.log.size(), 4U);
  EXPECT_EQ(home.fingerprint(), before);
}

TEST_F(Agent, LogsThePassInItsOrder) {
  const AgentRun run = home.run();
  Texts landmarks;
  for (const std::string& line : run.log) {
    for (const char* known :
         {"Annivo open", "Annivo starting", "Starting to add", "anni Ended", "birth Ended",
          "Deleting old events 1", "Deleting old events 2", "Deleted old events", "Annivo ending",
          "Using calendar Birthdays.", "Using calendar Anniversaries."}) {
      if (line == known) landmarks.push_back(line);
    }
  }
  EXPECT_EQ(landmarks, (Texts{"Annivo starting", "Starting to add", "Using calendar Anniversaries.",
                              "anni Ended", "Using calendar Birthdays.", "birth Ended",
                              "Deleting old events 1", "Deleting old events 2",
                              "Deleted old events", "Annivo ending"}));
}

TEST_F(Agent, AsksOnAFirstRunWhetherAnythingChangedSince1970) {
  home.folder.touch(kMetadata, Date{std::chrono::seconds{0}});
  home.folder.touch("Library/Calendars/" + std::string(kBirthdays) + ".calendar/Events",
                    kUnixEpoch);
  home.folder.touch("Library/Calendars/" + std::string(kAnniversaries) + ".calendar/Events",
                    kUnixEpoch);
  const AgentRun atTheEpoch = home.run();
  EXPECT_TRUE(atTheEpoch.logged("Annivo ending - nothing to update")) << atTheEpoch.errors;
  EXPECT_FALSE(home.own().contains("lastUpdate"));

  home.folder.touch(kMetadata, Date{std::chrono::seconds{1}});
  const AgentRun oneSecondLater = home.run();
  EXPECT_TRUE(oneSecondLater.logged("Annivo ending")) << oneSecondLater.errors;
  EXPECT_TRUE(home.own()["lastUpdate"].date());
}

TEST_F(Agent, RunsAgainWhenTheParentWasLaunchedSince) {
  (void)home.run();
  const Date later =
      std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now()) +
      std::chrono::seconds{1};
  change({{"lastLaunched", later}});
  EXPECT_TRUE(home.run().logged("Starting to add"));
}

TEST_F(Agent, WithBothCalendarsUnsetWritesNothingButRemovesAndStoresTheTime) {
  (void)home.run();
  const auto before = home.own();
  change({{"birthCalUID", ""}, {"aneeCalUID", ""}});
  home.folder.touch(kMetadata, Date{std::chrono::seconds{4000000000}});
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(home.titles(kBirthdays), Texts{}) << run.errors;
  EXPECT_EQ(home.titles(kAnniversaries), Texts{});
  EXPECT_EQ(home.ledgerRecords(), 0U);
  EXPECT_GT(*home.own()["lastUpdate"].date(), *before.at("lastUpdate").date());
  EXPECT_EQ(home.calendars(), (Texts{kAnniversaries, kBirthdays}));
}

TEST_F(Agent, EqualTitlesWithEqualIdentifiersShareOneCalendarAndKeepThePreference) {
  change({{"birthCalTitle", "Days"}, {"aneeCalTitle", "Days"}, {"birthCalUID", kAnniversaries}});
  (void)home.run();
  Texts both = threeBirthdays;
  both.insert(both.end(), threeAnniversaries.begin(), threeAnniversaries.end());
  EXPECT_EQ(home.titles(kAnniversaries), both);
  EXPECT_EQ(home.titles(kBirthdays), Texts{});
  EXPECT_TRUE(home.parent()["birthCalUID"].isEqualToString(kAnniversaries));
}

TEST_F(Agent, EqualTitlesWithDifferentIdentifiersMakeThePreferencesNameOneCalendar) {
  change({{"birthCalTitle", "Days"}, {"aneeCalTitle", "Days"}});
  (void)home.run();
  Texts both = threeBirthdays;
  both.insert(both.end(), threeAnniversaries.begin(), threeAnniversaries.end());
  EXPECT_EQ(home.titles(kAnniversaries), both);
  EXPECT_EQ(home.titles(kBirthdays), Texts{});
  EXPECT_TRUE(home.parent()["birthCalUID"].isEqualToString(kAnniversaries));
}

TEST_F(Agent, EqualTitlesWithoutAnAnniversaryCalendarLeaveTheBirthdaysWithoutOne) {
  change({{"birthCalTitle", "Days"}, {"aneeCalTitle", "Days"}, {"aneeCalUID", ""}});
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 1) << "events without a calendar cannot be saved";
  EXPECT_TRUE(run.logged("birth Ended")) << run.errors;
  EXPECT_FALSE(run.logged("anni Ended"));
  EXPECT_FALSE(home.parent().contains("birthCalUID"));
  EXPECT_EQ(home.titles(kBirthdays), Texts{});
  EXPECT_EQ(home.titles(kAnniversaries), Texts{});
  EXPECT_EQ(home.calendars(), (Texts{kAnniversaries, kBirthdays}));
}

TEST_F(Agent, CreatesAMissingCalendarAndStoresItsIdentifier) {
  change({{"birthCalUID", "unknown"}});
  const AgentRun run = home.run();
  const std::string uid = home.parent()["birthCalUID"].stringOr("");
  EXPECT_NE(uid, "unknown") << run.errors;
  EXPECT_EQ(home.titles(uid), threeBirthdays);
  (void)home.run();
  EXPECT_EQ(home.calendars().size(), 3U);
}

struct SwitchedOff {
  const char* name;
  PropertyList appRunning;
  PropertyList alarmSet;
};

class AgentSwitchedOff : public Agent, public testing::WithParamInterface<SwitchedOff> {};

TEST_P(AgentSwitchedOff, TakesItsEventsOutAndStaysOff) {
  (void)home.run();
  const auto lastUpdate = home.own()["lastUpdate"];
  home.folder.writeFile(
      "Library/Calendars/" + std::string(kBirthdays) + ".calendar/Events/mine.ics",
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:mine\r\nSUMMARY:Mine\r\n"
      "DTSTART;VALUE=DATE:20260101\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
  if (!GetParam().appRunning.isNil()) change({{"appRunning", GetParam().appRunning}});
  if (!GetParam().alarmSet.isNil()) {
    auto own = home.own();
    own["alarmSet"] = GetParam().alarmSet;
    home.setOwn(own);
  }
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.logged("Annivo emptying calendar")) << run.errors;
  EXPECT_TRUE(run.logged("Annivo ending"));
  EXPECT_EQ(home.titles(kBirthdays), Texts{"Mine"});
  EXPECT_EQ(home.titles(kAnniversaries), Texts{});
  EXPECT_EQ(home.ledgerRecords(), 0U);
  EXPECT_EQ(home.parent()["appRunning"], PropertyList(false));
  EXPECT_EQ(home.own()["lastUpdate"], lastUpdate);
}

INSTANTIATE_TEST_SUITE_P(Forms, AgentSwitchedOff,
                         testing::Values(SwitchedOff{"False", false, {}},
                                         SwitchedOff{"Number1", 1, {}},
                                         SwitchedOff{"Text1", "1", {}},
                                         SwitchedOff{"AlarmSetWinsOverTrue", true, "1"},
                                         SwitchedOff{"AlarmSetAlone", {}, "1"}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Agent, OtherValuesOfAlarmSetLeaveItRunning) {
  for (const PropertyList& value : {PropertyList("0"), PropertyList(1), PropertyList(true)}) {
    home.setOwn({{"doLog", 1}, {"alarmSet", value}});
    EXPECT_FALSE(home.run().logged("Annivo emptying calendar"));
  }
}

TEST_F(Agent, SkipsALockedCalendarAndWritesTheOther) {
  home.setOwn({});
  home.addCalendar(kAnniversaries, "Anniversaries", {{"Editable", false}});
  const AgentRun run = home.run();
  EXPECT_TRUE(
      run.logged("The calendar Anniversaries is uneditable. No events will be added to this "
                 "calendar."))
      << run.errors;
  EXPECT_EQ(home.titles(kAnniversaries), Texts{});
  EXPECT_EQ(home.titles(kBirthdays), threeBirthdays);
}

struct Switch {
  const char* name;
  PropertyList value;
  bool on;
};

class AgentLogging : public Agent, public testing::WithParamInterface<Switch> {};

TEST_P(AgentLogging, FollowsTheIntegerValueOfTheSwitch) {
  home.setOwn(GetParam().value.isNil() ? PropertyList::Dictionary{}
                                       : PropertyList::Dictionary{{"doLog", GetParam().value}});
  const AgentRun run = home.run();
  EXPECT_EQ(run.logged("Annivo starting"), GetParam().on) << run.errors;
  EXPECT_EQ(run.errors.empty(), !GetParam().on) << run.errors;
  EXPECT_FALSE(run.logged("Annivo open"));
}

INSTANTIATE_TEST_SUITE_P(Forms, AgentLogging,
                         testing::Values(Switch{"Number1", 1, true}, Switch{"Text1", "1", true},
                                         Switch{"True", true, true},
                                         Switch{"Text1WithMore", "1 please", true},
                                         Switch{"Number0", 0, false}, Switch{"Text0", "0", false},
                                         Switch{"Number2", 2, false}, Switch{"Text2", "2", false},
                                         Switch{"Word", "yes", false},
                                         Switch{"False", false, false},
                                         Switch{"Absent", {}, false}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Agent, KeepsKeysOfTheParentThatItDoesNotKnow) {
  const PropertyList unknown = PropertyList::Dictionary{
      {"nested", PropertyList::Array{1, "two", true, 4.5, -5}}, {"text", "ü"}};
  change({{"aKeyOfALaterVersion", unknown}, {"birthCalUID", "unknown"}});
  (void)home.run();
  EXPECT_EQ(home.parent()["aKeyOfALaterVersion"], unknown);
}

TEST_F(Agent, RunsFromACopyOfTheProductElsewhere) {
  const fs::path copy = home.folder.path("Elsewhere/With Spaces/Annivo 2.app");
  fs::create_directories(copy.parent_path());
  fs::copy(ANNIVO_PRODUCT, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  const AgentRun run =
      home.run({}, (copy / "Contents/Helpers/AnnivoAgent.app/Contents/Linux/AnnivoAgent").string());
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(home.titles(kBirthdays), threeBirthdays) << run.errors;
}

TEST_F(Agent, TwoStartedTogetherLeaveWhatOneLeaves) {
  AgentRun one;
  AgentRun other;
  std::thread first([&] { one = home.run(); });
  std::thread second([&] { other = home.run(); });
  first.join();
  second.join();
  EXPECT_EQ(one.status, 0);
  EXPECT_EQ(other.status, 0);
  EXPECT_NE(one.logged("Starting to add"), other.logged("Starting to add"));
  EXPECT_EQ(home.titles(kBirthdays), threeBirthdays);
  EXPECT_EQ(home.titles(kAnniversaries), threeAnniversaries);
  EXPECT_EQ(home.ledgerRecords(), 6U);
}

TEST_F(Agent, KeepsPersonalFilesToTheirOwner) {
  (void)home.run();
  for (const char* name : {"Library/Application Support/Annivo 2/Annivo 2.xml",
                           "Library/Preferences/org.annivo.Annivo2.Agent.plist"}) {
    struct stat status {};
    ASSERT_EQ(stat(home.folder.path(name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0777, 0600U) << name;
  }
  for (const auto& entry : fs::directory_iterator(home.eventsFolder(kBirthdays))) {
    EXPECT_EQ(fs::status(entry).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  }
}

}  // namespace
}  // namespace annivo
