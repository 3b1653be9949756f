// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

using Home = WriterHome;
const Date kDay = utc(2026, 12, 24, 12);

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// The lines of an event file unfolded.
std::string unfolded(const std::string& text) { return replaced(text, "\r\n ", ""); }

/// What makes a run take up what stands in the calendars.
struct Occasion {
  const char* name;
  void (*arise)(const Home& home);
};
const Occasion kOccasions[] = {
    {"AnInterruption", [](const Home& home) { home.home.writeFile(Home::kMark, ""); }},
    {"ADamagedLedger", [](const Home& home) { home.home.writeFile(Home::kLedger, "damaged"); }},
    {"AMissingLedger", [](const Home& home) { home.home.folder().remove(Home::kLedger); }},
    {"AnInterruptionAndAMissingLedger",
     [](const Home& home) {
       home.home.writeFile(Home::kMark, "");
       home.home.folder().remove(Home::kLedger);
     }},
};

class RecoveryOfOwnEvents : public testing::TestWithParam<Occasion> {
 protected:
  RecoveryOfOwnEvents() {
    home.makeCalendar("A", "Birthdays");
    home.makeCalendar("B", "Private");
  }
  void pass(const std::vector<ZPKCalendarItems::BasicEvent>& events) {
    home.run([&](ZPKCalendarItems& writer) {
      writer.setThisCalendarWithUIDForType("Birthdays", "A", CalendarType::birthdays);
      for (const auto& event : events) writer.addBasicEvent(event);
      writer.removeOtherEvents();
    });
  }
  std::string onlyUID() { return home.ledger().at(0).iCalUID; }
  /// A copy as calendar programs make it: another UID, everything else as it is.
  std::string copyOf(const std::string& uid, const std::string& copyUID) {
    const std::string text = unfolded(home.home.readFile(Home::eventFile("A", uid)));
    return replaced(text, "UID:" + uid, "UID:" + copyUID);
  }
  void expectUntouched(const std::map<std::string, std::string>& files) {
    for (const auto& [path, bytes] : files) EXPECT_EQ(home.home.readFile(path), bytes) << path;
  }
  Home home;
};

constexpr const char* kCopyUID = "0D0C0B0A-0000-4000-8000-000000000001";

TEST_P(RecoveryOfOwnEvents, ACopyThatTheUserMadeIsHis) {
  pass({eventOn(kDay, "D-1", "Ada")});
  const std::string copy = copyOf(onlyUID(), kCopyUID);
  ASSERT_NE(copy.find("X-ANNIVO-IDENTITY"), copy.npos);
  const std::map<std::string, std::string> files = {
      {Home::eventFile("A", kCopyUID), copy},
      {Home::eventFile("B", kCopyUID), replaced(copy, "SUMMARY:Ada", "SUMMARY:Edited")},
      {Home::eventFile("B", "other day"), replaced(copy, "20261224", "20261220")}};
  for (const auto& [path, bytes] : files) home.home.writeFile(path, bytes);
  GetParam().arise(home);
  pass({eventOn(kDay, "D-1", "Ada Lovelace")});
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"Ada", "Ada Lovelace"}));
  expectUntouched(files);
  EXPECT_EQ(home.ledger().size(), 1U);
  GetParam().arise(home);
  pass({});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Ada"}) << "only the original goes";
  expectUntouched(files);
}

TEST_P(RecoveryOfOwnEvents, ACopyWhoseOriginalTheUserDeletedIsHisToo) {
  pass({eventOn(kDay, "D-1", "Ada")});
  const std::string original = onlyUID();
  const std::string copy = copyOf(original, kCopyUID);
  home.home.writeFile(Home::eventFile("A", kCopyUID), copy);
  home.home.folder().remove(Home::eventFile("A", original));
  GetParam().arise(home);
  pass({eventOn(kDay, "D-1", "Ada")});
  EXPECT_EQ(home.titles("A").size(), 2U);
  expectUntouched({{Home::eventFile("A", kCopyUID), copy}});
  EXPECT_NE(onlyUID(), kCopyUID);
}

TEST_P(RecoveryOfOwnEvents, AreFoundAgainAndGoWithTheirDates) {
  pass({eventOn(kDay, "D-1", "Ada"), eventOn(kDay, "D-2", "Grace")});
  const auto before = home.home.folder().fingerprint("Library/Calendars");
  const auto ledger = home.ledger();
  GetParam().arise(home);
  pass({eventOn(kDay, "D-1", "Ada"), eventOn(kDay, "D-2", "Grace")});
  EXPECT_EQ(home.home.folder().fingerprint("Library/Calendars"), before);
  auto found = home.ledger();
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, ledger);
  GetParam().arise(home);
  pass({eventOn(kDay, "D-2", "Grace")});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Grace"});
  EXPECT_FALSE(home.home.exists(Home::kMark));
}

TEST_P(RecoveryOfOwnEvents, GoWhenTheAgentIsSwitchedOff) {
  pass({eventOn(kDay, "D-1", "Ada")});
  const std::string copy = copyOf(onlyUID(), kCopyUID);
  home.home.writeFile(Home::eventFile("A", kCopyUID), copy);
  GetParam().arise(home);
  home.run([](ZPKCalendarItems& writer) { writer.removeOtherEvents(); });
  EXPECT_EQ(home.titles("A").size(), 1U);
  expectUntouched({{Home::eventFile("A", kCopyUID), copy}});
}

TEST_P(RecoveryOfOwnEvents, OneThatTheUserMovedStaysWhereHePutIt) {
  pass({eventOn(kDay, "D-1", "Ada")});
  const std::string uid = onlyUID();
  const std::string moved =
      replaced(home.home.readFile(Home::eventFile("A", uid)), "20261224", "20261220");
  home.home.folder().remove(Home::eventFile("A", uid));
  home.home.writeFile(Home::eventFile("B", uid), moved);
  GetParam().arise(home);
  pass({eventOn(kDay, "D-1", "Ada")});
  EXPECT_TRUE(home.titles("A").empty());
  expectUntouched({{Home::eventFile("B", uid), moved}});
}

TEST_P(RecoveryOfOwnEvents, EventsOfAnotherHomeInASharedCalendarAreLeftAlone) {
  Home theirs;
  theirs.makeCalendar("THEIRS", "Family");
  theirs.write("THEIRS", {eventOn(kDay, "D-1", "Ada"), eventOn(kDay, "D-9", "Their aunt")});
  std::map<std::string, std::string> files;
  for (const auto& record : theirs.ledger()) {
    const auto bytes = theirs.home.readFile(Home::eventFile("THEIRS", record.iCalUID));
    files[Home::eventFile("A", record.iCalUID)] = bytes;
  }
  ASSERT_EQ(files.size(), 2U);
  pass({eventOn(kDay, "D-1", "Ada")});
  for (const auto& [path, bytes] : files) home.home.writeFile(path, bytes);
  GetParam().arise(home);
  pass({eventOn(kDay, "D-1", "Ada, ours")});
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"Ada", "Ada, ours", "Their aunt"}));
  expectUntouched(files);
}

INSTANTIATE_TEST_SUITE_P(After, RecoveryOfOwnEvents, testing::ValuesIn(kOccasions),
                         [](const auto& occasion) { return std::string(occasion.param.name); });

/// Counts the event files that are read.
class CountingFiles final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    reads += path.ends_with(".ics") ? 1 : 0;
    return inner_.contentsAtPath(path, limit);
  }
  mutable std::size_t reads = 0;
};

TEST(OwnEventsOfAFirstRun, AreSoughtOnceAndOnlyWhereThereIsNoLedger) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  home.home.writeFile(Home::eventFile("A", "own"), "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n");
  PosixFileManager disk;
  CountingFiles files(disk);
  home.home.useFileManager(&files);
  const auto reads = [&](int count) {
    files.reads = 0;
    std::vector<ZPKCalendarItems::BasicEvent> events;
    for (int i = 0; i < count; ++i) {
      events.push_back(eventOn(kDay, "D-" + std::to_string(i), "Title"));
    }
    home.write("A", events);
    return files.reads;
  };
  EXPECT_EQ(reads(0), 0U) << "nobody asked for an event";
  EXPECT_EQ(reads(20), 1U) << "the file that was there";
  EXPECT_EQ(reads(20), 20U) << "each of ours, by its name";
}

}  // namespace
}  // namespace annivo
