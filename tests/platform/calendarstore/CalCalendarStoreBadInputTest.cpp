// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "codecs/icalendar/EventFile.h"
#include "tests/platform/calendarstore/CalendarHome.h"
#include "tests/support/TimeLimit.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

/// A home with the calendar "CAL".
class CalCalendarStoreBadInput : public testing::Test {
 protected:
  CalCalendarStoreBadInput() { folder = home.makeLocalCalendar("CAL") + "/Events/"; }
  void expectNotFound(const std::string& uid) {
    home.log.lines.clear();
    EXPECT_FALSE(home.newRun().eventWithUID(uid)) << uid;
    EXPECT_TRUE(home.log.mentions(folder + uid + ".ics")) << uid;
  }
  CalendarHome home;
  std::string folder;
};

TEST_F(CalCalendarStoreBadInput, RefusesIdentifiersThatAreNoFileName) {
  CalendarHome::write(home.root + "/x.ics", eventText("../../x", "SUMMARY:outside\r\n"));
  CalendarHome::write(folder + "in.ics", eventText("../../x", "SUMMARY:inside\r\n"));
  for (const std::string& uid :
       {std::string("../../x"), std::string(), std::string("a/b"), std::string(".."),
        std::string("."), std::string(300, 'a'), std::string("a\nb"), std::string("a\r\nb"),
        std::string("a\0b", 3)}) {
    home.log.lines.clear();
    EXPECT_FALSE(home.store().eventWithUID(uid));
    EXPECT_EQ(home.log.lines.size(), 1U) << uid;
  }
}

TEST_F(CalCalendarStoreBadInput, AFileCutAtAnyByteIsNotFoundAndNotTouched) {
  const auto event = CalEvent::event();
  event->setTitle("A");
  event->setCalendar(home.store().calendarWithUID("CAL"));
  event->addAlarms({{.relativeTrigger = 0, .emailAddress = "a@b"}});
  ASSERT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  const std::string path = folder + event->uid() + ".ics";
  const std::string whole = CalendarHome::read(path);
  event->setTitle("B");
  for (std::size_t length = 0; length < whole.size() - 2; ++length) {
    const std::string cut = whole.substr(0, length);
    CalendarHome::write(path, cut);
    expectNotFound(event->uid());
    EXPECT_FALSE(home.store().saveEvent(*event, CalSpan::thisEvent));
    EXPECT_FALSE(home.store().removeEvent(*event, CalSpan::thisEvent));
    EXPECT_EQ(CalendarHome::read(path), cut);
  }
}

TEST_F(CalCalendarStoreBadInput, AFileAboveOneMebibyteIsNotFoundAndNotTouched) {
  const std::string text = eventText("U", "SUMMARY:a\r\nDESCRIPTION:\r\n");
  for (const std::size_t excess : {0U, 1U, 9'000'000U}) {
    std::string large = text;
    large.insert(large.find("DESCRIPTION:") + 12,
                 std::string(EventFile::kLimit - text.size() + excess, 'x'));
    CalendarHome::write(folder + "U.ics", large);
    if (excess == 0) {
      EXPECT_TRUE(home.newRun().eventWithUID("U"));
    } else {
      expectNotFound("U");
      EXPECT_EQ(CalendarHome::read(folder + "U.ics"), large);
    }
  }
}

TEST_F(CalCalendarStoreBadInput, DeepNestingOfAllThatFitsIsReadWithinASecond) {
  std::string lines;
  for (int i = 0; i < 50'000; ++i) lines += "BEGIN:X\n";
  for (int i = 0; i < 50'000; ++i) lines += "END:X\n";
  CalendarHome::write(folder + "U.ics", eventText("U", "SUMMARY:a\n" + lines, "\n"));
  const TimeLimit limit;
  const auto event = home.store().eventWithUID("U");
  ASSERT_TRUE(event);
  event->setTitle("b");
  EXPECT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
}

TEST_F(CalCalendarStoreBadInput, EntriesThatAreNoRegularFileAreNamedAndPassedOver) {
  const std::string outside = home.home + "/outside.ics";
  const std::string text = eventText("LINK", "X-ANNIVO-IDENTITY:0/a/b/LINK\r\nSUMMARY:a\r\n");
  CalendarHome::write(outside, text);
  fs::create_directory(folder + "FOLDER.ics");
  fs::create_symlink(folder + "nowhere", folder + "DANGLING.ics");
  fs::create_symlink(outside, folder + "LINK.ics");
  fs::create_symlink("/dev/zero", folder + "ENDLESS.ics");
  ASSERT_EQ(::mkfifo((folder + "FIFO.ics").c_str(), 0600), 0);
  CalendarHome::write(folder + "GOOD.ics", eventText("GOOD", "SUMMARY:good\r\n"));
  const auto start = std::chrono::steady_clock::now();
  for (const char* uid : {"FOLDER", "DANGLING", "LINK", "ENDLESS", "FIFO"}) expectNotFound(uid);
  EXPECT_TRUE(home.store().ownEvents(home.store().calendars()).events.empty());
  EXPECT_TRUE(home.store().eventWithUID("GOOD"));
  home.store().removeRemains();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds{1});
  EXPECT_EQ(CalendarHome::read(outside), text);
  EXPECT_TRUE(fs::is_symlink(folder + "LINK.ics"));
}

TEST_F(CalCalendarStoreBadInput, AFileThatBecameALinkIsNeitherEditedNorRemoved) {
  CalendarHome::write(folder + "U.ics", eventText("U", "SUMMARY:a\r\n"));
  const auto event = home.store().eventWithUID("U");
  const std::string outside = home.home + "/outside.ics";
  fs::rename(folder + "U.ics", outside);
  fs::create_symlink(outside, folder + "U.ics");
  event->setTitle("b");
  EXPECT_FALSE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_FALSE(home.store().removeEvent(*event, CalSpan::thisEvent));
  EXPECT_EQ(CalendarHome::read(outside), eventText("U", "SUMMARY:a\r\n"));
  EXPECT_TRUE(fs::is_symlink(folder + "U.ics"));
}

TEST_F(CalCalendarStoreBadInput, AnEventsEntryThatIsAFileHarmsNothing) {
  fs::remove(home.root + "/CAL.calendar/Events");
  CalendarHome::write(home.root + "/CAL.calendar/Events", "a file");
  EXPECT_FALSE(home.store().eventWithUID("U"));
  EXPECT_TRUE(home.store().ownEvents(home.store().calendars()).events.empty());
  const auto event = CalEvent::event();
  event->setTitle("A");
  event->setCalendar(home.store().calendarWithUID("CAL"));
  EXPECT_FALSE(home.store().saveEvent(*event, CalSpan::thisEvent));
}

TEST_F(CalCalendarStoreBadInput, TheRemainsOfAKilledRunAreTakenAwayAndNothingElse) {
  const auto ours = [] { return CalEvent::event()->uid() + ".ics"; };
  const std::string header = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Annivo//Annivo Agent 2.0";
  const std::string theirs = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Other//EN\r\n";
  const std::string begun = theirs + "BEGIN:VEVENT\r\n";
  const std::map<std::string, std::string> remains = {
      {"." + ours() + ".tmp", ""},
      {"." + ours() + ".tmp", "BEGIN:VC"},
      {".renamed.ics.tmp", begun + "UID:U\r\nX-ANNIVO-IDENTITY:0/a/b/U\r\nSUMM"},
      {ours(), ""},
      {ours(), std::string(700, '\0')},
      {ours(), header},
      {ours(), begun + "UID:U\r\nX-ANNIVO-IDENTITY:0/a/b/U\r\nEND:VEVENT\r\n\0\0\0"s},
      {"6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11.ics", header},  // Of an earlier release.
      {"renamed.ics", begun + "UID:U\r\nX-ANNIVO-IDENTITY:0/a/b/U\r\nSUMM"},
      {"rewritten.ics", begun + "UID:" + CalEvent::event()->uid() + "\r\nSUMM"},
      {"zeros.ics", begun + "X-ANNIVO-IDENTITY:0/a/b/U\r\n" + std::string(512, '\0')},
  };
  const std::map<std::string, std::string> others = {
      {"chosen-by-another.ics", theirs},
      {"a94f2e07-5b7c-4f0a-8e55-0c9a6d2b8f34.ics", ""},
      {"A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34.ics", ""},
      {"3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690.ics", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:theirs"},
      {"copy.ics", begun + "UID:copy\r\nX-ANNIVO-IDENTITY:0/a/b/U\r\nSUMM"},
      {"two.ics", begun + "UID:theirs\r\nEND:VEVENT\r\nBEGIN:VEVENT\r\nUID:U\r\n"
                          "X-ANNIVO-IDENTITY:0/a/b/U\r\nSUMM"},
      {".hidden", "x"},
      {".vdirsyncer.tmp", "x"},
      {".theirs.ics.tmp", begun + "UID:theirs\r\n"},
      {".A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34.ics.tmp", "BEGIN:VCALENDAR\r\n"},
      {"E36D0B1A-7D24-4B8B-9C0C-52D1A7E4F690.ics", eventText("U", "X-ANNIVO-IDENTITY:0/a/b/U\r\n")},
  };
  for (const auto& [name, bytes] : remains) CalendarHome::write(folder + name, bytes);
  for (const auto& [name, bytes] : others) CalendarHome::write(folder + name, bytes);
  home.store().removeRemains();
  for (const auto& [name, bytes] : remains) {
    EXPECT_FALSE(fs::exists(folder + name)) << name << ": " << bytes;
  }
  auto files = home.allFiles();
  EXPECT_EQ(files.size(), others.size() + 1);
  for (const auto& [name, bytes] : others) EXPECT_EQ(files[folder + name], bytes) << name;
}

TEST_F(CalCalendarStoreBadInput, AFailedWriteNamesTheFileAndLeavesTheOldOne) {
  CalendarHome::write(folder + "U.ics", eventText("U", "SUMMARY:a\r\n"));
  const auto event = home.store().eventWithUID("U");
  event->setTitle("b");
  fs::create_directory(folder + ".U.ics.tmp");
  const auto saved = home.store().saveEvent(*event, CalSpan::thisEvent);
  ASSERT_FALSE(saved);
  EXPECT_NE(saved.error().description.find("U.ics"), std::string::npos);
  EXPECT_EQ(CalendarHome::read(folder + "U.ics"), eventText("U", "SUMMARY:a\r\n"));
  fs::remove(folder + ".U.ics.tmp");
  EXPECT_TRUE(home.store().saveEvent(*event, CalSpan::thisEvent));
  EXPECT_EQ(home.newRun().eventWithUID("U")->title(), "b");
}

}  // namespace
}  // namespace annivo
