// SPDX-License-Identifier: MIT
#include "contacts/ZPKAddressBookDates.h"
#include "tests/contacts/AddressBookHome.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

Texts people(const ContactDates& dates) { return fieldOf(dates, &ContactDateRecord::firstName); }

/// Four people: in no group, in A, in B within A, in C.
void writeFourPeople(AddressBookHome& home) {
  std::vector<StoredPerson> people;
  for (const char* name : {"none", "a", "b", "c"}) {
    people.push_back(dated(name, "_$!<Anniversary>!$_"));
    people.back().birthday = StoredDay{1980, 5, 5};
  }
  home.writeStore(people, {{"A", "outer", {1}, {1}}, {"B", "inner", {2}, {}}, {"C", "c", {3}, {}}});
}

TEST(ZPKAddressBookDates, WithoutFiltersEachListIsTheMergedOne) {
  AddressBookHome home;
  writeFourPeople(home);
  home.writeStore({born("source", {1980, 1, 1})}, {}, sourceStore("X"));
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(dates.filterGroupID(), "");
  EXPECT_TRUE(dates.filterLabels().empty());
  EXPECT_EQ(people(dates.addressBookBirthDates()), (Texts{"none", "a", "b", "c", "source"}));
  EXPECT_EQ(people(dates.addressBookCustomDates()), (Texts{"none", "a", "b", "c"}));
}

TEST(ZPKAddressBookDates, AGroupTakesInTheMembersOfItsSubgroups) {
  const struct {
    const char* group;
    Texts expected;
  } rows[] = {{"A", {"a", "b"}}, {"B", {"b"}}, {"C", {"c"}}, {"gone", {}}, {"a", {}}};
  for (const auto& row : rows) {
    AddressBookHome home;
    writeFourPeople(home);
    home.parentPreferences({{"selectedGroupUID", row.group}});
    ZPKAddressBookDates dates(home.platform());
    EXPECT_EQ(people(dates.addressBookBirthDates()), row.expected) << row.group;
    EXPECT_EQ(people(dates.addressBookCustomDates()), row.expected) << row.group;
  }
}

TEST(ZPKAddressBookDates, TheChosenGroupIsFoundInALatticeOfGroups) {
  AddressBookHome home;
  std::vector<StoredGroup> groups;
  for (std::size_t level = 0; level < 40; ++level) {
    for (const char* side : {"a", "b"}) {
      StoredGroup group;
      group.uniqueId = std::to_string(level) + side;
      if (level == 0) group.people = {0};
      if (level > 0) group.subgroups = {2 * level - 2, 2 * level - 1};
      groups.push_back(group);
    }
  }
  home.writeStore({born("P", {1980, 1, 1}), born("Q", {1980, 1, 1})}, groups);
  home.parentPreferences({{"selectedGroupUID", "39b"}});
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(people(dates.addressBookBirthDates()), Texts{"P"});
}

TEST(ZPKAddressBookDates, AnExcludedLabelIsComparedExactly) {
  const struct {
    const char* excluded;
    Texts expected;
  } rows[] = {{"Anniversary", {"lower", "other", "none"}},
              {"anniversary", {"coded", "other", "none"}},
              {"_$!<Anniversary>!$_", {"coded", "lower", "other", "none"}},
              {"_$!<Other>!$_", {"coded", "lower", "none"}},
              {"NULL", {"coded", "lower", "other"}},
              {"", {"coded", "lower", "other", "none"}}};
  for (const auto& row : rows) {
    AddressBookHome home;
    home.writeStore({dated("coded", "_$!<Anniversary>!$_"), dated("lower", "anniversary"),
                     dated("other", "_$!<Other>!$_"), dated("none", std::nullopt)});
    home.parentPreferences({{"theLabels", PropertyList::Array{row.excluded}}});
    ZPKAddressBookDates dates(home.platform());
    EXPECT_EQ(people(dates.addressBookCustomDates()), row.expected) << row.excluded;
  }
}

TEST(ZPKAddressBookDates, BirthdaysGoByTheirUncapitalisedWord) {
  for (const auto& [language, word] :
       std::vector<std::pair<std::string, std::string>>{{"en", "birthday"}, {"de", "Geburtstag"}}) {
    AddressBookHome home({.languages = {language}});
    home.writeStore({born("P", {1980, 1, 1}), dated("Q", "Wedding")});
    const std::string uncapitalised =
        home.platform().sharedAddressBook().localizedPropertyOrLabel(kABBirthdayProperty);
    EXPECT_EQ(uncapitalised, word) << language;
    const std::string capitalised = ZPKAddressBookDates::localizedBirthdayString(home.platform());
    const bool differ = capitalised != uncapitalised;

    home.parentPreferences({{"theLabels", PropertyList::Array{capitalised}}});
    home.endRun();
    {
      ZPKAddressBookDates dates(home.platform());
      EXPECT_EQ(people(dates.addressBookBirthDates()), differ ? Texts{"P"} : Texts{}) << language;
    }
    home.parentPreferences({{"theLabels", PropertyList::Array{"x", uncapitalised}}});
    home.endRun();
    ZPKAddressBookDates dates(home.platform());
    EXPECT_TRUE(dates.addressBookBirthDates().empty()) << language;
    EXPECT_EQ(people(dates.addressBookCustomDates()), Texts{"Q"});
  }
}

TEST(ZPKAddressBookDates, BothFiltersApplyToBothLists) {
  AddressBookHome home;
  writeFourPeople(home);
  home.parentPreferences(
      {{"selectedGroupUID", "A"}, {"theLabels", PropertyList::Array{"birthday", "Wedding"}}});
  ZPKAddressBookDates dates(home.platform());
  EXPECT_TRUE(dates.addressBookBirthDates().empty());
  EXPECT_EQ(people(dates.addressBookCustomDates()), (Texts{"a", "b"}));
  EXPECT_EQ(people(dates.filterArrayByGroup()), (Texts{"a", "b"})) << "of the list asked for last";
  EXPECT_EQ(dates.filterArrayByLabels(dates.filterArrayByGroup()).size(), 2U);
}

TEST(ZPKAddressBookDates, ListsAreMadeOnce) {
  AddressBookHome home;
  writeFourPeople(home);
  ZPKAddressBookDates dates(home.platform());
  const auto* births = dates.addressBookBirthDates().data();
  const auto* others = dates.addressBookCustomDates().data();
  home.editStore("DELETE FROM ZABCDRECORD");
  home.parentPreferences({{"selectedGroupUID", "A"}});
  EXPECT_EQ(dates.addressBookBirthDates().data(), births);
  EXPECT_EQ(dates.addressBookBirthDates().size(), 4U);
  EXPECT_EQ(dates.filterArrayByGroup().front().get().dateType, "Anniversary")
      << "the list that was made last is the one that is filtered";
  EXPECT_EQ(dates.addressBookCustomDates().data(), others);
}

TEST(ZPKAddressBookDates, FilterPreferencesOfAnotherTypeChooseNothing) {
  AddressBookHome home;
  writeFourPeople(home);
  home.parentPreferences({{"selectedGroupUID", 7}, {"theLabels", "birthday"}});
  {
    ZPKAddressBookDates dates(home.platform());
    EXPECT_EQ(dates.addressBookBirthDates().size(), 4U);
  }
  home.parentPreferences({{"theLabels", PropertyList::Array{7, "birthday", true}}});
  home.endRun();
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(dates.filterLabels(), Texts{"birthday"});
  EXPECT_TRUE(dates.addressBookBirthDates().empty());
}

TEST(ZPKAddressBookDates, WithoutContactsTheListsAreEmpty) {
  AddressBookHome home;
  ZPKAddressBookDates dates(home.platform());
  EXPECT_TRUE(dates.addressBookBirthDates().empty());
  EXPECT_TRUE(dates.addressBookCustomDates().empty());
  EXPECT_TRUE(home.alerts.shown().empty());
}

TEST(ZPKAddressBookDates, ACompanyCarriesItsNameUnderLastName) {
  AddressBookHome home;
  StoredPerson acme = born("acme", {1980, 1, 1});
  acme.firstName = "Jane";
  acme.organization = "Acme";
  acme.displayFlags = 1;
  home.writeStore({acme});
  ZPKAddressBookDates dates(home.platform());
  const ContactDateRecord& record = dates.addressBookBirthDates()[0];
  EXPECT_EQ(record.lastName, "Acme");
  EXPECT_EQ(record.firstName, "NULL");
}

// The same day in every zone, from the store to the record.
TEST(ZPKAddressBookDates, DaysAreThePersonsDaysInEveryZone) {
  const std::vector<StoredDay> days{{1604, 2, 29}, {1604, 7, 4}, {1900, 1, 1}, {1900, 7, 31},
                                    {1980, 1, 31}, {1980, 7, 1}, {2026, 1, 1}, {2026, 7, 31}};
  for (const char* name :
       {"Etc/GMT+12", "UTC", "Asia/Kolkata", "Etc/GMT-12", "Pacific/Auckland", "Pacific/Fakaofo",
        "Pacific/Apia", "Pacific/Kiritimati", "Asia/Manila", "America/Juneau"}) {
    SCOPED_TRACE(name);
    AddressBookHome home({.timeZone = name});
    std::vector<StoredPerson> stored;
    for (const StoredDay& day : days) {
      stored.push_back(born("P", day));
      stored.back().dates = {{"", "x", day}};
    }
    home.writeStore(stored);
    ZPKAddressBookDates dates(home.platform());
    for (const ContactDates* list :
         {&dates.addressBookBirthDates(), &dates.addressBookCustomDates()}) {
      ASSERT_EQ(list->size(), days.size());
      for (std::size_t i = 0; i < days.size(); ++i) {
        const ContactDateRecord& record = (*list)[i];
        const CivilTime civil = NSTimeZone(name).civil(*record.thisDate);
        EXPECT_EQ(civil.year, days[i].year);
        EXPECT_EQ(civil.month, days[i].month);
        EXPECT_EQ(civil.day, days[i].day);
      }
    }
  }
}

// Whether there is work to do.

TEST(AddressBookChange, IsTheLatestChangeOfAMetadataFolder) {
  AddressBookHome home;
  EXPECT_EQ(ZPKAddressBookDates::addressBookLastModifed(home.platform()), kUnixEpoch);
  home.folder().makeFolder(kAddressBookFolder + "/Sources/X/Metadata");
  home.folder().makeFolder(kAddressBookFolder + "/Metadata");
  home.folder().makeFolder(kAddressBookFolder + "/Metadata/inner/Metadata");
  home.writeStore({});
  home.touch(kAddressBookFolder + "/Metadata/inner/Metadata", utc(2026, 9, 1));
  home.touch(kAddressBookFolder + "/Metadata", utc(2026, 3, 1));
  home.touch(kAddressBookFolder + "/Sources/X/Metadata", utc(2026, 5, 1));
  EXPECT_EQ(ZPKAddressBookDates::addressBookLastModifed(home.platform()), utc(2026, 5, 1))
      << "neither the store nor what a metadata folder holds counts";
  home.touch(kAddressBookFolder + "/Metadata", utc(2026, 6, 1));
  EXPECT_EQ(ZPKAddressBookDates::addressBookLastModifed(home.platform()), utc(2026, 6, 1));
  home.folder().makeFolder(kAddressBookFolder + "/OldMetadata");
  home.touch(kAddressBookFolder + "/OldMetadata", utc(2026, 7, 1));
  EXPECT_EQ(ZPKAddressBookDates::addressBookLastModifed(home.platform()), utc(2026, 7, 1));
  EXPECT_FALSE(home.exists("Library/Preferences"));
}

TEST(AddressBookChange, WithoutMetadataIsTheEpoch) {
  AddressBookHome home;
  home.writeStore({born("P", {1980, 1, 1})});
  EXPECT_EQ(ZPKAddressBookDates::addressBookLastModifed(home.platform()), kUnixEpoch);
}

TEST(ShouldHelperRun, OnlyAfterAStrictlyLaterChangeOrLaunch) {
  const Date last = utc(2026, 6, 1);
  const auto tick = std::chrono::microseconds{1};
  const struct {
    const char* name;
    Date modified;
    PropertyList launched;
    bool expected;
  } rows[] = {{"contacts at the very time", last, {}, false},
              {"contacts later", last + tick, {}, true},
              {"contacts earlier", last - tick, {}, false},
              {"parent at the very time", last, last, false},
              {"parent later", last - tick, last + tick, true},
              {"parent earlier", last, last - tick, false},
              {"contacts later, parent earlier", last + tick, last - tick, true},
              {"a launch that is no date", last, "2030-01-01", false}};
  for (const auto& row : rows) {
    AddressBookHome home;
    home.folder().makeFolder(kAddressBookFolder + "/Metadata");
    home.touch(kAddressBookFolder + "/Metadata", row.modified);
    if (!row.launched.isNil()) home.parentPreferences({{"lastLaunched", row.launched}});
    EXPECT_EQ(ZPKAddressBookDates::shouldHelperRun(home.platform(), last), row.expected)
        << row.name;
  }
}

TEST(ShouldHelperRun, WithoutContactsAndLaunchThereIsNothing) {
  AddressBookHome home;
  EXPECT_FALSE(ZPKAddressBookDates::shouldHelperRun(home.platform(), kUnixEpoch));
  EXPECT_TRUE(ZPKAddressBookDates::shouldHelperRun(home.platform(),
                                                   kUnixEpoch - std::chrono::microseconds{1}));
}

// The own card and the words.

TEST(UserPrimaryEmail, IsThatOfTheOwnCard) {
  AddressBookHome home;
  StoredPerson other = born("other", {1980, 1, 1});
  other.emails = {"other@example.org"};
  StoredPerson me = born("me", {1980, 1, 1});
  me.emails = {"first@example.org", "second@example.org"};
  me.isMe = true;
  home.writeStore({other, me});
  EXPECT_EQ(ZPKAddressBookDates::userPrimaryEmail(home.platform()), "first@example.org");
}

TEST(UserPrimaryEmail, IsAPhraseWithoutCardOrAddress) {
  AddressBookHome home;
  EXPECT_EQ(ZPKAddressBookDates::userPrimaryEmail(home.platform()), "No Email Set");
  StoredPerson me = born("me", {1980, 1, 1});
  me.isMe = true;
  home.writeStore({me});
  home.endRun();
  EXPECT_EQ(ZPKAddressBookDates::userPrimaryEmail(home.platform()), "No Email Set");
}

TEST(LocalizedWords, AreCapitalised) {
  AddressBookHome english;
  EXPECT_EQ(ZPKAddressBookDates::localizedBirthdayString(english.platform()), "Birthday");
  EXPECT_EQ(ZPKAddressBookDates::localizedAnniversaryString(english.platform()), "Anniversary");
  AddressBookHome german({.languages = {"de"}});
  EXPECT_EQ(ZPKAddressBookDates::localizedBirthdayString(german.platform()), "Geburtstag");
}

}  // namespace
}  // namespace annivo
