// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "codecs/icalendar/EventFile.h"
#include "tests/platform/calendarstore/CalendarHome.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

/// A home with the calendars "CAL" and "TWO".
class CalCalendarStoreEvents : public testing::Test {
 protected:
  CalCalendarStoreEvents() {
    home.makeLocalCalendar("CAL");
    home.makeLocalCalendar("TWO");
  }
  std::string file(const std::string& name, const std::string& calendar = "CAL") const {
    return home.root + "/" + calendar + ".calendar/Events/" + name;
  }
  std::shared_ptr<CalEvent> newEvent(const std::string& title,
                                     const std::string& calendar = "CAL") {
    auto event = CalEvent::event();
    event->setTitle(title);
    event->setCalendar(home.store().calendarWithUID(calendar));
    event->setStartDate(midnight(home.zone, 2026, 11, 20));
    event->setEndDate(midnight(home.zone, 2026, 11, 20));
    event->setIsAllDay(true);
    event->setUrl("addressbook://AB:ABPerson");
    return event;
  }
  std::shared_ptr<CalEvent> savedEvent(const std::string& title,
                                       const std::string& calendar = "CAL") {
    auto event = newEvent(title, calendar);
    EXPECT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
    return event;
  }
  CalendarHome home;
};

TEST_F(CalCalendarStoreEvents, ANewEventHasAnIdentifierOfItsOwnAndNothingElse) {
  const auto event = CalEvent::event();
  const std::string uid = event->uid();
  EXPECT_EQ(uid.size(), 36U);
  EXPECT_EQ(event->uid(), uid);
  EXPECT_NE(CalEvent::event()->uid(), uid);
  EXPECT_FALSE(event->title() || event->startDate() || event->url() || event->calendar());
  EXPECT_TRUE(event->alarms().empty());
}

TEST_F(CalCalendarStoreEvents, ASavedEventIsFoundUnderItsFileName) {
  const auto event = newEvent("Title");
  const CalAlarm alarm{.relativeTrigger = -900, .sound = "Basso"};
  event->addAlarms({alarm, alarm});
  const LedgerIdentity identity{.myUID = "D", .calendarUID = "CAL", .date = *event->startDate()};
  event->setLedgerIdentity(identity);
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_TRUE(std::filesystem::is_regular_file(file(event->uid() + ".ics")));
  for (CalCalendarStore* store : {&home.store(), &home.newRun()}) {
    const auto found = store->eventWithUID(event->uid());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->title(), "Title");
    EXPECT_EQ(found->calendar()->uid(), "CAL");
    EXPECT_EQ(found->startDate(), event->startDate());
    EXPECT_EQ(found->endDate(), event->endDate());
    EXPECT_TRUE(found->isAllDay());
    EXPECT_EQ(found->url(), "addressbook://AB:ABPerson");
    EXPECT_EQ(found->alarms(), (std::vector{alarm, alarm}));
    EXPECT_EQ(found->ledgerIdentity(), identity);
  }
}

TEST_F(CalCalendarStoreEvents, AnEmptyTitleIsATitle) {
  const auto event = savedEvent("");
  EXPECT_EQ(home.newRun().eventWithUID(event->uid())->title(), "");
}

TEST_F(CalCalendarStoreEvents, AnEventIsFoundInWhicheverCalendarItLies) {
  const auto one = savedEvent("one", "CAL");
  const auto two = savedEvent("two", "TWO");
  CalCalendarStore& store = home.newRun();
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(store.eventWithUID(one->uid())->calendar()->uid(), "CAL");
    EXPECT_EQ(store.eventWithUID(two->uid())->calendar()->uid(), "TWO");
  }
}

TEST_F(CalCalendarStoreEvents, AnEventIsFoundInAFolderThatTookThePlaceOfTheOneRead) {
  CalendarHome::write(file("OLD.ics"), eventText("OLD", "SUMMARY:old\r\n"));
  ASSERT_TRUE(home.store().eventWithUID("OLD"));
  const auto events = std::filesystem::path(file("OLD.ics")).parent_path();
  std::filesystem::rename(events, events.string() + ".old");
  std::filesystem::create_directory(events);
  CalendarHome::write(file("NEW.ics"), eventText("NEW", "SUMMARY:new\r\n"));
  const auto found = home.store().eventWithUID("NEW");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->title(), "new");
}

TEST_F(CalCalendarStoreEvents, AnEventInAFileOfAnotherNameIsFoundByItsIdentifier) {
  CalendarHome::write(file("chosen by a server.ics", "TWO"), eventText("UID-1", "SUMMARY:a\r\n"));
  CalendarHome::write(file("UID-2.ics"), eventText("UID-1b", "SUMMARY:wrong\r\n"));
  CalendarHome::write(file("UID-2b.ics"), eventText("UID-2", "SUMMARY:right\r\n"));
  EXPECT_EQ(home.store().eventWithUID("UID-1")->title(), "a");
  EXPECT_EQ(home.store().eventWithUID("UID-2")->title(), "right");
  EXPECT_FALSE(home.store().eventWithUID("UID-3"));
}

TEST_F(CalCalendarStoreEvents, WhatIsSavedAfterTheIndexWasBuiltIsFound) {
  EXPECT_FALSE(home.store().eventWithUID("ABSENT"));
  const auto event = savedEvent("late");
  EXPECT_TRUE(home.store().eventWithUID(event->uid()));
  ASSERT_TRUE(home.store().removeEvent(*event, CalSpan::thisEvent));
  EXPECT_FALSE(home.store().eventWithUID(event->uid()));
}

TEST_F(CalCalendarStoreEvents, ARetitleKeepsWhatOtherProgramsWrote) {
  const std::string lines =
      "X-APPLE-STRUCTURED;X=\"a;b:c\":geo:1\\,2\r\nDESCRIPTION:Own\r\n  words \\n\r\n"
      "CATEGORIES:A,B\r\nSUMMARY:Old\r\nBEGIN:VALARM\r\nTRIGGER:-PT3M\r\nACTION:DISPLAY\r\n"
      "X-MOZ:1\r\nEND:VALARM\r\n";
  CalendarHome::write(file("U.ics"), eventText("U", lines));
  const auto event = home.store().eventWithUID("U");
  event->setTitle("New");
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  std::string expected = lines;
  expected.replace(expected.find("SUMMARY:Old"), 11, "SUMMARY:New");
  const std::string added =
      "DTSTAMP:20261120T184600Z\r\nLAST-MODIFIED:20261120T184600Z\r\nSEQUENCE:1\r\n";
  expected.insert(expected.find("BEGIN:VALARM"), added);
  EXPECT_EQ(CalendarHome::read(file("U.ics")), eventText("U", expected));
}

TEST_F(CalCalendarStoreEvents, ASaveEditsTheFileAsItIsNow) {
  const auto event = savedEvent("Old");
  const auto read = home.newRun().eventWithUID(event->uid());
  std::string text = CalendarHome::read(file(event->uid() + ".ics"));
  text.insert(text.find("TRANSP"), "DESCRIPTION:written meanwhile\r\n");
  CalendarHome::write(file(event->uid() + ".ics"), text);
  read->setTitle("New");
  ASSERT_TRUE(home.store().saveEvent(*read, CalSpan::thisEvent));
  const std::string after = CalendarHome::read(file(event->uid() + ".ics"));
  EXPECT_NE(after.find("DESCRIPTION:written meanwhile\r\n"), after.npos);
  EXPECT_NE(after.find("SUMMARY:New\r\n"), after.npos);
}

TEST_F(CalCalendarStoreEvents, EachSaveRaisesTheSequence) {
  const auto event = savedEvent("A");
  for (int sequence = 1; sequence <= 3; ++sequence) {
    event->setTitle("A" + std::to_string(sequence));
    ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
    EXPECT_NE(CalendarHome::read(file(event->uid() + ".ics"))
                  .find("\r\nSEQUENCE:" + std::to_string(sequence) + "\r\n"),
              std::string::npos);
  }
}

TEST_F(CalCalendarStoreEvents, SavingWhatDidNotChangeWritesNothing) {
  const auto event = savedEvent("A");
  const auto again = home.newRun().eventWithUID(event->uid());
  const auto before = std::filesystem::last_write_time(file(event->uid() + ".ics"));
  ASSERT_TRUE(home.store().saveEvent(*again, CalSpan::thisEvent));
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_EQ(std::filesystem::last_write_time(file(event->uid() + ".ics")), before);
}

TEST_F(CalCalendarStoreEvents, AFileThatVanishedOrBrokeMeanwhileIsNotWritten) {
  const auto gone = savedEvent("A");
  gone->setTitle("B");
  std::filesystem::remove(file(gone->uid() + ".ics"));
  const auto saved = home.store().saveEvent(*gone, CalSpan::thisEvent);
  ASSERT_FALSE(saved);
  EXPECT_NE(saved.error().description.find(gone->uid() + ".ics"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(file(gone->uid() + ".ics")));
  const auto broken = savedEvent("A");
  broken->setTitle("B");
  CalendarHome::write(file(broken->uid() + ".ics"), "broken");
  EXPECT_FALSE(home.store().saveEvent(*broken, CalSpan::thisEvent));
  EXPECT_FALSE(home.store().removeEvent(*broken, CalSpan::thisEvent));
  EXPECT_EQ(CalendarHome::read(file(broken->uid() + ".ics")), "broken");
}

TEST_F(CalCalendarStoreEvents, AMissingEventsFolderIsMade) {
  std::filesystem::remove(home.root + "/CAL.calendar/Events");
  const auto event = savedEvent("A");
  EXPECT_TRUE(home.newRun().eventWithUID(event->uid()));
}

TEST_F(CalCalendarStoreEvents, AFileIsWrittenByTemporaryAndRenameForItsOwnerOnly) {
  const auto event = savedEvent("A");
  struct stat status {};
  ASSERT_EQ(::stat(file(event->uid() + ".ics").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  const auto inode = status.st_ino;
  event->setTitle("B");
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  ASSERT_EQ(::stat(file(event->uid() + ".ics").c_str(), &status), 0);
  EXPECT_NE(status.st_ino, inode);
  EXPECT_EQ(home.allFiles().size(), 3U);
}

TEST_F(CalCalendarStoreEvents, AnEventWithoutUsableCalendarIsNotSaved) {
  const auto none = CalEvent::event();
  none->setTitle("A");
  EXPECT_FALSE(home.store().saveEvent(*none, CalSpan::thisEvent));
  none->setCalendar(CalCalendar::calendar());
  EXPECT_FALSE(home.store().saveEvent(*none, CalSpan::thisEvent));
  home.makeCalendar("SUB", CalendarHome::info(CalendarHome::text("Type", "Subscription")));
  CalendarHome::write(file("S.ics", "SUB"), eventText("S", "SUMMARY:s\r\n"));
  const auto before = home.allFiles();
  none->setCalendar(home.newRun().calendarWithUID("SUB"));
  const auto refused = home.store().saveEvent(*none, CalSpan::thisEvent);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, 1025);
  const auto subscribed = home.store().eventWithUID("S");
  EXPECT_FALSE(home.store().removeEvent(*subscribed, CalSpan::thisEvent));
  EXPECT_EQ(home.allFiles(), before);
}

TEST_F(CalCalendarStoreEvents, AnEventWithoutTitleIsFilledInWhereItIs) {
  CalendarHome::write(file("U.ics"), eventText("U", "X-KEEP:1\r\nURL:http://old\r\n"));
  const auto event = home.store().eventWithUID("U");
  ASSERT_FALSE(event->title());
  event->setTitle("Title");
  event->setCalendar(home.store().calendarWithUID("CAL"));
  event->setStartDate(midnight(home.zone, 2026, 1, 2));
  event->setEndDate(midnight(home.zone, 2026, 1, 2));
  event->setIsAllDay(true);
  event->setUrl("addressbook://X");
  event->addAlarms({{.relativeTrigger = 0}});
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  const auto again = home.newRun().eventWithUID("U");
  EXPECT_EQ(again->title(), "Title");
  EXPECT_EQ(again->startDate(), midnight(home.zone, 2026, 1, 2));
  EXPECT_EQ(again->url(), "addressbook://X");
  EXPECT_EQ(again->alarms().size(), 1U);
  EXPECT_NE(CalendarHome::read(file("U.ics")).find("X-KEEP:1\r\n"), std::string::npos);
}

TEST_F(CalCalendarStoreEvents, AnEventMovesToAnotherCalendarWithAllItsLines) {
  CalendarHome::write(file("U.ics"), eventText("U", "X-KEEP:1\r\nSUMMARY:a\r\n"));
  const auto event = home.store().eventWithUID("U");
  event->setCalendar(home.store().calendarWithUID("TWO"));
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_FALSE(std::filesystem::exists(file("U.ics")));
  EXPECT_NE(CalendarHome::read(file("U.ics", "TWO")).find("X-KEEP:1\r\nSUMMARY:a\r\n"),
            std::string::npos);
}

TEST_F(CalCalendarStoreEvents, RemovingAnEventRemovesItsFile) {
  const auto event = savedEvent("A");
  const auto other = savedEvent("B");
  ASSERT_TRUE(home.store().removeEvent(*event, CalSpan::thisEvent));
  EXPECT_FALSE(std::filesystem::exists(file(event->uid() + ".ics")));
  EXPECT_TRUE(std::filesystem::exists(file(other->uid() + ".ics")));
  ASSERT_TRUE(home.store().removeEvent(*event, CalSpan::thisEvent)) << "it is gone already";
}

TEST_F(CalCalendarStoreEvents, RemovingOneOfSeveralEventsLeavesTheOthersByteForByte) {
  const std::string other = "BEGIN:VEVENT\r\nUID:O\r\nX-\r\n  F:1\r\nEND:VEVENT\r\n";
  CalendarHome::write(
      file("many.ics"),
      "BEGIN:VCALENDAR\r\n" + other + "BEGIN:VEVENT\r\nUID:U\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
  ASSERT_TRUE(home.store().removeEvent(*home.store().eventWithUID("U"), CalSpan::thisEvent));
  EXPECT_EQ(CalendarHome::read(file("many.ics")),
            "BEGIN:VCALENDAR\r\n" + other + "END:VCALENDAR\r\n");
}

TEST_F(CalCalendarStoreEvents, EventsInARangeAreThoseThatOverlapIt) {
  const auto add = [&](const std::string& uid, const std::string& start, const std::string& end) {
    CalendarHome::write(file(uid + ".ics"),
                        eventText(uid, "DTSTART" + start + "\r\nDTEND" + end + "\r\n"));
  };
  add("before", ";VALUE=DATE:20251230", ";VALUE=DATE:20251231");
  add("last-day", ";VALUE=DATE:20251231", ";VALUE=DATE:20260101");
  add("across", ";VALUE=DATE:20251230", ";VALUE=DATE:20260102");
  add("first", ";VALUE=DATE:20260101", ";VALUE=DATE:20260102");
  add("last", ";VALUE=DATE:20261231", ";VALUE=DATE:20270101");
  add("after", ";VALUE=DATE:20270101", ";VALUE=DATE:20270102");
  add("timed", ":20260615T100000Z", ":20260615T110000Z");
  CalendarHome::write(file("other.ics", "TWO"), eventText("other", "DTSTART:20260615T100000Z\r\n"));
  const Date start = midnight(home.zone, 2026, 1, 1);
  const Date end = home.zone.date(
      {.year = 2026, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59});
  std::string found;
  for (const auto& event : home.store().events(start, end, {home.store().calendarWithUID("CAL")})) {
    found += event->uid() + " ";
  }
  EXPECT_EQ(found, "across first last timed ");
  EXPECT_EQ(home.store().events(start, end, home.store().calendars()).size(), 5U);
}

TEST_F(CalCalendarStoreEvents, OurOwnEventsAreKnownByTheirIdentity) {
  const LedgerIdentity one{.myUID = "\r\n;", .calendarUID = "CAL", .date = kReferenceDate};
  const LedgerIdentity two{
      .myUID = "D", .calendarUID = "CAL", .date = kReferenceDate + std::chrono::microseconds{1}};
  for (const LedgerIdentity& identity : {one, two}) {
    const auto event = newEvent("ours");
    event->setLedgerIdentity(identity);
    ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  }
  savedEvent("without identity");
  CalendarHome::write(file("users.ics"), eventText("users", "SUMMARY:u\r\n"));
  for (CalCalendarStore* store : {&home.store(), &home.newRun()}) {
    const auto own = store->ownEvents(store->calendars());
    ASSERT_EQ(own.events.size(), 2U);
    EXPECT_TRUE(own.complete);
    const bool inOrder = own.events[0]->ledgerIdentity() == one;
    EXPECT_EQ(own.events[inOrder ? 0 : 1]->ledgerIdentity(), one);
    EXPECT_EQ(own.events[inOrder ? 1 : 0]->ledgerIdentity(), two);
    const std::string known = own.events[0]->uid();
    const auto others =
        store->ownEvents(store->calendars(), [&](const std::string& uid) { return uid == known; });
    ASSERT_EQ(others.events.size(), 1U);
    EXPECT_EQ(others.events[0]->uid(), own.events[1]->uid());
  }
}

class CountingFiles final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    ++reads;
    return inner_.contentsAtPath(path, limit);
  }
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override {
    ++lists;
    return inner_.contentsOfDirectory(path);
  }
  Result<void> synchronize(const std::string& path) override {
    ++syncs;
    synced = path;
    return inner_.synchronize(path);
  }

  mutable int reads = 0;
  mutable int lists = 0;
  int syncs = 0;
  std::string synced;
};

TEST_F(CalCalendarStoreEvents, ALookUpByNameReadsOneFileAndTheIndexIsBuiltOnce) {
  for (int i = 0; i < 20; ++i) {
    const std::string uid = "E" + std::to_string(i);
    CalendarHome::write(file(uid + ".ics"), eventText(uid, "SUMMARY:a\r\n"));
  }
  CountingFiles files(home.files);
  CalCalendarStore store(files, home.clock, home.log, home.zone, home.home);
  ASSERT_EQ(store.calendars().size(), 2U);
  files.reads = files.lists = 0;
  for (int i = 0; i < 20; ++i) ASSERT_TRUE(store.eventWithUID("E" + std::to_string(i)));
  EXPECT_EQ(files.reads, 20);
  EXPECT_EQ(files.lists, 0);
  files.reads = 0;
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(store.eventWithUID("ABSENT" + std::to_string(i)));
  EXPECT_EQ(files.reads, 20);
  EXPECT_EQ(files.lists, 2);
}

TEST_F(CalCalendarStoreEvents, SynchronizesOnceAndOnlyWhatWasWritten) {
  CountingFiles files(home.files);
  CalCalendarStore store(files, home.clock, home.log, home.zone, home.home);
  ASSERT_TRUE(store.synchronize());
  EXPECT_FALSE(store.eventWithUID("ABSENT"));
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(files.syncs, 0);
  const auto event = newEvent("A");
  event->setCalendar(store.calendarWithUID("CAL"));
  ASSERT_TRUE(store.saveEvent(*event, CalSpan::thisEvent));
  ASSERT_TRUE(store.synchronize());
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(files.syncs, 1);
  EXPECT_EQ(files.synced, home.root);
  ASSERT_TRUE(store.removeEvent(*event, CalSpan::thisEvent));
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(files.syncs, 2);
}

}  // namespace
}  // namespace annivo
