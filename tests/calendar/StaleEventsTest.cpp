// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"
#include "tests/support/FailingFileManager.h"

namespace annivo {
namespace {

using Home = WriterHome;
using namespace std::chrono_literals;
const Date kDay = utc(2026, 12, 24, 12);
const Date kHorizon = utc(2025, 11, 20, 18, 46);  // The clock says one year later.

struct ZPKCalendarItemsRemoval : testing::Test {
  ZPKCalendarItemsRemoval() {
    home.logOn();
    home.makeCalendar("A", "Birthdays");
    home.makeCalendar("B", "Anniversaries");
  }
  [[nodiscard]] std::size_t logged(std::string_view part) const {
    return home.home.log.count(part);
  }
  /// A run that writes the events and then removes all others.
  void pass(const std::vector<ZPKCalendarItems::BasicEvent>& events) {
    home.run([&](ZPKCalendarItems& writer) {
      writer.setThisCalendarWithUIDForType("A", "A", CalendarType::birthdays);
      for (const auto& event : events) writer.addBasicEvent(event);
      writer.removeOtherEvents();
    });
  }
  Home home;
};

TEST_F(ZPKCalendarItemsRemoval, AWriterThatWroteNothingEmptiesLedgerAndCalendars) {
  home.home.clock.advance(-1h);
  home.write("A", {eventOn(kDay, "D-1", "One"), eventOn(kHorizon, "D-2", "Old")});
  home.home.clock.advance(1h);
  home.write("B", {eventOn(kDay, "D-1", "Two")});
  home.run([](ZPKCalendarItems& writer) { writer.removeOtherEvents(); });
  EXPECT_TRUE(home.titles("A").empty());
  EXPECT_TRUE(home.titles("B").empty());
  EXPECT_TRUE(home.ledger().empty());
  EXPECT_EQ(logged("Deleting old events 1"), 1U);
  EXPECT_EQ(logged("Removing current event: One"), 1U);
  EXPECT_EQ(logged("Removing current event: Two"), 1U);
  EXPECT_EQ(logged("Deleting old events 2"), 1U);
  EXPECT_EQ(logged("Removing old event: Old"), 1U);
  EXPECT_EQ(logged("Deleted old events"), 1U);
}

TEST_F(ZPKCalendarItemsRemoval, WhatWasRemovedIsGoneFromTheLedgerFile) {
  home.write("A", {eventOn(kDay, "SECRET-1", "One"), eventOn(kDay, "KEPT-2", "Two")});
  ASSERT_NE(home.home.readFile(Home::kLedger).find("SECRET-1"), std::string::npos);
  pass({eventOn(kDay, "KEPT-2", "Two")});
  const auto files = home.home.snapshot(Home::kLedgerFolder);
  ASSERT_EQ(files.size(), 1U) << "no journal and no mark is left";
  EXPECT_EQ(files.begin()->second.find("SECRET-1"), std::string::npos);
  EXPECT_NE(files.begin()->second.find("KEPT-2"), std::string::npos);
}

TEST_F(ZPKCalendarItemsRemoval, ThoseOfDatesThatCouldNotBeReadStayAndTheNextRunLooksAgain) {
  pass({eventOn(kDay, "READ-1", "Kept"), eventOn(kDay, "READ-2", "Stale"),
        eventOn(kDay, "LOCKED-1", "Locked")});
  home.run([](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("A", "A", CalendarType::birthdays);
    writer.addBasicEvent(eventOn(kDay, "READ-1", "Kept"));
    writer.confirmEventsOfDatesNotIn({"READ-1", "read-2"});  // As the ledger compares them.
    writer.removeOtherEvents();
  });
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"Kept", "Locked"}));
  EXPECT_EQ(home.ledger().size(), 2U);
  EXPECT_TRUE(home.home.exists(Home::kMark));
  pass({eventOn(kDay, "READ-1", "Kept")});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Kept"}) << "when all could be read";
  EXPECT_FALSE(home.home.exists(Home::kMark));
}

TEST_F(ZPKCalendarItemsRemoval, ThoseOfDatesThatCouldNotBeReadStillGoWhenTheyAreAYearOld) {
  pass({eventOn(kHorizon + 1s, "LOCKED-1", "Locked")});
  home.home.clock.advance(1h);
  home.run([](ZPKCalendarItems& writer) {
    writer.confirmEventsOfDatesNotIn({});
    writer.removeOtherEvents();
  });
  EXPECT_TRUE(home.titles("A").empty());
}

TEST_F(ZPKCalendarItemsRemoval, TheHorizonItselfIsRemovedEvenIfJustConfirmed) {
  const std::vector events = {
      eventOn(kHorizon - 1us, "D-0", "Before"), eventOn(kHorizon, "D-1", "At"),
      eventOn(kHorizon + 1us, "D-2", "Just after"), eventOn(kHorizon + 1s, "D-3", "After")};
  home.home.clock.advance(-1h);
  pass(events);
  EXPECT_EQ(home.titles("A").size(), 4U);
  home.home.clock.advance(1h);
  pass(events);
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"After", "Just after"}));
  EXPECT_EQ(home.ledger().size(), 2U);
}

TEST_F(ZPKCalendarItemsRemoval, WhatLiesAtTheHorizonOrBeforeIsNotWrittenFirst) {
  pass({eventOn(kHorizon - 1us, "D-0", "Before"), eventOn(kHorizon, "D-1", "At"),
        eventOn(kHorizon + 1us, "D-2", "Just after")});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Just after"});
  EXPECT_EQ(logged("Updating event: "), 1U);
  EXPECT_EQ(logged("Removing"), 0U);
  EXPECT_EQ(home.ledger().size(), 1U);
}

TEST_F(ZPKCalendarItemsRemoval, AHorizonThatGoesBackOverALeapDaysMidnightLeavesNothingHalfDone) {
  home.home.clock.set(utc(2028, 2, 28, 10));
  const auto event = eventOn(utc(2027, 2, 28, 12), "D-1", "Leap");
  pass({event});
  EXPECT_EQ(home.titles("A").size(), 1U);
  home.home.clock.set(utc(2028, 2, 28, 23, 59, 59));
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("A", "A", CalendarType::birthdays);
    writer.addBasicEvent(event);
    home.home.clock.advance(2s);
    writer.removeOtherEvents();
  });
  EXPECT_EQ(logged("Removing old event: Leap"), 1U);
  EXPECT_TRUE(home.ledger().empty());
}

TEST_F(ZPKCalendarItemsRemoval, TheHorizonOfALeapDayIsTheDayBeforeInACommonYear) {
  home.home.clock.set(utc(2024, 2, 29, 10));
  ZPKCalendarItems writer(home.home.platform());
  EXPECT_EQ(writer.currentDateOffsetByYears(-1), utc(2023, 2, 28, 10));
  EXPECT_EQ(writer.currentDateOffsetByYears(4), utc(2028, 2, 29, 10));
  EXPECT_EQ(writer.currentDateOffsetByYears(0), utc(2024, 2, 29, 10));
}

TEST_F(ZPKCalendarItemsRemoval, ARecordWhoseEventTheUserDeletedIsDropped) {
  home.write("A", {eventOn(kDay, "D-1", "One")});
  home.home.folder().remove(Home::eventFile("A", home.ledger().front().iCalUID));
  home.home.log.clear();
  pass({});
  EXPECT_TRUE(home.ledger().empty());
  EXPECT_EQ(logged("Removing"), 0U);
  EXPECT_TRUE(home.home.alerts.shown().empty());
}

TEST_F(ZPKCalendarItemsRemoval, EventsOfACalendarThatIsNotWrittenGoInTheSamePass) {
  home.write("A", {eventOn(kDay, "D-1", "One")});
  home.write("B", {eventOn(kDay, "D-2", "Two")});
  pass({eventOn(kDay, "D-1", "One")});
  EXPECT_EQ(home.titles("A").size(), 1U);
  EXPECT_TRUE(home.titles("B").empty());
}

TEST_F(ZPKCalendarItemsRemoval, TheUsersOwnEventsStay) {
  const std::string own =
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:own\r\nSUMMARY:Mine\r\n"
      "DTSTART;VALUE=DATE:20261224\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  home.home.writeFile(Home::eventFile("A", "own"), own);
  home.write("A", {eventOn(kDay, "D-1", "One")});
  pass({});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Mine"});
  EXPECT_EQ(home.home.readFile(Home::eventFile("A", "own")), own);
}

TEST_F(ZPKCalendarItemsRemoval, AFailedRemovalIsLoggedAndTheRecordGoesAllTheSame) {
  home.write("A", {eventOn(kDay, "D-1", "One")});
  const std::string path = home.home.path(Home::eventFile("A", home.ledger().front().iCalUID));
  home.home.log.clear();
  PosixFileManager disk;
  FailingFileManager files(disk);
  home.home.useFileManager(&files);
  home.run([&](ZPKCalendarItems& writer) {
    files.failChange(2, EIO);  // After the mark.
    writer.removeOtherEvents();
    ASSERT_EQ(files.changes().at(1).path, path);
  });
  EXPECT_EQ(logged(path), 1U);
  EXPECT_TRUE(home.ledger().empty());
  EXPECT_EQ(home.titles("A").size(), 1U);
  home.home.useFileManager(nullptr);
  pass({});
  EXPECT_TRUE(home.titles("A").empty()) << "the run after a failure takes it up again";
}

TEST_F(ZPKCalendarItemsRemoval, ARecordThatNamesNoFileIsDroppedWithoutReachingAnything) {
  const std::string binary = "binary\">";
  const std::string text = "string\">";
  for (const std::string& uid :
       {text + "../../../x", text + "../../../../x", text, text + "a/b", text + "..", text + ".",
        text + std::string(300, 'x'), text + "a\nb", text + "a&#13;&#10;b",
        binary + "Li4vLi4vLi4veAA=", binary + "YQBi"}) {  // "../../../x" and NUL, "a", NUL, "b"
    home.home.writeFile("x.ics", "other");
    home.writeLedger(
        "<object type=\"EVENT\" id=\"z102\"><attribute name=\"icaluid\" "
        "type=\"" +
        uid +
        "</attribute><attribute name=\"date\" type=\"date\">819806400</attribute>"
        "</object>");
    home.home.log.clear();
    pass({});
    EXPECT_TRUE(home.ledger().empty()) << uid;
    EXPECT_EQ(home.home.readFile("x.ics"), "other");
    EXPECT_EQ(logged("event identifier cannot be used as a file name"), 1U) << uid;
  }
}

TEST_F(ZPKCalendarItemsRemoval, WhatIsConfirmedInAnotherOrderStaysAndOnlyTheRestGoes) {
  std::vector<ZPKCalendarItems::BasicEvent> events;
  for (int i = 10; i < 40; ++i) {
    events.push_back(eventOn(kDay, "D-" + std::to_string(i), "T-" + std::to_string(i)));
  }
  pass(events);
  std::reverse(events.begin(), events.end());
  std::rotate(events.begin(), events.begin() + 7, events.end());
  const std::string gone = events[12].title;
  events.erase(events.begin() + 12);
  pass(events);
  std::vector<std::string> expected;
  for (const auto& event : events) expected.push_back(event.title);
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(home.titles("A"), expected);
  EXPECT_EQ(logged("Removing current event: "), 1U);
  EXPECT_EQ(logged("Removing current event: " + gone), 1U);
}

TEST_F(ZPKCalendarItemsRemoval, ARecordWithoutADateIsInNeitherPhase) {
  home.writeLedger(
      "<object type=\"EVENT\" id=\"z102\"><attribute name=\"icaluid\" type=\"string\">E"
      "</attribute></object>");
  pass({});
  EXPECT_EQ(home.ledger().size(), 1U);
}

TEST_F(ZPKCalendarItemsRemoval, ALedgerThatCannotBeReadRemovesNothing) {
  home.write("A", {eventOn(kDay, "D-1", "One")});
  PosixFileManager disk;
  FailingFileManager files(disk);
  files.makeUnreadable(home.home.path(Home::kLedger));
  home.home.useFileManager(&files);
  home.run([](ZPKCalendarItems& writer) { writer.removeOtherEvents(); });
  EXPECT_EQ(home.titles("A").size(), 1U);
  EXPECT_GE(logged(home.home.path(Home::kLedger)), 2U) << "once a phase";
  EXPECT_EQ(home.home.alerts.shown().size(), 1U);
}

TEST_F(ZPKCalendarItemsRemoval, CountsTheEventsOfThisYearAlways) {
  home.home.ownPreferences({});
  home.write("A", {eventOn(utc(2026, 1, 1, 12), "D-1", "First"),
                   eventOn(utc(2026, 12, 31, 12), "D-2", "Last"),
                   eventOn(utc(2025, 12, 31, 12), "D-3", "Before"),
                   eventOn(utc(2027, 1, 1, 12), "D-4", "After")});
  home.write("B", {eventOn(utc(2026, 6, 1, 12), "D-1", "Other")});
  ZPKCalendarItems::logEventsThisYear(home.home.platform());
  EXPECT_EQ(home.home.log.lines().back(), "Events this year: 3");
}

}  // namespace
}  // namespace annivo
