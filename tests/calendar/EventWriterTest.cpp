// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"
#include "tests/support/FailingFileManager.h"

namespace annivo {
namespace {

using Home = WriterHome;
const Date kDay = utc(2026, 12, 24, 12);
const Date kNextDay = utc(2026, 12, 25, 12);

struct ZPKCalendarItemsWriting : testing::Test {
  ZPKCalendarItemsWriting() {
    home.logOn();
    home.makeCalendar("A", "Birthdays");
    home.makeCalendar("B", "Anniversaries");
  }
  [[nodiscard]] std::size_t logged(std::string_view part) const {
    return home.home.log.count(part);
  }
  Home home;
};

TEST_F(ZPKCalendarItemsWriting, WritesANewEventWithAllItsProperties) {
  home.write("A", {eventOn(kDay, "D-1", "Ada's birthday")}, {message(-3600)});
  const auto events = home.events("A");
  ASSERT_EQ(events.size(), 1U);
  const CalEvent& event = *events.front();
  EXPECT_EQ(event.title(), "Ada's birthday");
  EXPECT_TRUE(event.isAllDay());
  EXPECT_EQ(event.startDate(), utc(2026, 12, 24));
  EXPECT_EQ(event.url(), "addressbook://P-1");
  ASSERT_EQ(event.alarms().size(), 1U);
  EXPECT_EQ(event.alarms().front().relativeTrigger, -3600);
  EXPECT_EQ(event.ledgerIdentity(), (LedgerIdentity{"D-1", "A", kDay}));
  const auto ledger = home.ledger();
  ASSERT_EQ(ledger.size(), 1U);
  EXPECT_EQ(ledger.front(), (Home::Record{"D-1", "A", kDay, event.uid()}));
  EXPECT_EQ(logged("Checking for event 'Ada's birthday'."), 1U);
  EXPECT_EQ(logged("Event not found"), 1U);
  EXPECT_EQ(logged("Updating event: Ada's birthday"), 1U);
}

TEST_F(ZPKCalendarItemsWriting, WritesTheSameOccurrenceOnceInOneRunAndAcrossRuns) {
  const auto event = eventOn(kDay, "D-1", "Title");
  home.write("A", {event, event});
  EXPECT_EQ(logged("Event already in"), 1U);
  home.write("A", {event});
  EXPECT_EQ(logged("Event already in"), 2U);
  EXPECT_EQ(home.titles("A").size(), 1U);
  EXPECT_EQ(home.ledger().size(), 1U);
  EXPECT_EQ(logged("Updating event"), 1U);
}

TEST_F(ZPKCalendarItemsWriting, AnUnchangedRunOpensNoFileForWriting) {
  home.write("A", {eventOn(kDay, "D-1", "Title")}, {message(0)});
  const auto before = home.home.folder().fingerprint();
  PosixFileManager disk;
  FailingFileManager files(disk);
  home.home.useFileManager(&files);
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("A", "A", CalendarType::birthdays);
    writer.addAlarm(message(0));
    writer.addBasicEvent(eventOn(kDay, "D-1", "Title"));
    writer.removeOtherEvents();
    writer.synchronizeCalendars();
  });
  EXPECT_TRUE(files.changes().empty()) << files.changes().front().operation;
  EXPECT_EQ(home.home.folder().fingerprint(), before);
}

TEST_F(ZPKCalendarItemsWriting, RetitlesEveryEventWhoseTemplateChanged) {
  home.write("A", {eventOn(kDay, "D-1", "Old 1"), eventOn(kNextDay, "D-2", "Old 2")});
  home.write("A", {eventOn(kDay, "D-1", "New 1"), eventOn(kNextDay, "D-2", "New 2")});
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"New 1", "New 2"}));
  EXPECT_EQ(logged("Title changed"), 2U);
  EXPECT_EQ(logged("Updating event: New"), 2U);
}

struct AlarmCase {
  const char* name;
  std::vector<std::int32_t> has;
  std::vector<std::int32_t> wanted;
  std::vector<double> expected;
  const char* line;
};

TEST_F(ZPKCalendarItemsWriting, BringsAlarmsUpToDate) {
  const std::vector<AlarmCase> cases = {
      {"kept beyond the list", {1, 2}, {1}, {1, 2}, nullptr},
      {"replaced by the whole list", {1}, {1, 2}, {1, 2}, "Alarm added 2"},
      {"replaced when none is there", {1, 2}, {3}, {3}, "Alarm added 2"},
      {"added to an event without", {}, {1}, {1}, "Alarm added 2"},
      {"cleared", {1, 2}, {}, {}, "Alarm added 1"},
      {"none and none", {}, {}, {}, nullptr},
      {"the same in another order", {1, 2}, {2, 1}, {1, 2}, nullptr},
  };
  int number = 0;
  for (const AlarmCase& row : cases) {
    SCOPED_TRACE(row.name);
    const auto event = eventOn(kDay, "D-" + std::to_string(++number), row.name);
    const auto alarms = [](const std::vector<std::int32_t>& triggers) {
      std::vector<ZPKCalendarItems::Alarm> list;
      for (const auto trigger : triggers) list.push_back(message(trigger));
      return list;
    };
    home.write("A", {event}, alarms(row.has));
    home.home.log.clear();
    home.write("A", {event}, alarms(row.wanted));
    std::vector<double> found;
    for (const auto& stored : home.events("A")) {
      if (stored->title() != row.name) continue;
      for (const auto& alarm : stored->alarms()) found.push_back(*alarm.relativeTrigger);
    }
    EXPECT_EQ(found, row.expected);
    EXPECT_EQ(logged("Alarm added"), row.line ? 1U : 0U);
    if (row.line) {
      EXPECT_EQ(logged(row.line), 1U);
    }
    EXPECT_EQ(logged("Updating event"), row.line ? 1U : 0U);
  }
}

TEST_F(ZPKCalendarItemsWriting, RetitlesAnEventWhoseAlarmsStay) {
  home.write("A", {eventOn(kDay, "D-1", "Old")}, {message(1), message(2)});
  home.write("A", {eventOn(kDay, "D-1", "New")}, {message(1)});
  const auto events = home.events("A");
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events.front()->title(), "New");
  EXPECT_EQ(events.front()->alarms().size(), 2U);
}

TEST_F(ZPKCalendarItemsWriting, KeepsAUsersAdditionsToAnEventThatItRetitles) {
  home.write("A", {eventOn(kDay, "D-1", "Old")}, {message(-60)});
  const std::string path = Home::eventFile("A", home.ledger().front().iCalUID);
  std::string text = home.home.readFile(path);
  text.insert(text.find("END:VEVENT"),
              "DESCRIPTION:mine\r\nX-OTHER;A=b:c\r\nX-EMPTY:\r\nfolded-prop\r\n erty:x\r\n"
              "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT5M\r\nX-MINE:1\r\nEND:VALARM\r\n");
  home.home.writeFile(path, text);
  home.home.writeFile(Home::eventFile("A", "own"),
                      "begin:VCALENDAR\nBEGIN:VEVENT\nUID:own\nSUMMARY:Mine\nX:\nEND:VEVENT\n"
                      "END:VCALENDAR\n");
  home.home.writeFile(Home::eventFile("A", "users-own"), "BEGIN:VCALENDAR\nrubbish");
  home.home.writeFile("Library/Calendars/A.calendar/Events/.other.tmp", "theirs");
  auto expected = home.home.snapshot("Library/Calendars");
  home.home.clock.advance(std::chrono::hours{1});
  home.write("A", {eventOn(kDay, "D-1", "New")}, {message(-60)});
  const auto replace = [&](const std::string& from, const std::string& to) {
    ASSERT_NE(text.find(from), std::string::npos) << from;
    text.replace(text.find(from), from.size(), to);
  };
  replace("SUMMARY:Old", "SUMMARY:New");
  replace("DTSTAMP:20261120T184600Z", "DTSTAMP:20261120T194600Z");
  replace("LAST-MODIFIED:20261120T184600Z", "LAST-MODIFIED:20261120T194600Z");
  replace("SEQUENCE:0", "SEQUENCE:1");
  EXPECT_EQ(home.home.readFile(path), text) << "every other byte";
  auto after = home.home.snapshot("Library/Calendars");
  for (auto* files : {&expected, &after}) {
    std::erase_if(*files, [&](const auto& file) { return path.ends_with(file.first); });
  }
  EXPECT_EQ(after.size(), expected.size());
  EXPECT_EQ(after, expected);
}

TEST_F(ZPKCalendarItemsWriting, MakesAnEventAnewThatTheUserDeleted) {
  home.write("A", {eventOn(kDay, "D-1", "Title")});
  const auto before = home.ledger().front();
  home.home.folder().remove(Home::eventFile("A", before.iCalUID));
  home.write("A", {eventOn(kDay, "D-1", "Title")});
  EXPECT_EQ(logged("Event not in calendar"), 1U);
  const auto ledger = home.ledger();
  ASSERT_EQ(ledger.size(), 1U);
  EXPECT_NE(ledger.front().iCalUID, before.iCalUID);
  EXPECT_EQ(ledger.front().myUID, before.myUID);
  EXPECT_EQ(ledger.front().calendarUID, before.calendarUID);
  EXPECT_EQ(ledger.front().date, before.date);
  const auto events = home.events("A");
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events.front()->uid(), ledger.front().iCalUID);
}

TEST_F(ZPKCalendarItemsWriting, KeepsSeparateRecordsForTwoCalendars) {
  home.write("A", {eventOn(kDay, "D-1", "In A")});
  home.write("B", {eventOn(kDay, "D-1", "In B")});
  home.write("A", {eventOn(kDay, "D-1", "In A")});
  EXPECT_EQ(home.ledger().size(), 2U);
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"In A"});
  EXPECT_EQ(home.titles("B"), std::vector<std::string>{"In B"});
}

TEST_F(ZPKCalendarItemsWriting, FindsARecordWithoutRegardToCaseAndByWildcards) {
  home.write("A", {eventOn(kDay, "Date-Äé", "Title")});
  for (const char* uid : {"DATE-äÉ", "date-*", "Date-??"}) {
    home.write("A", {eventOn(kDay, uid, "Title")});
  }
  EXPECT_EQ(home.ledger().size(), 1U);
  EXPECT_EQ(logged("Event already in"), 3U);
  home.write("A", {eventOn(kDay, "Date-?", "Other")});
  EXPECT_EQ(home.ledger().size(), 2U);
}

TEST_F(ZPKCalendarItemsWriting, TellsDatesApartByTheMicrosecond) {
  home.write("A",
             {eventOn(kDay, "D", "One"), eventOn(kDay + std::chrono::microseconds{1}, "D", "Two")});
  home.write("A",
             {eventOn(kDay, "D", "One"), eventOn(kDay + std::chrono::microseconds{1}, "D", "Two")});
  EXPECT_EQ(home.ledger().size(), 2U);
}

TEST_F(ZPKCalendarItemsWriting, TakesTheFirstOfSeveralRecords) {
  home.write("A", {eventOn(kDay, "D-1", "Title"), eventOn(kNextDay, "D-2", "Other")});
  std::string ledger = home.home.readFile(Home::kLedger);
  const auto records = home.ledger();
  // The second record becomes one of the same identity as the first.
  ledger.replace(ledger.find(">D-2<"), 5, ">D-1<");
  const auto second = ledger.rfind("type=\"date\">");
  ledger.replace(second + 12, ledger.find('<', second) - second - 12, "819806400.0");
  home.home.writeFile(Home::kLedger, ledger);
  ASSERT_EQ(home.ledger()[1].date, kDay);
  home.write("A", {eventOn(kDay, "D-1", "New")});
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"New", "Other"}));
}

TEST_F(ZPKCalendarItemsWriting, WritesAFreshEventForARecordWithoutAnEvent) {
  home.writeLedger(
      "    <object type=\"EVENT\" id=\"z102\">\n"
      "        <attribute name=\"myuid\" type=\"string\">D-1</attribute>\n"
      "        <attribute name=\"calendaruid\" type=\"string\">A</attribute>\n"
      "        <attribute name=\"date\" type=\"date\">819806400.0</attribute>\n"
      "    </object>\n");
  ASSERT_EQ(home.ledger().front().date, kDay);
  home.write("A", {eventOn(kDay, "D-1", "Title")});
  EXPECT_EQ(home.titles("A").size(), 1U);
  EXPECT_EQ(home.ledger().front().iCalUID, "(nil)") << "the record stays as it is";
}

TEST_F(ZPKCalendarItemsWriting, FillsAnEventWithoutATitleAnewAndTakesItsFirstAlarm) {
  home.write("A", {eventOn(kDay, "D-1", "Title")}, {message(-60)});
  const std::string path = Home::eventFile("A", home.ledger().front().iCalUID);
  std::string text = home.home.readFile(path);
  const auto summary = text.find("SUMMARY:");
  text.erase(summary, text.find("\r\n", summary) + 2 - summary);
  home.home.writeFile(path, text);
  home.write("A", {eventOn(kDay, "D-1", "Title")}, {message(-120), message(-180)});
  const auto events = home.events("A");
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events.front()->title(), "Title");
  // One and the two of the list make three, which is not two: the first goes.
  ASSERT_EQ(events.front()->alarms().size(), 2U);
  EXPECT_EQ(events.front()->alarms()[0].relativeTrigger, -120);
  EXPECT_EQ(events.front()->alarms()[1].relativeTrigger, -180);
}

TEST_F(ZPKCalendarItemsWriting, LosesOneAlarmOnlyHoweverManyAreTooMany) {
  home.write("A", {eventOn(kDay, "D-1", "Title")}, {message(-1), message(-2), message(-3)});
  const std::string path = Home::eventFile("A", home.ledger().front().iCalUID);
  std::string text = home.home.readFile(path);
  const auto summary = text.find("SUMMARY:Title\r\n");
  text.erase(summary, 15);
  home.home.writeFile(path, text);
  home.write("A", {eventOn(kDay, "D-1", "Title")}, {message(-4)});
  EXPECT_EQ(home.events("A").front()->alarms().size(), 3U);
}

TEST_F(ZPKCalendarItemsWriting, MakesAlarmsByTheirKind) {
  ZPKCalendarItems writer(home.home.platform());
  const auto add = [&](const char* kind, const char* url) {
    writer.addAlarm({.kind = kind,
                     .emailAddress = "a@example.org",
                     .relativeTrigger = -7,
                     .sound = "Basso",
                     .URL = url});
  };
  add("Email", "file:///x");
  add("Open File", "file:///x");
  add("Open File", "https://example.org/x");
  add("Sound", "file:///x");
  add("Message with Sound", "file:///x");
  add("Message", "file:///x");
  add("Sounds", "file:///x");
  add("Message", "file:///x");
  const auto alarm = [](auto email, auto url, auto sound) {
    CalAlarm made;
    made.relativeTrigger = -7;
    if (*email) made.emailAddress = email;
    if (*url) made.url = url;
    if (*sound) made.sound = sound;
    return made;
  };
  const CalAlarm plain = alarm("", "", "");
  EXPECT_EQ(
      writer.alarmArray(),
      (std::vector<CalAlarm>{alarm("a@example.org", "", ""), alarm("", "file:///x", ""), plain,
                             alarm("", "", "Basso"), alarm("", "", "Basso"), plain, plain, plain}));
  writer.initAlarmArray();
  EXPECT_TRUE(writer.alarmArray().empty());
}

TEST_F(ZPKCalendarItemsWriting, LeavesOutAURLThatIsNone) {
  auto event = eventOn(kDay, "D-1", "Title");
  event.url = "not a url";
  home.write("A", {event});
  EXPECT_FALSE(home.events("A").front()->url());
}

TEST_F(ZPKCalendarItemsWriting, TakesAnEndThatLiesAfterTheStart) {
  auto event = eventOn(kDay, "D-1", "Title");
  event.endDate = kNextDay;
  home.write("A", {event});
  const auto written = home.events("A").front();
  EXPECT_EQ(written->startDate(), utc(2026, 12, 24));
  EXPECT_EQ(written->endDate(), utc(2026, 12, 25));
}

TEST_F(ZPKCalendarItemsWriting, LeavesDatesAndURLOfAnExistingEventAlone) {
  home.write("A", {eventOn(kDay, "D-1", "Title")});
  auto again = eventOn(kDay, "D-1", "New");
  again.url = "addressbook://other";
  again.endDate = kNextDay;
  again.allDay = false;
  home.write("A", {again});
  const auto event = home.events("A").front();
  EXPECT_EQ(event->url(), "addressbook://P-1");
  EXPECT_TRUE(event->isAllDay());
}

TEST_F(ZPKCalendarItemsWriting, ShowsAFailedEventSaveAndGoesOn) {
  PosixFileManager disk;
  FailingFileManager files(disk);
  home.home.useFileManager(&files);
  const std::vector events = {eventOn(kDay, "D-1", "One"), eventOn(kDay, "D-2", "Two")};
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("A", "A", CalendarType::birthdays);
    const std::size_t third = files.changes().size() + 2;
    files.failChange(3, ENOSPC);  // The mark and the ledger come before it.
    for (const auto& event : events) writer.addBasicEvent(event);
    ASSERT_GT(files.changes().size(), third);
    EXPECT_TRUE(files.changes()[third].path.ends_with(".ics"));
    ASSERT_EQ(home.home.alerts.shown().size(), 1U);
    EXPECT_NE(textOf(home.home.alerts.shown().front()).find(files.changes()[third].path),
              std::string::npos);
    writer.removeOtherEvents();
  });
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Two"});
  EXPECT_EQ(home.ledger().size(), 2U) << "both were retained";
  EXPECT_TRUE(home.home.exists(Home::kMark)) << "the next run has to make it good";
  home.write("A", events);
  EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"One", "Two"}));
  EXPECT_FALSE(home.home.exists(Home::kMark));
}

TEST_F(ZPKCalendarItemsWriting, IdentitiesOfAnyBytesAreFoundAgain) {
  const std::vector<std::string> uids = {"",
                                         "../../x",
                                         "a/b",
                                         std::string(300, 'x'),
                                         "a\nb",
                                         "a\r\nb",
                                         "a\rb",
                                         std::string("a\0b", 3),
                                         "\x01\x1F\x7F",
                                         "<&>\"']]>",
                                         " leading and trailing ",
                                         "\xFF\xFE no UTF-8",
                                         "\xEF\xBF\xBF",
                                         "Zoë 🎂"};
  std::vector<ZPKCalendarItems::BasicEvent> events;
  int number = 0;
  for (const auto& uid : uids) {
    events.push_back(
        eventOn(kDay + std::chrono::hours{24 * number}, uid, "Event " + std::to_string(number)));
    ++number;
  }
  home.write("A", events);
  EXPECT_EQ(home.ledger().size(), uids.size());
  const auto before = home.home.folder().fingerprint("Library/Calendars");
  home.home.log.clear();
  home.write("A", events);
  EXPECT_EQ(logged("Event already in"), uids.size());
  EXPECT_EQ(home.ledger().size(), uids.size());
  EXPECT_EQ(home.home.folder().fingerprint("Library/Calendars"), before);
  const auto records = home.ledger();
  for (std::size_t i = 0; i < uids.size(); ++i) EXPECT_EQ(records[i].myUID, uids[i]);
}

}  // namespace
}  // namespace annivo
