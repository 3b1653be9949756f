// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/platform/calendarstore/CalendarHome.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;
using UIDs = std::vector<std::string>;

/// What a store does on a second thread: a home with the calendars "CAL" and "TWO".
class CalCalendarStoreThreads : public testing::Test {
 protected:
  CalCalendarStoreThreads() {
    home.makeLocalCalendar("CAL");
    home.makeLocalCalendar("TWO");
  }
  std::string file(const std::string& uid, const std::string& calendar = "CAL") const {
    return home.root + "/" + calendar + ".calendar/Events/" + uid + ".ics";
  }
  void write(const std::string& uid, const std::string& title) const {
    CalendarHome::write(file(uid), eventText(uid, "SUMMARY:" + title + "\r\n"));
  }
  std::string title(const std::string& uid) {
    const auto event = home.store().eventWithUID(uid);
    return event ? event->title().value_or("(untitled)") : "(none)";
  }
  /// Reads the events ahead and waits for them.
  void readAhead(const UIDs& uids) {
    CalCalendar& calendar = *home.store().calendarWithUID("CAL");
    home.store().readAhead(calendar, uids);
    home.store().readAhead(calendar, {});
  }
  CalendarHome home;
};

TEST_F(CalCalendarStoreThreads, EventsReadAheadAreFoundWithTheirCalendarAndCanBeSaved) {
  write("A", "one");
  write("B", "two");
  readAhead({"A", "B"});
  fs::remove(file("B"));  // So that it can only come from there.
  EXPECT_EQ(title("B"), "two");
  EXPECT_EQ(title("B"), "(none)");
  const auto event = home.store().eventWithUID("A");
  ASSERT_TRUE(event);
  EXPECT_EQ(event->calendar(), home.store().calendarWithUID("CAL"));
  event->setTitle("changed");
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_NE(CalendarHome::read(file("A")).find("SUMMARY:changed\r\n"), std::string::npos);
}

TEST_F(CalCalendarStoreThreads, WhatThisProgramChangedMeanwhileIsSeen) {
  for (const char* uid : {"A", "B", "C"}) write(uid, "old");
  CalCalendar& calendar = *home.store().calendarWithUID("CAL");
  const auto first = home.store().eventWithUID("A");
  const auto second = home.store().eventWithUID("B");
  const auto third = home.store().eventWithUID("C");
  home.store().readAhead(calendar, {"A", "B", "C"});
  first->setTitle("new");
  ASSERT_TRUE(home.store().saveEvent(*first, CalSpan::thisEvent));
  ASSERT_TRUE(home.store().removeEvent(*second, CalSpan::thisEvent));
  home.store().readAhead(calendar, {});
  third->setTitle("newest");
  ASSERT_TRUE(home.store().saveEvent(*third, CalSpan::thisEvent));
  EXPECT_EQ(title("A"), "new");
  EXPECT_EQ(title("B"), "(none)");
  EXPECT_EQ(title("C"), "newest");
}

TEST_F(CalCalendarStoreThreads, WhatCannotBeReadAheadIsFoundOrReportedAsEver) {
  CalendarHome::write(file("ELSEWHERE", "TWO"), eventText("ELSEWHERE", "SUMMARY:there\r\n"));
  CalendarHome::write(file("other-name"), eventText("RENAMED", "SUMMARY:renamed\r\n"));
  CalendarHome::write(file("BROKEN"), "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\n");
  CalendarHome::write(file("LARGE"), std::string(1024 * 1024 + 1, ' '));
  write("LONG", std::string(100 * 1024, 'x'));
  CalendarHome::write(home.home + "/outside.ics", eventText("outside", "SUMMARY:out\r\n"));
  fs::create_symlink(home.home + "/outside.ics", file("LINK"));
  readAhead({"ELSEWHERE", "LONG", "RENAMED", "BROKEN", "LARGE", "LINK", "ABSENT", "",
             "../../outside", std::string("N\0L", 3), std::string(300, 'x')});
  EXPECT_EQ(title("ELSEWHERE"), "there");
  EXPECT_EQ(title("RENAMED"), "renamed");
  EXPECT_EQ(title("LONG"), std::string(100 * 1024, 'x'));
  for (const char* uid : {"BROKEN", "LARGE", "LINK"}) {
    EXPECT_EQ(title(uid), "(none)");
    EXPECT_TRUE(home.log.mentions(file(uid))) << uid;
  }
  EXPECT_EQ(title("ABSENT"), "(none)");
  EXPECT_EQ(title("../../outside"), "(none)");
}

/// Counts how the disk is made to hold what was written, without writing anything; fails where it
/// is told to.
class CountingDisk final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  bool supportsOtherThreads() const override { return true; }
  Result<void> writeAtomically(const std::string&, std::string_view) override { return {}; }
  Result<void> synchronize(const std::string& path) override {
    ++synchronized;
    if (std::exchange(fails, false)) return errorFromErrno(5, "synchronize", path);
    return {};
  }
  int synchronized = 0;
  bool fails = false;
};

class ManyWrites : public CalCalendarStoreThreads {
 protected:
  void write(int count) {
    for (int i = 0; i < count; ++i) {
      auto event = CalEvent::event();
      event->setTitle("an event");
      event->setCalendar(store.calendarWithUID("CAL"));
      ASSERT_TRUE(store.saveEvent(*event, CalSpan::thisEvent));
    }
  }
  CountingDisk disk{home.files};
  CalCalendarStore store{disk, home.clock, home.log, home.zone, home.home};
};

TEST_F(ManyWrites, AreMadeDurableAtTheEndAndOnTheWay) {
  write(100);
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(disk.synchronized, 1) << "few are not worth a thread";
  write(20000);
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(disk.synchronized, 1 + 2 + 1);
  ASSERT_TRUE(store.synchronize());
  EXPECT_EQ(disk.synchronized, 4) << "nothing was written since";
}

TEST_F(ManyWrites, TellOfAFailureOnTheWayAtTheEnd) {
  disk.fails = true;
  write(20000);
  const auto done = store.synchronize();
  ASSERT_FALSE(done);
  EXPECT_NE(done.error().text().find(home.root), std::string::npos);
  EXPECT_TRUE(store.synchronize()) << "the next attempt does it all";
}

}  // namespace
}  // namespace annivo
