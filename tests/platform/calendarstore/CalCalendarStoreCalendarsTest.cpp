// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "tests/platform/calendarstore/CalendarHome.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

std::string info(const std::string& keys) { return CalendarHome::info(keys); }
std::string text(const std::string& key, const std::string& value) {
  return CalendarHome::text(key, value);
}

std::vector<std::string> uidsIn(CalCalendarStore& store) {
  std::vector<std::string> uids;
  for (const auto& calendar : store.calendars()) uids.push_back(calendar->uid());
  return uids;
}

TEST(CalCalendarStore, HasNoCalendarsWhereThereIsNoFolder) {
  CalendarHome home;
  EXPECT_TRUE(home.store().calendars().empty());
  EXPECT_TRUE(home.log.lines.empty());
  EXPECT_FALSE(std::filesystem::exists(home.root));
}

TEST(CalCalendarStore, FindsCalendarsAtTheTopAndInAccounts) {
  CalendarHome home;
  home.makeLocalCalendar("TOP");
  home.makeCalendar("ONE", info(text("Title", "One")), "A.caldav/");
  home.makeCalendar("TWO", info(text("Title", "Two")), "A.exchange/deeper/");
  std::filesystem::create_directories(home.root + "/TOP.calendar/Events/IN.calendar");
  std::filesystem::create_directories(home.root + "/Events/IN2.calendar");
  CalendarHome::write(home.root + "/Calendar Cache", "x");
  CalendarHome::write(home.root + "/FILE.calendar", "x");
  EXPECT_EQ(uidsIn(home.store()), (std::vector<std::string>{"ONE", "TWO", "TOP"}));
  EXPECT_EQ(home.store().calendarWithUID("ONE")->title(), "One");
  EXPECT_EQ(home.store().calendarWithUID("ONE")->path(), home.root + "/A.caldav/ONE.calendar");
}

TEST(CalCalendarStore, TheIdentifierIsTheKeyElseTheFoldersName) {
  CalendarHome home;
  home.makeCalendar("FOLDER", info(text("Key", "KEY") + text("Title", "T")));
  home.makeCalendar("PLAIN", info(text("Title", "P")));
  home.makeCalendar("EMPTY", info(text("Key", "")));
  EXPECT_FALSE(home.store().calendarWithUID("FOLDER"));
  EXPECT_EQ(home.store().calendarWithUID("KEY")->title(), "T");
  EXPECT_EQ(home.store().calendarWithUID("PLAIN")->title(), "P");
  EXPECT_EQ(home.store().calendarWithUID("EMPTY")->title(), "EMPTY");
  EXPECT_FALSE(home.store().calendarWithUID("key"));
  EXPECT_FALSE(home.store().calendarWithUID("ABSENT"));
}

TEST(CalCalendarStore, OfTwoCalendarsWithOneIdentifierTheLastCounts) {
  CalendarHome home;
  home.makeCalendar("A", info(text("Key", "K") + text("Title", "first")));
  home.makeCalendar("B", info(text("Key", "K") + text("Title", "last")));
  EXPECT_EQ(home.store().calendarWithUID("K")->title(), "last");
}

TEST(CalCalendarStore, KnowsWhichCalendarsAreEditable) {
  CalendarHome home;
  const std::pair<const char*, std::string> locked[] = {
      {"SUB", text("Type", "Subscription")},
      {"BIRTH", text("Type", "Birthday")},
      {"BIRTHS", text("Type", "Birthdays")},
      {"NOT", "<key>Editable</key><false/>"},
      {"ZERO", "<key>Editable</key><integer>0</integer>"},
  };
  const std::pair<const char*, std::string> open[] = {
      {"LOCAL", text("Type", "Local")},
      {"DAV", text("Type", "CalDAV") + "<key>Editable</key><true/>"},
      {"NOTHING", ""},
      {"ONE", "<key>Editable</key><integer>1</integer>"},
  };
  for (const auto& [name, keys] : locked) home.makeCalendar(name, info(keys));
  for (const auto& [name, keys] : open) home.makeCalendar(name, info(keys));
  for (const auto& each : locked) {
    EXPECT_FALSE(home.store().calendarWithUID(each.first)->isEditable()) << each.first;
  }
  for (const auto& each : open) {
    EXPECT_TRUE(home.store().calendarWithUID(each.first)->isEditable()) << each.first;
  }
}

TEST(CalCalendarStore, ACalendarWhoseEventsCannotBeWrittenIsNotEditable) {
  class ReadOnlyEvents final : public ForwardingFileManager {
   public:
    using ForwardingFileManager::ForwardingFileManager;
    bool isWritable(const std::string& path) const override {
      return !path.ends_with("L.calendar/Events");
    }
  };
  CalendarHome home;
  home.makeLocalCalendar("L");
  home.makeLocalCalendar("W");
  ReadOnlyEvents files(home.files);
  CalCalendarStore store(files, home.clock, home.log, home.zone, home.home);
  EXPECT_FALSE(store.calendarWithUID("L")->isEditable());
  EXPECT_TRUE(store.calendarWithUID("W")->isEditable());
}

TEST(CalCalendarStore, AFolderWithoutInfoPlistIsACalendarOnlyInsideAnAccount) {
  CalendarHome home;
  home.makeCalendar("HALF", "");
  home.makeCalendar("SERVER", "", "A.caldav/");
  EXPECT_EQ(uidsIn(home.store()), std::vector<std::string>{"SERVER"});
  EXPECT_TRUE(home.store().calendarWithUID("SERVER")->isEditable());
  EXPECT_TRUE(home.log.lines.empty());
}

TEST(CalCalendarStore, ADamagedInfoPlistCostsTheTitleAndIsNamed) {
  CalendarHome home;
  home.makeCalendar("NONE", "this is no property list");
  home.makeCalendar("CUT", info(text("Key", "K")).substr(0, 70));
  home.makeCalendar("ARRAY", "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>");
  std::filesystem::create_directory(home.makeCalendar("FOLDER", "") + "/Info.plist");
  EXPECT_EQ(uidsIn(home.store()), (std::vector<std::string>{"ARRAY", "CUT", "NONE"}))
      << "of a description that cannot be read nothing is known";
  EXPECT_EQ(home.store().findCalendar("FOLDER").error().kind, Error::Kind::unreadable);
  EXPECT_EQ(home.store().findCalendar("OTHER").error().kind, Error::Kind::unreadable);
  for (const char* name : {"CUT", "FOLDER", "NONE"}) {
    EXPECT_TRUE(home.log.mentions(std::string(name) + ".calendar/Info.plist")) << name;
  }
}

TEST(CalCalendarStore, RefusesIdentifiersThatAreNoFileName) {
  CalendarHome home;
  home.makeLocalCalendar("x");
  for (const std::string& uid :
       {std::string("../../x"), std::string("a/b"), std::string(".."), std::string(300, 'a'),
        std::string("a\nb"), std::string("a\0b", 3)}) {
    home.log.lines.clear();
    EXPECT_FALSE(home.store().calendarWithUID(uid));
    EXPECT_EQ(home.log.lines.size(), 1U) << uid;
  }
  EXPECT_FALSE(home.store().calendarWithUID(""));
}

TEST(CalCalendarStore, SavesANewCalendarWithItsProperties) {
  CalendarHome home;
  home.makeLocalCalendar("OTHER");
  const auto calendar = CalCalendar::calendar();
  calendar->setTitle("Birthdays & <more>");
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  EXPECT_TRUE(
      std::regex_match(calendar->uid(), std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")));
  const std::string path = home.root + "/" + calendar->uid() + ".calendar";
  EXPECT_EQ(calendar->path(), path);
  EXPECT_TRUE(std::filesystem::is_directory(path + "/Events"));
  const auto plist = parsePropertyList(CalendarHome::read(path + "/Info.plist"), "Info.plist");
  ASSERT_TRUE(plist);
  EXPECT_EQ(*plist, PropertyList(PropertyList::Dictionary{{"Checked", 1},
                                                          {"Color", "#E6794CFF"},
                                                          {"Editable", true},
                                                          {"Enabled", true},
                                                          {"Key", calendar->uid()},
                                                          {"Order", 2},
                                                          {"Title", "Birthdays & <more>"},
                                                          {"Type", "Local"}}));
  EXPECT_EQ(home.store().calendarWithUID(calendar->uid()), calendar);
  const auto again = home.newRun().calendarWithUID(calendar->uid());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->title(), "Birthdays & <more>");
  EXPECT_TRUE(again->isEditable());
}

TEST(CalCalendarStore, MakesTheMissingFoldersAboveANewCalendar) {
  CalendarHome home;
  const auto calendar = CalCalendar::calendar();
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  struct stat status {};
  ASSERT_EQ(::stat((calendar->path() + "/Events").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  ASSERT_EQ(::stat((calendar->path() + "/Info.plist").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(CalCalendarStore, SavingACalendarTwiceChangesNothing) {
  CalendarHome home;
  const auto calendar = CalCalendar::calendar();
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  const auto before = home.allFiles();
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  EXPECT_EQ(home.allFiles(), before);
  EXPECT_EQ(home.store().calendars().size(), 1U);
}

TEST(CalCalendarStore, UsesUpWhatAnInterruptedCreationLeft) {
  CalendarHome home;
  std::filesystem::create_directories(home.root + "/.annivo-calendar.tmp/Events");
  CalendarHome::write(home.root + "/.annivo-calendar.tmp/Info.plist", "half a prop");
  CalendarHome::write(home.root + "/.annivo-calendar.tmp/.Info.plist.tmp", "");
  EXPECT_TRUE(home.store().calendars().empty());
  const auto calendar = CalCalendar::calendar();
  ASSERT_TRUE(home.store().saveCalendar(calendar));
  EXPECT_EQ(home.allFiles().size(), 1U);
  EXPECT_TRUE(home.newRun().calendarWithUID(calendar->uid()));
}

TEST(CalCalendarStore, AFailedCalendarSaveNamesThePathAndAddsNothing) {
  CalendarHome home;
  std::filesystem::create_directories(home.home + "/Library");
  CalendarHome::write(home.root, "a file where the folder should be");
  const auto calendar = CalCalendar::calendar();
  const auto saved = home.store().saveCalendar(calendar);
  ASSERT_FALSE(saved);
  EXPECT_NE(saved.error().description.find("Library/Calendars"), std::string::npos);
  EXPECT_TRUE(home.store().calendars().empty());
  EXPECT_EQ(calendar->path(), "");
}

TEST(CalCalendarStore, FollowsALinkToACalendarFolderButEntersNoOtherLink) {
  CalendarHome home;
  home.makeCalendar("REAL", info(text("Title", "R")), "../../elsewhere/");
  std::filesystem::create_directories(home.root);
  std::filesystem::create_directory_symlink(home.home + "/elsewhere/REAL.calendar",
                                            home.root + "/LINK.calendar");
  std::filesystem::create_directory_symlink(home.root, home.root + "/loop");
  std::filesystem::create_directory_symlink(home.root + "/nowhere", home.root + "/GONE.calendar");
  EXPECT_EQ(uidsIn(home.store()), std::vector<std::string>{"LINK"});
}

}  // namespace
}  // namespace annivo
