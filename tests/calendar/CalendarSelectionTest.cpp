// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

using Home = WriterHome;
constexpr const char* kUneditable =
    "The calendar Team is uneditable. No events will be added to this calendar.";

bool updated(Home& home, const std::string& uid, std::optional<Date> lastRun) {
  home.home.endRun();
  ZPKCalendarItems writer(home.home.platform());
  return writer.hasCalendarBeenUpdatedSinceLastRun(uid, lastRun);
}

/// Counts what is looked at below the calendars.
class CountingFileManager final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override {
    listed.push_back(path);
    return inner_.contentsOfDirectory(path);
  }
  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override {
    examined.push_back(path);
    return inner_.attributesAtPath(path, links);
  }
  mutable std::vector<std::string> listed;
  mutable std::vector<std::string> examined;
};

TEST(ZPKCalendarItemsSelection, AnEmptyUIDIsNeverUpdatedAndNothingIsLookedAt) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  PosixFileManager disk;
  CountingFileManager files(disk);
  home.home.useFileManager(&files);
  ZPKCalendarItems writer(home.home.platform());
  files.listed.clear();
  files.examined.clear();
  EXPECT_FALSE(writer.hasCalendarBeenUpdatedSinceLastRun("", kUnixEpoch));
  EXPECT_TRUE(files.listed.empty());
  EXPECT_TRUE(files.examined.empty());
}

TEST(ZPKCalendarItemsSelection, ACalendarWithoutAFolderCountsAsUpdated) {
  Home home;
  EXPECT_TRUE(updated(home, "A", kLatestDate));
  home.makeCalendar("B", "Birthdays");
  EXPECT_TRUE(updated(home, "A", kLatestDate));
  EXPECT_TRUE(updated(home, "b", kLatestDate)) << "names are compared with their case";
}

TEST(ZPKCalendarItemsSelection, ACalendarIsUpdatedOnlyByAChangeAfterTheLastRun) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  const Date changed = utc(2026, 11, 1, 12);
  home.home.touch("Library/Calendars/A.calendar/Events", changed);
  const std::chrono::microseconds tick{1};
  EXPECT_TRUE(updated(home, "A", changed - tick));
  EXPECT_FALSE(updated(home, "A", changed));
  EXPECT_FALSE(updated(home, "A", changed + tick));
  EXPECT_FALSE(updated(home, "A", std::nullopt)) << "no run recorded yet";
}

TEST(ZPKCalendarItemsSelection, AMissingEventsFolderCountsAsUpdated) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  home.home.folder().remove("Library/Calendars/A.calendar/Events");
  EXPECT_TRUE(updated(home, "A", kLatestDate));
}

TEST(ZPKCalendarItemsSelection, ACalendarInsideAnAccountFolderIsFound) {
  Home home;
  home.makeCalendar("A", "Birthdays", {}, "E1.caldav/");
  home.home.touch("Library/Calendars/E1.caldav/A.calendar/Events", utc(2026, 11, 1));
  EXPECT_TRUE(updated(home, "A", utc(2026, 10, 31)));
  EXPECT_FALSE(updated(home, "A", utc(2026, 11, 2)));
}

TEST(ZPKCalendarItemsSelection, OfSeveralFoldersOfOneUIDTheLastIsLookedAt) {
  Home home;
  home.makeCalendar("A", "One");
  home.makeCalendar("A", "Two", {}, "Z.caldav/");
  home.home.touch("Library/Calendars/A.calendar/Events", utc(2026, 11, 10));
  home.home.touch("Library/Calendars/Z.caldav/A.calendar/Events", utc(2026, 11, 1));
  EXPECT_FALSE(updated(home, "A", utc(2026, 11, 5)));
}

TEST(ZPKCalendarItemsSelection, EventFilesAreNotListedInTheSearchForAChangedCalendar) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  PosixFileManager disk;
  CountingFileManager files(disk);
  home.home.useFileManager(&files);
  ZPKCalendarItems writer(home.home.platform());
  files.listed.clear();
  (void)writer.hasCalendarBeenUpdatedSinceLastRun("A", kUnixEpoch);
  for (const auto& path : files.listed) EXPECT_FALSE(path.ends_with("Events")) << path;
}

TEST(ZPKCalendarItemsSelection, TheFolderDateIsLoggedUnderTheSwitch) {
  Home home;
  home.logOn();
  home.makeCalendar("A", "Birthdays");
  home.home.touch("Library/Calendars/A.calendar/Events", utc(2026, 11, 1, 12));
  (void)updated(home, "A", kUnixEpoch);
  EXPECT_EQ(home.home.log.count("Calendar folder updated: 2026-11-01 12:00:00 +0000"), 1U);
  (void)updated(home, "none", kUnixEpoch);
  EXPECT_EQ(home.home.log.count("Calendar folder updated: (null)"), 1U);
}

TEST(ZPKCalendarItemsSelection, AnUnknownUIDMakesACalendarAndStoresItsUID) {
  Home home;
  std::string uid;
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("Annivo Birthdays", "gone", CalendarType::birthdays);
    uid = writer.thisCalendar()->uid();
    EXPECT_FALSE(writer.calendarLocked());
  });
  EXPECT_EQ(uid.size(), 36U);
  EXPECT_TRUE(home.home.storedPreferences(kParentDomain)["birthCalUID"].isEqualToString(uid));
  const auto made = home.home.platform().defaultCalendarStore().calendarWithUID(uid);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->title(), "Annivo Birthdays");
}

TEST(ZPKCalendarItemsSelection, ACalendarThatCannotBeSavedIsTheTargetAllTheSame) {
  Home home;
  PosixFileManager disk;
  FailingFileManager files(disk);
  files.makeUnwritable(home.home.path("Library/Calendars"));
  home.home.useFileManager(&files);
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("Birthdays", "gone", CalendarType::birthdays);
    ASSERT_TRUE(writer.thisCalendar());
    EXPECT_EQ(writer.thisCalendar()->title(), "Birthdays");
    EXPECT_FALSE(writer.calendarLocked());
    EXPECT_TRUE(home.home.storedPreferences(kParentDomain)["birthCalUID"].isEqualToString(
        writer.thisCalendar()->uid()));
    EXPECT_TRUE(home.home.alerts.shown().empty()) << "nobody is asked about a calendar";
    writer.addBasicEvent(eventOn(utc(2026, 12, 1, 12), "D", "Title"));
    EXPECT_EQ(home.home.alerts.shown().size(), 1U) << "but about an event that is not saved";
  });
  EXPECT_GE(home.home.log.count(home.home.path("Library/Calendars")), 1U);
  EXPECT_TRUE(home.home.exists(Home::kMark));
}

TEST(ZPKCalendarItemsSelection, AKnownCalendarKeepsItsTitle) {
  Home home;
  home.logOn();
  home.makeCalendar("A", "Mine");
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("Theirs", "A", CalendarType::birthdays);
    EXPECT_EQ(writer.thisCalendar()->title(), "Mine");
  });
  EXPECT_TRUE(home.home.storedPreferences(kParentDomain).isNil());
  EXPECT_EQ(home.home.log.count("Using calendar Mine."), 1U);
}

TEST(ZPKCalendarItemsSelection, AnUneditableCalendarIsReportedAlwaysAndLockedUntilTheNextChoice) {
  Home home;
  home.makeCalendar("A", "Team", {{"Editable", false}});
  home.makeCalendar("B", "Mine");
  home.run([&](ZPKCalendarItems& writer) {
    writer.setThisCalendarWithUIDForType("Team", "A", CalendarType::birthdays);
    EXPECT_TRUE(writer.calendarLocked());
    EXPECT_EQ(home.home.log.count(kUneditable), 1U);
    EXPECT_EQ(home.home.log.count("Using calendar"), 0U) << "that line is under the switch";
    writer.setThisCalendarWithUIDForType("Mine", "B", CalendarType::birthdays);
    EXPECT_FALSE(writer.calendarLocked());
  });
  EXPECT_EQ(home.home.log.count(kUneditable), 1U);
}

TEST(ZPKCalendarItemsSelection, SettingADefaultUIDChangesThatKeyOnlyAndAtOnce) {
  Home home;
  home.home.parentPreferences({{"aneeCalUID", "A"}, {"other", 7}});
  ZPKCalendarItems writer(home.home.platform());
  writer.setDefaultUIDForType("B", CalendarType::birthdays);
  const PropertyList stored = home.home.storedPreferences(kParentDomain);
  EXPECT_TRUE(stored["birthCalUID"].isEqualToString("B"));
  EXPECT_TRUE(stored["aneeCalUID"].isEqualToString("A"));
  EXPECT_EQ(stored["other"].integerValue(), 7);
}

TEST(ZPKCalendarItemsSelection, IdentifiersThatAreNoFileNamesLeadToANewCalendarInItsPlace) {
  for (const std::string& uid :
       {std::string("../../x"), std::string("a/b"), std::string(300, 'x'), std::string("a\nb"),
        std::string("a\0b", 3), std::string("."), std::string("..")}) {
    Home home;
    home.home.writeFile("x.calendar/Info.plist", "not ours");
    home.home.writeFile("Library/x.calendar/Info.plist", "not ours");
    const auto before = home.home.snapshot("Library/x.calendar");
    home.run([&](ZPKCalendarItems& writer) {
      EXPECT_TRUE(writer.hasCalendarBeenUpdatedSinceLastRun(uid, kLatestDate));
      writer.setThisCalendarWithUIDForType("Birthdays", uid, CalendarType::birthdays);
      EXPECT_NE(writer.thisCalendar()->uid(), uid);
      writer.addBasicEvent(eventOn(utc(2026, 12, 1, 12), "D", "Title"));
    });
    EXPECT_EQ(home.home.snapshot("Library/x.calendar"), before);
    EXPECT_EQ(home.home.log.count("calendar identifier"), 1U) << "refused with a message";
    for (const auto& [path, content] : home.home.snapshot()) {
      EXPECT_TRUE(path.starts_with("Library") || path.starts_with("x.calendar")) << path;
    }
  }
}

}  // namespace
}  // namespace annivo
