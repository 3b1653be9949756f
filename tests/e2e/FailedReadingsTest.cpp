// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "codecs/icalendar/EventFile.h"
#include "tests/e2e/AgentHome.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "Library/Application Support/Annivo 2/Annivo 2.unfinished";
constexpr const char* kLedger = "Library/Application Support/Annivo 2/Annivo 2.xml";

/// A home in which a run has written three events each for Ann and Joe.
class FailedReadings : public testing::Test {
 protected:
  FailedReadings() {
    home.addCalendar(kBirthdays, "Birthdays");
    home.setParent({{"appRunning", true},
                    {"birthCalTitle", "Birthdays"},
                    {"birthCalUID", kBirthdays},
                    {"titleBirthdays", PropertyList::Array{"First name", "type"}},
                    {"alarmTable", PropertyList::Array{}}});
    home.setContacts({ann_, joe_});
    run();
    before_ = events();
  }
  void run() {
    const auto done = home.run();
    EXPECT_LE(done.status, 1) << done.errors;
  }
  /// A run after the contacts were looked at by somebody.
  void passOver(const std::vector<StoredPerson>& people) {
    home.setContacts(people);
    run();
  }
  /// The files of a calendar's events with their contents.
  [[nodiscard]] std::map<std::string, std::string> events(
      const std::string& calendar = kBirthdays) const {
    return home.folder.snapshot("Library/Calendars/" + calendar + ".calendar/Events");
  }
  /// The name of an event file of somebody.
  [[nodiscard]] std::string fileOf(const std::string& person) const {
    for (const auto& [name, text] : before_) {
      if (text.find("SUMMARY:" + person) != text.npos) return name;
    }
    return "";
  }
  [[nodiscard]] std::string path(const std::string& name,
                                 const std::string& calendar = kBirthdays) const {
    return home.folder.path("Library/Calendars/" + calendar + ".calendar/Events/" + name);
  }
  [[nodiscard]] std::size_t countOf(const std::string& person) const {
    std::size_t count = 0;
    for (const std::string& title : home.titles(kBirthdays)) count += title.starts_with(person);
    return count;
  }
  void setEditable(bool editable) const {
    home.addCalendar(kBirthdays, "Birthdays", {{"Editable", editable}});
  }
  void expectAllAsBefore() const {
    EXPECT_EQ(events(), before_);
    EXPECT_EQ(home.ledgerRecords(), 6U);
    EXPECT_FALSE(home.folder.exists(kMark));
  }

  AgentHome home;
  const StoredPerson ann_ = personBorn("Ann", "Smith", {1980, 6, 10});
  const StoredPerson joe_ = personBorn("Joe", "Dow", {1970, 1, 31});
  std::map<std::string, std::string> before_;
};

TEST_F(FailedReadings, AnEventFileThatCannotBeReadForOneRunStaysAndItsRecord) {
  ASSERT_EQ(before_.size(), 6U);
  const std::string ann = fileOf("Ann");
  const std::string aside = home.folder.path("aside");
  fs::rename(path(ann), aside);
  fs::create_symlink(ann, path(ann));  // Names itself: it can be followed for ever.
  passOver({ann_, joe_});
  EXPECT_EQ(home.ledgerRecords(), 6U);
  EXPECT_TRUE(home.folder.exists(kMark));
  fs::rename(aside, path(ann));
  run();
  expectAllAsBefore();
}

TEST_F(FailedReadings, AnEventOfADeletedContactThatCannotBeReadGoesWithTheNextRun) {
  const std::string ann = fileOf("Ann");
  const std::string aside = home.folder.path("aside");
  fs::rename(path(ann), aside);
  fs::create_symlink(ann, path(ann));
  passOver({joe_});
  EXPECT_EQ(home.ledgerRecords(), 4U);
  fs::rename(aside, path(ann));
  run();
  EXPECT_EQ(countOf("Ann"), 0U);
  EXPECT_EQ(countOf("Joe"), 3U);
  EXPECT_EQ(home.ledgerRecords(), 3U);
}

TEST_F(FailedReadings, AnEventFileThatStaysDamagedForADayIsSetAsideAndMadeAnewOnce) {
  for (const std::string& damaged :
       {std::string("BEGIN:VCALENDAR\r\nMALFORMED"), std::string(EventFile::kLimit + 1, 'x')}) {
    const auto names = events();
    const std::string name = std::find_if(names.begin(), names.end(), [](const auto& file) {
                               return file.first.ends_with(".ics");
                             })->first;
    fs::remove(path(name));
    home.folder.writeFile("damaged", damaged);
    fs::rename(home.folder.path("damaged"), path(name));
    passOver({ann_, joe_});
    EXPECT_EQ(events().size(), names.size()) << "somebody may be writing it";
    EXPECT_TRUE(home.folder.exists(kMark));
    fs::last_write_time(path(name), fs::file_time_type::clock::now() - std::chrono::hours{25});
    run();
    EXPECT_FALSE(fs::exists(path(name)));
    EXPECT_EQ(events().size(), names.size() + 1) << "the damaged file and a new event";
    EXPECT_EQ(countOf("Ann"), 3U);
    EXPECT_EQ(countOf("Joe"), 3U);
    EXPECT_FALSE(home.folder.exists(kMark));
    const auto after = events();
    EXPECT_TRUE(std::any_of(after.begin(), after.end(), [&](const auto& file) {
      return file.first.starts_with(name + ".damaged-") && file.second == damaged;
    }));
    passOver({ann_, joe_});
    EXPECT_EQ(events(), after);
  }
}

TEST_F(FailedReadings, CalendarsThatCannotBeReadForOneRunLoseNothing) {
  for (const std::string& folder :
       {std::string("Library/Calendars"),
        "Library/Calendars/" + std::string(kBirthdays) + ".calendar",
        "Library/Calendars/" + std::string(kBirthdays) + ".calendar/Events",
        "Library/Calendars/" + std::string(kBirthdays) + ".calendar/Info.plist"}) {
    SCOPED_TRACE(folder);
    const std::string there = home.folder.path(folder);
    fs::rename(there, home.folder.path("aside"));
    fs::create_symlink(there, there);
    passOver({ann_, joe_});
    EXPECT_EQ(home.ledgerRecords(), 6U);
    EXPECT_EQ(PropertyList(home.parent())["birthCalUID"].stringOr(""), kBirthdays);
    EXPECT_TRUE(home.folder.exists(kMark));
    fs::remove(there);
    fs::rename(home.folder.path("aside"), there);
    run();
    expectAllAsBefore();
  }
}

TEST_F(FailedReadings, ACalendarThatMayNotBeWrittenForOneRunIsTakenUpAgain) {
  setEditable(false);
  passOver({ann_, joe_});
  EXPECT_EQ(events(), before_);
  EXPECT_TRUE(home.folder.exists(kMark));
  const auto locked = home.fingerprint();
  run();
  EXPECT_EQ(home.fingerprint(), locked) << "nothing to do while it stays so";
  setEditable(true);
  run();
  expectAllAsBefore();
}

TEST_F(FailedReadings, AContactDeletedWhileItsCalendarWasLockedLeavesNoOrphan) {
  setEditable(false);
  passOver({joe_});
  setEditable(true);
  run();
  EXPECT_EQ(countOf("Ann"), 0U);
  EXPECT_EQ(countOf("Joe"), 3U);
  EXPECT_EQ(home.ledgerRecords(), 3U);
  EXPECT_FALSE(home.folder.exists(kMark));
}

TEST_F(FailedReadings, AnAgentSwitchedOffWhileItsCalendarWasLockedEmptiesItLater) {
  setEditable(false);
  auto parent = home.parent();
  parent["appRunning"] = false;
  home.setParent(parent);
  run();
  EXPECT_EQ(events(), before_);
  setEditable(true);
  run();
  EXPECT_TRUE(events().empty());
}

TEST_F(FailedReadings, AnOlderLedgerPutBackMakesNoEventASecondTime) {
  const std::string older = home.ledger();
  const StoredPerson sue = personBorn("Sue", "Ray", {1990, 2, 20});
  passOver({ann_, joe_, sue});
  const auto all = events();
  ASSERT_EQ(all.size(), 9U);
  home.folder.writeFile(kLedger, older);
  passOver({ann_, joe_, sue});
  EXPECT_EQ(events(), all);
  EXPECT_EQ(home.ledgerRecords(), 9U);
}

TEST_F(FailedReadings, ARecordThatNamesALostEventTakesUpTheOneThatIsThere) {
  const std::string older = home.ledger();
  fs::remove(path(fileOf("Ann")));
  passOver({ann_, joe_});  // Makes it anew, under another UID.
  const auto all = events();
  home.folder.writeFile(kLedger, older);
  passOver({ann_, joe_});
  EXPECT_EQ(events(), all);
}

TEST_F(FailedReadings, OfOneUIDInTwoCalendarsTheRecordsOwnCountsAndACopyIsLeftAlone) {
  const struct {
    const char* name;
    PropertyList::Dictionary info;
    std::string identity;
  } others[] = {
      {"a copy under its own UID, edited", {}, ""},
      {"a copy with all that the event has", {}, "kept"},
      {"a subscription", {{"Type", "Subscription"}}, "kept"},
      {"a copied folder", {{"Key", kBirthdays}}, "kept"},
  };
  int number = 0;
  for (const auto& [name, info, identity] : others) {
    SCOPED_TRACE(name);
    const std::string other = "0000000" + std::to_string(++number);  // Sorts first.
    home.addCalendar(other, "Other", info);
    const auto now = events();
    for (const auto& [file, text] : now) {
      const bool isKept = identity == "kept";
      const auto line = text.find("X-ANNIVO-IDENTITY");
      const auto end = text.find("END:VEVENT");
      home.folder.writeFile("Library/Calendars/" + other + ".calendar/Events/" + file,
                            isKept ? text : text.substr(0, line) + text.substr(end));
    }
    const auto copy = events(other);
    auto renamed = ann_;
    renamed.firstName = "Ann" + std::to_string(number);
    passOver({renamed, joe_});
    EXPECT_EQ(countOf("Ann" + std::to_string(number) + " "), 3U) << "retitled in its own calendar";
    EXPECT_EQ(events(other), copy);
    passOver({joe_});
    EXPECT_EQ(events().size(), 3U);
    EXPECT_EQ(events(other), copy);
    passOver({ann_, joe_});
    if (number != 2) {  // There the copy is taken for the event that was moved.
      EXPECT_EQ(events().size(), 6U);
    }
    EXPECT_EQ(events(other), copy);
    fs::remove_all(home.folder.path("Library/Calendars/" + other + ".calendar"));
    passOver({ann_, joe_});
  }
}

TEST_F(FailedReadings, AnInterruptedRunIsMadeGoodThoughNoCalendarIsChosenAnyMore) {
  auto parent = home.parent();
  parent["birthCalUID"] = "";
  home.setParent(parent);
  home.folder.writeFile(kMark, "");
  run();
  EXPECT_TRUE(events().empty());
  EXPECT_FALSE(home.folder.exists(kMark));
}

TEST_F(FailedReadings, WhatOtherProgramsLeftHalfWrittenIsTheirs) {
  const std::string calendar = "Library/Calendars/" + std::string(kBirthdays) + ".calendar/Events/";
  const std::string half = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Other//EN\r\nBEGIN:VEV";
  for (const char* name : {".other.ics.tmp", "5D0C6E7C-31E5-4C0B-8C37-5E0D1A7B2F10.ics",
                           ".5D0C6E7C-31E5-4C0B-8C37-5E0D1A7B2F10.ics.tmp"}) {
    home.folder.writeFile(calendar + name, half);
    before_[name] = half;
  }
  home.folder.writeFile(kMark, "");
  run();
  EXPECT_EQ(events(), before_);
}

}  // namespace
}  // namespace annivo
