// SPDX-License-Identifier: MIT
// What is known of contacts of which a part cannot be read, and what the person is told.
#include <algorithm>

#include "contacts/ZPKAddressBookDates.h"
#include "tests/contacts/AddressBookHome.h"
#include "tests/support/FailingFileManager.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;
using UIDs = std::unordered_set<std::string>;

constexpr const char* kTooLong = "('x' || hex(zeroblob(9000000)))";

/// A main store with "P" and a source with "Q", each with a birthday and a date, in group G.
class UnreadableContacts : public testing::Test {
 protected:
  void SetUp() override {
    for (const std::string name : {"P", "Q"}) {
      StoredPerson person = dated(name, "x");
      person.birthday = StoredDay{1980, 1, 1};
      home.writeStore({person}, {{"G:ABGroup", "g", {0}, {}}},
                      name == "P" ? kMainStore : sourceStore("A"));
    }
  }
  /// Of both lists, in order.
  static Texts names(ZPKAddressBookDates& dates) {
    Texts all = fieldOf(dates.addressBookBirthDates(), &ContactDateRecord::firstName);
    const Texts others = fieldOf(dates.addressBookCustomDates(), &ContactDateRecord::firstName);
    all.insert(all.end(), others.begin(), others.end());
    return all;
  }
  [[nodiscard]] std::size_t alertsOf(const std::string& text) const {
    const auto& shown = home.alerts.shown();
    return static_cast<std::size_t>(std::count_if(shown.begin(), shown.end(), [&](const auto& a) {
      return (a.messageText + a.informativeText).find(text) != std::string::npos;
    }));
  }
  void chooseGroup() { home.parentPreferences({{"selectedGroupUID", "G:ABGroup"}}); }

  AddressBookHome home;
};

TEST_F(UnreadableContacts, AllThatCanBeReadIsWhole) {
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), (Texts{"P", "Q", "P", "Q"}));
  EXPECT_TRUE(dates.wasReadWhole());
  EXPECT_EQ(dates.dateUIDs(), (UIDs{"P:ABPerson", "Q:ABPerson", "P-date", "Q-date"}));
}

TEST_F(UnreadableContacts, TheIdentifiersAreAlsoThoseOfDatesThatAreNotChosen) {
  home.parentPreferences(
      {{"selectedGroupUID", "none"}, {"theLabels", PropertyList::Array{"x", "birthday"}}});
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), Texts{});
  EXPECT_EQ(dates.dateUIDs().size(), 4U);
}

struct BadGroups {
  const char* name;
  std::string sql;
  Texts left;  ///< groups that the person is still known to be in
};

class WithBadGroups : public UnreadableContacts, public testing::WithParamInterface<BadGroups> {};

TEST_P(WithBadGroups, TheDatesAreThereWhereNoGroupIsChosen) {
  home.editStore(GetParam().sql, sourceStore("A"));
  ZPKAddressBookDates dates(home.platform());
  ASSERT_EQ(names(dates), (Texts{"P", "Q", "P", "Q"}));
  EXPECT_TRUE(dates.wasReadWhole());
  EXPECT_TRUE(home.alerts.shown().empty());
  EXPECT_EQ(groupsOf(dates.addressBookBirthDates()[1]), GetParam().left);
  EXPECT_EQ(groupsOf(dates.addressBookBirthDates()[0]), Texts{"G:ABGroup"});
  EXPECT_GE(home.log.count(home.path(sourceStore("A"))), 1U) << "logged";
}

TEST_P(WithBadGroups, TheStoreContributesNothingWhereOneIsChosen) {
  home.editStore(GetParam().sql, sourceStore("A"));
  chooseGroup();
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), (Texts{"P", "P"}));
  EXPECT_EQ(dates.dateUIDs(), (UIDs{"P:ABPerson", "P-date"}));
  EXPECT_FALSE(dates.wasReadWhole());
  EXPECT_EQ(alertsOf(home.path(sourceStore("A"))), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Groups, WithBadGroups,
    testing::Values(
        BadGroups{"AGroup",
                  std::string("UPDATE ZABCDRECORD SET ZNAME = ") + kTooLong + " WHERE ZNAME = 'g'",
                  {}},
        BadGroups{"GroupsInGroups",
                  std::string("INSERT INTO Z_18PARENTGROUPS VALUES (1, ") + kTooLong + ")",
                  {"G:ABGroup"}},
        BadGroups{"PeopleInGroups",
                  std::string("UPDATE Z_22PARENTGROUPS SET Z_19PARENTGROUPS1 = ") + kTooLong,
                  {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(UnreadableContacts, AFetchThatFailsIsLoggedPresentedAndAllThatItsStoreLacks) {
  home.editStore(std::string("UPDATE ZABCDCONTACTDATE SET ZLABEL = ") + kTooLong, sourceStore("A"));
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), (Texts{"P", "Q", "P"}));
  EXPECT_FALSE(dates.wasReadWhole());
  EXPECT_EQ(dates.dateUIDs(), (UIDs{"P:ABPerson", "Q:ABPerson", "P-date"}));
  EXPECT_EQ(alertsOf(home.path(sourceStore("A"))), 1U);
  EXPECT_GE(home.log.count(home.path(sourceStore("A"))), 1U);
}

TEST_F(UnreadableContacts, AStoreThatCannotBeOpenedIsNotWhole) {
  home.writeFile(sourceStore("A"), "no store");
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), (Texts{"P", "P"}));
  EXPECT_FALSE(dates.wasReadWhole());
  EXPECT_EQ(dates.dateUIDs(), (UIDs{"P:ABPerson", "P-date"}));
}

TEST_F(UnreadableContacts, AStoreThatACrashLeftUnfinishedIsReadAsItWasBefore) {
  std::string half, journal;
  {
    EditDatabase writer(home.path(kMainStore));
    writer.run(
        "PRAGMA cache_size = 1; BEGIN; UPDATE ZABCDRECORD SET ZFIRSTNAME = 'half', ZNAME = "
        "hex(randomblob(9000)); UPDATE ZABCDCONTACTDATE SET ZLABEL = hex(randomblob(9000))");
    half = home.readFile(kMainStore);
    journal = home.readFile(kMainStore + "-journal");
    writer.run("ROLLBACK");
  }
  home.writeFile(kMainStore, half);
  home.writeFile(kMainStore + "-journal", journal);
  const auto before = home.folder().fingerprint();
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), (Texts{"P", "Q", "P", "Q"}));
  EXPECT_TRUE(dates.wasReadWhole());
  EXPECT_TRUE(home.alerts.shown().empty());
  EXPECT_EQ(home.folder().fingerprint(), before) << "neither the store nor anything beside it";
}

TEST_F(UnreadableContacts, AFolderThatCannotBeListedIsPresentedAndTheOthersCount) {
  PosixFileManager disk;
  FailingFileManager files(disk);
  files.makeUnreadable(home.path(kAddressBookFolder + "/Sources"));
  home.useFileManager(&files);
  {
    ZPKAddressBookDates dates(home.platform());
    EXPECT_EQ(names(dates), (Texts{"P", "P"}));
    EXPECT_FALSE(dates.wasReadWhole());
    ASSERT_EQ(home.alerts.shown().size(), 1U);
    EXPECT_EQ(alertsOf(home.path(kAddressBookFolder + "/Sources")), 1U);
    EXPECT_TRUE(ZPKAddressBookDates::shouldHelperRun(home.platform(), utc(2999, 1, 1)))
        << "nobody knows whether something changed";
  }
  home.endRun();
  files.makeReadable(home.path(kAddressBookFolder + "/Sources"));
  EXPECT_FALSE(ZPKAddressBookDates::shouldHelperRun(home.platform(), utc(2999, 1, 1)));
  home.endRun();
  home.useFileManager(nullptr);
}

TEST_F(UnreadableContacts, AFolderThatIsMissingIsNoFailure) {
  home.folder().remove(kAddressBookFolder);
  ZPKAddressBookDates dates(home.platform());
  EXPECT_EQ(names(dates), Texts{});
  EXPECT_TRUE(dates.wasReadWhole());
  EXPECT_TRUE(home.alerts.shown().empty());
  EXPECT_FALSE(ZPKAddressBookDates::shouldHelperRun(home.platform(), utc(2999, 1, 1)));
}

TEST_F(UnreadableContacts, ALockedStoreIsWaitedForOnce) {
  EditDatabase writer(home.path(sourceStore("A")));
  writer.run("BEGIN EXCLUSIVE");
  const auto readings = home.platform().storeEnvironment().readings;
  ASSERT_TRUE(readings->waitForLock(home.path(sourceStore("A"))));
  ZPKAddressBookDates dates(home.platform());
  EXPECT_FALSE(readings->waitForLock(home.path(sourceStore("A")))) << "what was left of its wait";
  EXPECT_EQ(names(dates), (Texts{"P", "P"}));
  EXPECT_EQ(ZPKAddressBookDates::userPrimaryEmail(home.platform()), "No Email Set");
  EXPECT_FALSE(dates.wasReadWhole());
  EXPECT_EQ(alertsOf(home.path(sourceStore("A"))), 1U);
  writer.run("COMMIT");
  EXPECT_EQ(dates.addressBook().arrayForEntity("ABCDContact").dates.size(), 2U)
      << "the next request tries again";
}

}  // namespace
}  // namespace annivo
