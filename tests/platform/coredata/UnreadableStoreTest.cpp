// SPDX-License-Identifier: MIT
// Stores of which a part cannot be read, and stores that change while they are.
#include "tests/platform/coredata/ContactsStores.h"
#include "tests/support/OtherProgram.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

/// Ada, with one date, in a group that is in another.
struct UnreadableStore : testing::Test {
  ContactsStore store;
  void SetUp() override {
    StoredPerson ada;
    ada.uniqueId = "P1:ABPerson";
    ada.firstName = "Ada";
    ada.birthday = StoredDay{1815, 12, 10};
    ada.dates = {{"D1", "x", StoredDay{1835, 7, 8}}};
    store.write(StoreGeneration::current, {ada},
                {{"A:ABGroup", "Outer", {}, {1}}, {"B:ABGroup", "Inner", {0}, {}}});
  }
  [[nodiscard]] std::optional<Error> unreadRelationship() const {
    return store.coordinator->store()->unreadRelationship();
  }
};

/// Longer than a value that is read.
constexpr const char* kTooLong = "('x' || hex(zeroblob(9000000)))";

TEST_F(UnreadableStore, PeopleWhoseGroupsCannotBeReadAreInNone) {
  store.edit(std::string("UPDATE ZABCDRECORD SET ZNAME = ") + kTooLong + " WHERE ZNAME = 'Inner'");
  EXPECT_FALSE(store.tryFetch("ABCDGroup").ok());
  const auto people = store.fetch("ABCDContact");
  ASSERT_EQ(texts(people, "firstName"), Texts{"Ada"});
  EXPECT_TRUE(people[0]->toMany("parentGroups").empty());
  ASSERT_TRUE(unreadRelationship().has_value());
  EXPECT_NE(unreadRelationship()->text().find(store.path), std::string::npos);
  EXPECT_EQ(store.fetch("ABCDContactDate")[0]->toOne("owner"), people[0]);
}

TEST_F(UnreadableStore, ALinkBetweenPeopleAndGroupsThatCannotBeReadLeavesBoth) {
  store.edit(std::string("UPDATE Z_22PARENTGROUPS SET Z_19PARENTGROUPS1 = ") + kTooLong);
  EXPECT_EQ(texts(store.fetch("ABCDGroup"), "name"), (Texts{"Outer", "Inner"}));
  EXPECT_FALSE(unreadRelationship().has_value());
  EXPECT_EQ(texts(store.fetch("ABCDContact"), "firstName"), Texts{"Ada"});
  EXPECT_TRUE(unreadRelationship().has_value());
}

TEST_F(UnreadableStore, DatesWhoseOwnersCannotBeReadAreNotRead) {
  store.edit(std::string("UPDATE ZABCDRECORD SET ZNICKNAME = ") + kTooLong +
             " WHERE ZFIRSTNAME = 'Ada'");
  EXPECT_FALSE(store.tryFetch("ABCDContactDate").ok());
  EXPECT_FALSE(unreadRelationship().has_value());
  EXPECT_EQ(store.fetch("ABCDGroup").size(), 2U);
}

TEST_F(UnreadableStore, WhatAnotherProgramBeginsToWriteMeanwhileIsRead) {
  store.edit("PRAGMA journal_mode=WAL");
  EXPECT_EQ(store.fetch("ABCDGroup").size(), 2U);
  const OtherProgram other(store.path);
  other.run("UPDATE ZABCDRECORD SET ZFIRSTNAME = 'Augusta' WHERE ZFIRSTNAME = 'Ada'");
  EXPECT_EQ(texts(store.fetch("ABCDContact"), "firstName"), Texts{"Augusta"});
  other.run("PRAGMA wal_checkpoint(TRUNCATE)");
  other.run("UPDATE ZABCDCONTACTDATE SET ZLABEL = 'y'");
  EXPECT_EQ(texts(store.fetch("ABCDContactDate"), "label"), Texts{"y"});
}

TEST_F(UnreadableStore, AStoreOfAnotherFormPutInItsPlaceMeanwhileIsNotMixedWithIt) {
  store.edit("PRAGMA journal_mode=WAL");
  EXPECT_EQ(store.fetch("ABCDGroup").size(), 2U);
  store.folder.remove("AddressBook-v22.abcddb");
  PosixFileManager files;
  ASSERT_TRUE(AddressBookStoreWriter::write(files, store.path, StoreGeneration::olderA, {}, {},
                                            store.clock.now())
                  .ok());
  const auto people = store.tryFetch("ABCDContact");
  ASSERT_FALSE(people.ok());
  EXPECT_NE(people.error().text().find(store.path), std::string::npos);
}

}  // namespace
}  // namespace annivo
