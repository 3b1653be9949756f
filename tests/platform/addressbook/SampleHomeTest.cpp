// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>

#include "codecs/plist/PropertyList.h"
#include "platform/addressbook/ABAddressBook.h"
#include "platform/coredata/SQLiteDatabase.h"
#include "tests/platform/addressbook/StoreFile.h"
#include "tests/support/Doubles.h"
#include "tests/support/SampleHome.h"

namespace annivo {
namespace {

constexpr const char* kPreferences = "Library/Preferences/org.annivo.Annivo2.plist";

class SampleHome : public testing::Test {
 protected:
  void make(const SampleHomeOptions& options) {
    const auto made = makeSampleHome(files, folder.path(), options);
    ASSERT_TRUE(made) << made.error().text();
  }
  [[nodiscard]] std::vector<std::string> stores() const {
    std::vector<std::string> paths;
    for (const auto& [path, content] : folder.snapshot()) {
      if (path.ends_with("AddressBook-v22.abcddb")) paths.push_back(path);
    }
    return paths;
  }
  [[nodiscard]] PropertyList plist(const std::string& relative) const {
    const auto list = parsePropertyList(folder.readFile(relative), relative);
    EXPECT_TRUE(list) << relative;
    return list ? *list : PropertyList();
  }
  [[nodiscard]] std::int64_t count(const std::string& store, const std::string& what) const {
    const auto database = SQLiteDatabase::openForReading(folder.path(store));
    EXPECT_TRUE(database);
    auto query = database->prepare("SELECT COUNT(*) FROM " + what);
    EXPECT_TRUE(query && query->step());
    return query->integer(0).value_or(-1);
  }
  PosixFileManager files;
  TemporaryFolder folder;
};

TEST_F(SampleHome, HasAMainStoreAndTwoSourcesInEveryGeneration) {
  for (const GenerationFacts& facts : kGenerations) {
    SCOPED_TRACE(facts.name);
    make({.generation = facts.generation});
    ASSERT_EQ(stores().size(), 3U);
    for (const std::string& store : stores()) {
      EXPECT_EQ(count(store, "Z_PRIMARYKEY WHERE Z_NAME = 'ABCDContact' AND Z_ENT = " +
                                 std::to_string(facts.contact)),
                1);
      EXPECT_GT(count(store, "ZABCDRECORD WHERE ZBIRTHDAY NOT NULL"), 0);
    }
    folder.remove("Library");
  }
}

TEST_F(SampleHome, HasAnOwnCardWithAnAddress) {
  make({});
  RecordingLog log;
  const auto me = ABAddressBook(files, log, folder.path(), NSBundle(files, "/nowhere"), {}).me();
  ASSERT_TRUE(me);
  EXPECT_EQ(me->emails.valueAtIndex(0), "robin@ashford.example");
}

TEST_F(SampleHome, HasTheTwoCalendarsThatThePreferencesName) {
  make({});
  const PropertyList preferences = plist(kPreferences);
  const std::string birthdays =
      "Library/Calendars/" + preferences["birthCalUID"].stringOr("") + ".calendar/Info.plist";
  const std::string anniversaries = std::string("Library/Calendars/") + kSampleAccount +
                                    ".caldav/" + preferences["aneeCalUID"].stringOr("") +
                                    ".calendar/Info.plist";
  EXPECT_EQ(plist(birthdays)["Title"], preferences["birthCalTitle"]);
  EXPECT_EQ(plist(anniversaries)["Title"], preferences["aneeCalTitle"]);
  EXPECT_NE(preferences["birthCalTitle"], preferences["aneeCalTitle"]);
  EXPECT_TRUE(preferences["appRunning"].isTheTrueObject());
}

TEST_F(SampleHome, KeepsThePreferencesInEitherForm) {
  make({});
  EXPECT_TRUE(folder.readFile(kPreferences).starts_with("bplist00"));
  folder.remove("Library");
  make({.xmlPreferences = true});
  EXPECT_TRUE(folder.readFile(kPreferences).starts_with("<?xml"));
  EXPECT_EQ(plist(kPreferences)["alarmTable"].array()->size(), 5U);
}

TEST_F(SampleHome, WasLastTouchedAtTheGivenTime) {
  const Date now = utc(2026, 11, 20, 18, 46);
  make({.now = now});
  EXPECT_EQ(folder.modificationDate("Library/Application Support/AddressBook/Metadata"), now);
  EXPECT_EQ(folder.modificationDate(std::string("Library/Calendars/") + kSampleBirthdayCalendar +
                                    ".calendar/Events"),
            now);
}

TEST_F(SampleHome, IsNeverMadeOverAnother) {
  make({});
  const auto before = folder.snapshot("Library/Application Support/AddressBook");
  EXPECT_FALSE(makeSampleHome(files, folder.path(), {}));
  EXPECT_EQ(folder.snapshot("Library/Application Support/AddressBook"), before);
}

TEST_F(SampleHome, HasAsManyGeneratedPeopleAsAskedFor) {
  make({.people = 200});
  ASSERT_EQ(stores(), std::vector<std::string>{kSampleMainStore});
  EXPECT_EQ(count(kSampleMainStore, "ZABCDRECORD WHERE ZUNIQUEID LIKE '%:ABPerson'"), 200);
  EXPECT_EQ(count(kSampleMainStore, "ZABCDRECORD WHERE ZUNIQUEID LIKE '%:ABGroup'"), 20);
  EXPECT_EQ(count(kSampleMainStore, "ZABCDRECORD WHERE ZBIRTHDAY NOT NULL") +
                count(kSampleMainStore, "ZABCDCONTACTDATE"),
            300);
}

TEST(GeneratedPeople, HaveThreeDatesForTwoAndAGroupForTen) {
  const SampleStore store = generatedStore(10000, 1);
  std::size_t dates = 0;
  std::set<std::string> identifiers;
  for (const StoredPerson& person : store.people) {
    dates += person.dates.size() + (person.birthday ? 1 : 0);
    identifiers.insert(person.uniqueId);
    for (const StoredDate& date : person.dates) identifiers.insert(date.uniqueId);
  }
  EXPECT_EQ(store.people.size(), 10000U);
  EXPECT_EQ(dates, 15000U);
  EXPECT_EQ(store.groups.size(), 1000U);
  EXPECT_EQ(identifiers.size(), 16000U);
}

TEST(GeneratedPeople, HaveGroupsNestedFiveDeep) {
  const SampleStore store = generatedStore(1000, 1);
  std::size_t deepest = 0;
  for (std::size_t g = 0; g < store.groups.size(); ++g) {
    std::size_t depth = 1;
    for (std::size_t at = g; !store.groups[at].subgroups.empty(); ++depth) {
      at = store.groups[at].subgroups.front();
    }
    deepest = std::max(deepest, depth);
  }
  EXPECT_EQ(deepest, 5U);
}

TEST(GeneratedPeople, AreTheSameForTheSameSeedOnly) {
  const auto summary = [](std::uint32_t seed) {
    std::string text;
    for (const StoredPerson& person : generatedStore(50, seed).people) {
      text += person.uniqueId + *person.firstName + *person.lastName;
      if (person.birthday) text += std::to_string(person.birthday->year);
    }
    return text;
  };
  EXPECT_EQ(summary(7), summary(7));
  EXPECT_NE(summary(7), summary(8));
}

}  // namespace
}  // namespace annivo
