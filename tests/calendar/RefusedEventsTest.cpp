// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "codecs/icalendar/EventFile.h"
#include "tests/calendar/WriterHome.h"

namespace annivo {
namespace {

using Home = WriterHome;
const Date kDay = utc(2026, 12, 24, 12);
const Date kNextDay = utc(2026, 12, 25, 12);
constexpr std::size_t kLongest = std::size_t{64} * 1024;

struct ZPKCalendarItemsRefusing : testing::Test {
  ZPKCalendarItemsRefusing() { home.makeCalendar("A", "Birthdays"); }
  /// A title that leaves `room` bytes to the limit beside the link and the identifier "D-1".
  static std::string title(std::size_t room, char filling = 'x') {
    return std::string(kLongest - std::string("addressbook://P-1D-1").size() - room, filling);
  }
  void pass(const std::vector<ZPKCalendarItems::BasicEvent>& events,
            const std::vector<ZPKCalendarItems::Alarm>& alarms = {}) {
    home.home.alerts.clear();
    home.home.log.clear();
    home.run([&](ZPKCalendarItems& writer) {
      writer.setThisCalendarWithUIDForType("Birthdays", "A", CalendarType::birthdays);
      for (const auto& alarm : alarms) writer.addAlarm(alarm);
      for (const auto& event : events) writer.addBasicEvent(event);
      writer.removeOtherEvents();
    });
  }
  std::size_t alerts() { return home.home.alerts.shown().size(); }
  Home home;
};

TEST_F(ZPKCalendarItemsRefusing, ATitleUpToTheLimitIsWrittenOnceHoweverItMustBeEncoded) {
  for (const char filling : {'x', '\n', '\x01', '\xFF', ';'}) {
    const auto event = eventOn(kDay, "D-1", title(0, filling));
    pass({event});
    EXPECT_EQ(alerts(), 0U);
    const auto before = home.home.folder().fingerprint();
    pass({event});
    EXPECT_EQ(home.home.folder().fingerprint(), before) << "filled with " << int{filling};
    EXPECT_EQ(home.events("A").at(0)->title(), event.title);
    EXPECT_EQ(home.titles("A").size(), 1U);
  }
}

TEST_F(ZPKCalendarItemsRefusing, ALongerOneIsShownAndNothingIsWrittenInAnyRun) {
  const auto good = eventOn(kNextDay, "D-2", "Good");
  pass({good});
  const auto before = home.home.folder().fingerprint();
  const auto longUID = eventOn(utc(2026, 12, 1, 12), std::string(kLongest, 'u'), "Title");
  auto longURL = eventOn(utc(2026, 12, 2, 12), "D-1", "Title");
  longURL.url = "addressbook://" + std::string(kLongest, 'p');
  const auto longTitle = eventOn(utc(2026, 12, 3, 12), "D-1", title(0) + "x");
  const auto huge = eventOn(utc(2026, 12, 4, 12), "D-1", std::string(3 * EventFile::kLimit, 'x'));
  for (int run = 0; run < 2; ++run) {
    pass({longUID, longURL, longTitle, huge, good});
    ASSERT_EQ(alerts(), 1U);
    EXPECT_EQ(home.home.log.count("cannot be saved"), 3U) << "the others have the same cause";
    const std::string shown = textOf(home.home.alerts.shown().front());
    EXPECT_NE(shown.find("2026-12-01"), shown.npos) << shown;
    EXPECT_LT(shown.size(), 1000U);
    EXPECT_EQ(home.home.folder().fingerprint(), before);
  }
  EXPECT_EQ(home.ledger().size(), 1U);
}

TEST_F(ZPKCalendarItemsRefusing, AnEventThatIsThereKeepsItsTitle) {
  pass({eventOn(kDay, "D-1", "Short")});
  const auto before = home.home.folder().fingerprint();
  pass({eventOn(kDay, "D-1", title(0) + "x")});
  EXPECT_EQ(alerts(), 1U);
  EXPECT_EQ(home.home.folder().fingerprint(), before);
  pass({eventOn(kDay, "D-1", "Short again")});
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Short again"});
}

TEST_F(ZPKCalendarItemsRefusing, AChangeThatWouldMakeAFileUnreadableIsNotMade) {
  pass({eventOn(kDay, "D-1", "Short")});
  const std::string path = Home::eventFile("A", home.ledger().front().iCalUID);
  std::string text = home.home.readFile(path);
  const std::string attachment(EventFile::kLimit - text.size() - 100, 'a');
  text.insert(text.find("END:VEVENT"), "ATTACH:" + attachment + "\r\n");
  home.home.writeFile(path, text);
  const auto before = home.home.folder().fingerprint("Library/Calendars");
  for (int run = 0; run < 2; ++run) {
    pass({eventOn(kDay, "D-1", std::string(200, 't'))});
    ASSERT_EQ(alerts(), 1U);
    EXPECT_NE(textOf(home.home.alerts.shown().front()).find(home.home.path(path)),
              std::string::npos);
    EXPECT_EQ(home.home.folder().fingerprint("Library/Calendars"), before);
    EXPECT_FALSE(home.home.exists(Home::kMark));
  }
  EXPECT_EQ(home.titles("A"), std::vector<std::string>{"Short"});
}

TEST_F(ZPKCalendarItemsRefusing, AnAlarmTooLargeForAnyFileMakesNoDuplicates) {
  auto sound = message(0);
  sound.kind = "Sound";
  sound.sound = std::string(EventFile::kLimit, 's');
  for (int run = 0; run < 3; ++run) {
    pass({eventOn(kDay, "D-1", "Title")}, {sound});
    EXPECT_EQ(alerts(), 1U);
    EXPECT_TRUE(home.titles("A").empty());
    EXPECT_EQ(home.ledger().size(), 1U);
    EXPECT_FALSE(home.home.exists(Home::kMark)) << "it would be refused again";
  }
  pass({eventOn(kDay, "D-1", "Title")});
  EXPECT_EQ(home.titles("A").size(), 1U);
}

}  // namespace
}  // namespace annivo
