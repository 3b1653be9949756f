// SPDX-License-Identifier: MIT
// What a run makes of contacts that it cannot read for the moment: nobody's events go, and the next
// run looks again.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/TracedAgent.h"
#include "tests/support/EditDatabase.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kFolder = "Library/Application Support/AddressBook";
constexpr const char* kMark = "Library/Application Support/Annivo 2/Annivo 2.unfinished";

/// Ann in the main store, Bob and Cid in that of a source, each with three events.
class UnreadableContacts : public testing::Test {
 protected:
  void SetUp() override {
    home.addCalendar(kBirthdays, "Birthdays");
    home.addCalendar(kAnniversaries, "Anniversaries");
    home.setParent({{"birthCalTitle", "Birthdays"},
                    {"aneeCalTitle", "Anniversaries"},
                    {"birthCalUID", kBirthdays},
                    {"aneeCalUID", kAnniversaries},
                    {"titleBirthdays", PropertyList::Array{"First name"}},
                    {"titleAnniversaries", PropertyList::Array{"First name"}},
                    {"alarmTable", PropertyList::Array{}}});
    home.setOwn({{"doLog", 1}});
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    home.setContacts({personBorn("Bob", "Jones", {1980, 6, 10}),
                      personWithDate("Cid", "Jones", "x", {2001, 3, 4})},
                     {}, StoreGeneration::current, "A");
    ASSERT_EQ(home.run().status, 0);
    ASSERT_EQ(people(kBirthdays), (Texts{"Ann", "Bob"}));
    ASSERT_EQ(people(kAnniversaries), Texts{"Cid"});
    ASSERT_FALSE(home.folder.exists(kMark));
  }
  [[nodiscard]] Texts people(const char* calendar) const {
    Texts names = home.titles(calendar);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
  }
  [[nodiscard]] std::string source() const { return AgentHome::storeOf("A"); }
  static bool presented(const AgentRun& run, const std::string& text) {
    return std::any_of(run.log.begin(), run.log.end(), [&](const std::string& line) {
      return line.starts_with("Nobody to ask") && line.find(text) != std::string::npos;
    });
  }

  AgentHome home;
};

TEST_F(UnreadableContacts, NobodysEventsGoAndTheNextRunLooksAgain) {
  const std::string whole = home.folder.readFile(source());
  home.folder.writeFile(source(), whole.substr(0, whole.size() / 2));
  home.setContacts({personBorn("Sue", "Ray", {1990, 2, 28})});
  const AgentRun run = home.run();
  EXPECT_TRUE(presented(run, home.folder.path(source()))) << run.errors;
  EXPECT_EQ(people(kBirthdays), (Texts{"Ann", "Bob", "Sue"}))
      << "Ann may be where nothing could be read";
  EXPECT_EQ(people(kAnniversaries), Texts{"Cid"});
  EXPECT_TRUE(home.folder.exists(kMark));

  // Put back as it was but for Bob, and with nothing that would tell of a change.
  home.folder.writeFile(source(), whole);
  EditDatabase(home.folder.path(source()))
      .run("UPDATE ZABCDRECORD SET ZBIRTHDAY = NULL WHERE ZFIRSTNAME = 'Bob'");
  const AgentRun next = home.run();
  EXPECT_EQ(next.status, 0) << next.errors;
  EXPECT_EQ(people(kBirthdays), Texts{"Sue"}) << next.errors;
  EXPECT_EQ(people(kAnniversaries), Texts{"Cid"});
  EXPECT_FALSE(home.folder.exists(kMark));
  EXPECT_TRUE(home.run().logged("Annivo ending - nothing to update"));
}

TEST_F(UnreadableContacts, WhatCanBeReadIsJudgedAsAlways) {
  home.folder.writeFile(source(), "no store");
  auto parent = home.parent();
  parent["theLabels"] = PropertyList::Array{"birthday"};
  home.setParent(parent);
  home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
  (void)home.run();
  EXPECT_EQ(people(kBirthdays), Texts{"Bob"}) << "Ann was read and is not chosen any more";
}

TEST_F(UnreadableContacts, UnchangedTheyAreReadByEachRunThatWritesNothing) {
  home.folder.writeFile(source(), "no store");
  home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
  (void)home.run();
  const auto before = home.folder.fingerprint("Library/Calendars");
  const std::string ledger = home.ledger();
  EXPECT_TRUE(presented(home.run(), home.folder.path(source())));
  EXPECT_EQ(home.folder.fingerprint("Library/Calendars"), before);
  EXPECT_EQ(home.ledger(), ledger);
}

TEST_F(UnreadableContacts, SwitchedOffAllEventsGo) {
  home.folder.writeFile(source(), "no store");
  auto parent = home.parent();
  parent["appRunning"] = false;
  home.setParent(parent);
  EXPECT_EQ(home.run().status, 0);
  EXPECT_EQ(people(kBirthdays), Texts{});
  EXPECT_EQ(people(kAnniversaries), Texts{});
}

TEST_F(UnreadableContacts, AFolderThatCannotBeListedIsPresented) {
  if (!kCallsCanFail) GTEST_SKIP() << "this machine's calls cannot be made to fail";
  for (const std::string& folder : {std::string(kFolder), std::string(kFolder) + "/Sources",
                                    std::string(kFolder) + "/Sources/A"}) {
    for (const int code : {EIO, EACCES, EMFILE}) {
      SCOPED_TRACE(folder + " fails with " + std::to_string(code));
      const TracedRun run = traceAgent(
          home.folder.path(),
          {.kind = Disturbance::Kind::failOpening, .code = code, .path = home.folder.path(folder)});
      EXPECT_NE(run.errors.find("Nobody to ask"), std::string::npos) << run.errors;
      EXPECT_NE(run.errors.find(home.folder.path(folder)), std::string::npos) << run.errors;
      EXPECT_EQ(people(kBirthdays), (Texts{"Ann", "Bob"}));
      EXPECT_EQ(people(kAnniversaries), Texts{"Cid"});
      EXPECT_TRUE(home.folder.exists(kMark));
    }
  }
  EXPECT_EQ(home.run().status, 0);
  EXPECT_FALSE(home.folder.exists(kMark));
}

TEST_F(UnreadableContacts, ALockedStoreIsWaitedForOnlyWhereThereIsSomethingToDo) {
  EditDatabase writer(home.folder.path(source()));
  writer.run("BEGIN EXCLUSIVE");
  const AgentRun idle = home.run();
  EXPECT_TRUE(idle.logged("Annivo ending - nothing to update")) << idle.errors;
  EXPECT_FALSE(idle.mentions("locked")) << idle.errors;
  home.setContacts({personBorn("Sue", "Ray", {1990, 2, 28})});
  const AgentRun run = home.run();
  EXPECT_TRUE(presented(run, home.folder.path(source()))) << run.errors;
  EXPECT_EQ(people(kBirthdays), (Texts{"Ann", "Bob", "Sue"}));
}

TEST_F(UnreadableContacts, AStoreThatACrashLeftUnfinishedIsReadAsItWasBefore) {
  std::string half, journal;
  {
    EditDatabase writer(home.folder.path(source()));
    writer.run(
        "PRAGMA cache_size = 1; BEGIN; UPDATE ZABCDRECORD SET ZFIRSTNAME = 'half', ZNAME = "
        "hex(randomblob(9000)); UPDATE ZABCDCONTACTDATE SET ZLABEL = hex(randomblob(9000))");
    half = home.folder.readFile(source());
    journal = home.folder.readFile(source() + "-journal");
    writer.run("ROLLBACK");
  }
  home.folder.writeFile(source(), half);
  home.folder.writeFile(source() + "-journal", journal);
  home.setContacts({personBorn("Sue", "Ray", {1990, 2, 28})});
  const auto stores = home.folder.fingerprint(kFolder);
  const TemporaryFolder temporary;
  const AgentRun run = home.run({{"TMPDIR", temporary.path()}});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(people(kBirthdays), (Texts{"Bob", "Sue"}));
  EXPECT_EQ(people(kAnniversaries), Texts{"Cid"});
  EXPECT_EQ(home.folder.fingerprint(kFolder), stores);
  EXPECT_TRUE(temporary.snapshot().empty()) << "no copy is left behind";
  EXPECT_FALSE(home.folder.exists(kMark));
}

TEST_F(UnreadableContacts, AFIFOBesideAStoreKeepsNoRun) {
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    const std::string fifo = source() + suffix;
    ASSERT_EQ(::mkfifo(home.folder.path(fifo).c_str(), 0600), 0);
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    const AgentRun run = home.run();
    EXPECT_TRUE(presented(run, home.folder.path(fifo))) << run.errors;
    EXPECT_EQ(people(kBirthdays), (Texts{"Ann", "Bob"}));
    home.folder.remove(fifo);
  }
}

TEST_F(UnreadableContacts, PeopleKeptInTwoStoresHaveTheNameOfTheLastAndAreWrittenOnce) {
  auto ann = personBorn("Ann", "Smith", {1980, 6, 10});
  ann.firstName = "Anna";
  home.setContacts({ann}, {}, StoreGeneration::current, "B");
  ASSERT_EQ(home.run().status, 0);
  EXPECT_EQ(people(kBirthdays), (Texts{"Anna", "Bob"}));
  const auto before = home.folder.fingerprint("Library/Calendars");
  home.setContacts({ann}, {}, StoreGeneration::current, "B");
  const AgentRun run = home.run();
  EXPECT_TRUE(run.logged("Annivo ending")) << run.errors;
  EXPECT_FALSE(run.logged("Title changed")) << run.errors;
  EXPECT_EQ(home.folder.fingerprint("Library/Calendars"), before);
}

}  // namespace
}  // namespace annivo
