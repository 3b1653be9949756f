// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <string>

#include "codecs/icalendar/EventFile.h"
#include "tests/platform/calendarstore/CalendarHome.h"

namespace annivo {
namespace {

/// The text with each UUID replaced by "UUID-1", "UUID-2", … in the order of their first appearance
/// (padded to the same length, so that lines fold alike).
std::string withoutUUIDs(const std::string& text) {
  const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[0-9A-F]{4}-[0-9A-F]{12}");
  std::map<std::string, std::string> names;
  std::string out;
  std::sregex_iterator match(text.begin(), text.end(), form);
  std::size_t end = 0;
  for (; match != std::sregex_iterator(); ++match) {
    const auto start = static_cast<std::size_t>(match->position());
    out += text.substr(end, start - end);
    std::string name = "UUID-" + std::to_string(names.size() + 1);
    name.resize(36, '-');
    out += names.try_emplace(match->str(), name).first->second;
    end = start + 36;
  }
  return out + text.substr(end);
}

/// Compares with golden/<name>, or, with ANNIVO_UPDATE_GOLDEN set, writes it.
void expectGolden(const std::string& name, const std::string& text) {
  const std::string path =
      std::string(ANNIVO_SOURCE_DIR) + "/tests/codecs/icalendar/golden/" + name;
  const std::string actual = withoutUUIDs(text);
  if (std::getenv("ANNIVO_UPDATE_GOLDEN")) CalendarHome::write(path, actual);
  EXPECT_EQ(actual, CalendarHome::read(path)) << path;
}

class EventFileGolden : public testing::Test {
 protected:
  std::shared_ptr<CalEvent> event(const std::string& title, int year, int month, int day) {
    auto event = CalEvent::event();
    event->setTitle(title);
    event->setStartDate(midnight(home.zone, year, month, day));
    event->setEndDate(midnight(home.zone, year, month, day));
    event->setIsAllDay(true);
    event->setUrl("addressbook://6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11:ABPerson");
    event->setLedgerIdentity({.myUID = "A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34",
                              .calendarUID = "3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690",
                              .date = *event->startDate()});
    return event;
  }
  std::string text(const CalEvent& event) {
    return EventFile::newText(event, home.clock.now(), home.zone);
  }
  CalendarHome home;
};

TEST_F(EventFileGolden, APlainEvent) {
  expectGolden("plain.ics", text(*event("Grace Hopper's birthday", 2026, 12, 9)));
}

TEST_F(EventFileGolden, EachKindOfAlarm) {
  const auto each = event("Ada & Charles, anniversary", 2028, 2, 29);
  each->addAlarms({{.relativeTrigger = -54000},
                   {.relativeTrigger = -86400, .emailAddress = "ada@example.org"},
                   {.relativeTrigger = 28800, .sound = "Basso"},
                   {.relativeTrigger = -144000, .url = "file:///home/ada/To%20do.txt"}});
  expectGolden("alarms.ics", text(*each));
}

TEST_F(EventFileGolden, ATitleThatNeedsFoldingAndEscapes) {
  expectGolden("long-title.ics",
               text(*event("\xE7\xB4\xAB\xE5\xBC\x8F\xE9\x83\xA8; \xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0 "
                           "\xD0\x90\xD1\x85\xD0\xBC\xD0\xB0\xD1\x82\xD0\xBE\xD0\xB2\xD0\xB0, "
                           "Jos\xC3\xA9 \\ \xF0\x9F\x8E\x82\xF0\x9F\x8E\x82\xF0\x9F\x8E\x82 and a "
                           "last line\nEND:VEVENT",
                           2026, 1, 1)));
}

TEST_F(EventFileGolden, ATitleWithControlCharacters) {
  expectGolden("control-title.ics", text(*event("a\x01"
                                                "b\xFF",
                                                2026, 12, 31)));
}

TEST_F(EventFileGolden, AnEmptyTitleAndNoURL) {
  const auto each = event("", 2026, 3, 29);
  each->setUrl(std::nullopt);
  expectGolden("empty-title.ics", text(*each));
}

TEST_F(EventFileGolden, AnEventWithATimeOfDay) {
  const auto each = event("Call", 2026, 7, 1);
  each->setIsAllDay(false);
  each->setEndDate(*each->startDate() + std::chrono::hours{1});
  expectGolden("timed.ics", text(*each));
}

TEST_F(EventFileGolden, ARetitledEvent) {
  const auto each = event("Before", 2026, 12, 9);
  each->addAlarms({{.relativeTrigger = 0}});
  const std::string before = text(*each);
  const auto read = EventFile::events(before, home.zone).value().front();
  read->setTitle("After");
  home.clock.moment += std::chrono::hours{24};
  expectGolden("retitled.ics",
               EventFile::edited(before, *read, home.clock.now(), home.zone).value());
}

TEST_F(EventFileGolden, ANewCalendar) {
  const auto calendar = CalCalendar::calendar();
  calendar->setTitle("Anniversary");
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  expectGolden("Info.plist", CalendarHome::read(calendar->path() + "/Info.plist"));
}

}  // namespace
}  // namespace annivo
