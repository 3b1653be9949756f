// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteStore.h"
#include "tests/platform/coredata/ContactsStores.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

std::vector<StoredPerson> threePeople() {
  StoredPerson ada;
  ada.uniqueId = "P1:ABPerson";
  ada.firstName = "Ada";
  ada.lastName = "Lovelace";
  ada.displayFlags = 33;
  ada.birthday = StoredDay{1815, 12, 10};
  ada.dates = {{"D1", "_$!<Anniversary>!$_", StoredDay{1835, 7, 8}}, {"D2", {}, {}}};
  StoredPerson grace;
  grace.uniqueId = "P2:ABPerson";
  grace.firstName = "Grace";
  grace.displayFlags = std::nullopt;
  StoredPerson linus;
  linus.uniqueId = "P3:ABPerson";
  linus.nickname = "Linus";
  linus.organization = "Kernel";
  linus.displayFlags = 1;
  linus.birthday = StoredDay{1604, 2, 29};
  linus.dates = {{"D3", "Wedding", StoredDay{1997, 1, 1}}};
  linus.isSubscribed = true;
  return {ada, grace, linus};
}

/// C in B in A; a subscribed group and a smart group beside them.
std::vector<StoredGroup> fiveGroups() {
  using Kind = StoredGroup::Kind;
  return {{"A:ABGroup", "Outer", {1}, {1}},
          {"B:ABGroup", "Middle", {}, {2}},
          {"C:ABGroup", "Inner", {0, 2}, {}},
          {"S:ABGroup", "Shared", {0}, {}, Kind::subscribed},
          {"Q:ABGroup", "Clever", {}, {}, Kind::smart}};
}

Texts groupsOf(const NSManagedObject& object) {
  Texts result;
  for (const auto* group : object.toMany("parentGroups")) {
    result.push_back(group->valueForKey("name").stringOr("-"));
  }
  return result;
}

struct EveryGeneration : testing::TestWithParam<StoreGeneration> {
  ContactsStore store;
  void SetUp() override { store.write(GetParam(), threePeople(), fiveGroups()); }
};

INSTANTIATE_TEST_SUITE_P(SQLiteStore, EveryGeneration,
                         testing::Values(StoreGeneration::olderA, StoreGeneration::olderB,
                                         StoreGeneration::current),
                         [](const auto& generation) {
                           switch (generation.param) {
                             case StoreGeneration::olderA:
                               return "olderA";
                             case StoreGeneration::olderB:
                               return "olderB";
                             case StoreGeneration::current:
                               break;
                           }
                           return "current";
                         });

TEST_P(EveryGeneration, ReadsPeopleInTheOrderOfTheirKeys) {
  const auto people = store.fetch("ABCDContact");
  ASSERT_EQ(people.size(), 3U);
  EXPECT_EQ(texts(people, "firstName"), (Texts{"Ada", "Grace", "-"}));
  EXPECT_EQ(texts(people, "lastName"), (Texts{"Lovelace", "-", "-"}));
  EXPECT_EQ(texts(people, "nickname"), (Texts{"-", "-", "Linus"}));
  EXPECT_EQ(texts(people, "organization"), (Texts{"-", "-", "Kernel"}));
  EXPECT_EQ(texts(people, "uniqueId"), (Texts{"P1:ABPerson", "P2:ABPerson", "P3:ABPerson"}));
  EXPECT_EQ(people[0]->valueForKey("displayFlags"), PropertyList(33));
  EXPECT_TRUE(people[1]->valueForKey("displayFlags").isNil());
  EXPECT_EQ(people[0]->valueForKey("birthday"), PropertyList(utc(1815, 12, 10, 12)));
  EXPECT_TRUE(people[1]->valueForKey("birthday").isNil());
  EXPECT_EQ(people[2]->valueForKey("birthday"), PropertyList(utc(1604, 2, 29, 12)));
}

TEST_P(EveryGeneration, ASubscribedContactIsAContact) {
  const auto subscribed = store.fetch("ABCDSubscribedContact");
  ASSERT_EQ(texts(subscribed, "uniqueId"), (Texts{"P3:ABPerson"}));
  EXPECT_EQ(store.fetch("ABCDContact")[2], subscribed[0]) << "one object, however it is reached";
  EXPECT_EQ(subscribed[0]->entity().name, "ABCDSubscribedContact");
}

TEST_P(EveryGeneration, ASubscribedGroupIsAGroupAndASmartGroupIsNone) {
  EXPECT_EQ(texts(store.fetch("ABCDGroup"), "name"), (Texts{"Outer", "Middle", "Inner", "Shared"}));
  EXPECT_EQ(texts(store.fetch("ABCDAbstractGroup"), "name"),
            (Texts{"Outer", "Middle", "Inner", "Shared", "Clever"}));
}

TEST_P(EveryGeneration, FollowsDatesToTheirOwners) {
  const auto dates = store.fetch("ABCDContactDate");
  ASSERT_EQ(texts(dates, "uniqueId"), (Texts{"D1", "D2", "D3"}));
  EXPECT_EQ(texts(dates, "label"), (Texts{"_$!<Anniversary>!$_", "-", "Wedding"}));
  EXPECT_EQ(dates[0]->valueForKey("date"), PropertyList(utc(1835, 7, 8, 12)));
  EXPECT_TRUE(dates[1]->valueForKey("date").isNil());
  const auto people = store.fetch("ABCDContact");
  EXPECT_EQ(dates[0]->toOne("owner"), people[0]);
  EXPECT_EQ(dates[1]->toOne("owner"), people[0]);
  EXPECT_EQ(dates[2]->toOne("owner"), people[2]);
}

TEST_P(EveryGeneration, FollowsPeopleAndGroupsToTheirGroups) {
  const auto people = store.fetch("ABCDContact");
  EXPECT_EQ(groupsOf(*people[0]), (Texts{"Inner", "Shared"}));
  EXPECT_EQ(groupsOf(*people[1]), (Texts{"Outer"}));
  EXPECT_EQ(groupsOf(*people[2]), (Texts{"Inner"}));
  const auto groups = store.fetch("ABCDGroup");
  EXPECT_EQ(groupsOf(*groups[0]), Texts{});
  EXPECT_EQ(groupsOf(*groups[1]), (Texts{"Outer"}));
  EXPECT_EQ(groupsOf(*groups[2]), (Texts{"Middle"}));
}

TEST_P(EveryGeneration, EachModelReadsItsStore) {
  for (const char* name : {"ABAddressBook.abz", "ABAddressBook.abmom", "ABAddressBook.momd"}) {
    SCOPED_TRACE(name);
    store.modelName = name;
    const auto opened = store.open();
    ASSERT_TRUE(opened.ok()) << opened.error().text();
    EXPECT_EQ(store.fetch("ABCDContact").size(), 3U);
    EXPECT_EQ(store.fetch("ABCDContactDate").size(), 3U);
    EXPECT_EQ(store.fetch("ABCDGroup").size(), 4U);
    EXPECT_EQ(groupsOf(*store.fetch("ABCDContact")[0]), (Texts{"Inner", "Shared"}));
  }
}

TEST_P(EveryGeneration, APredicateRestrictsAFetch) {
  static const auto format = NSPredicateFormat::parse("((birthday != nil))");
  EXPECT_EQ(texts(store.fetch("ABCDContact", format.with({})), "uniqueId"),
            (Texts{"P1:ABPerson", "P3:ABPerson"}));
  static const auto after = NSPredicateFormat::parse("(date > %@)");
  EXPECT_EQ(texts(store.fetch("ABCDContactDate", after.with({utc(1900, 1, 1)})), "uniqueId"),
            (Texts{"D3"}));
}

TEST_P(EveryGeneration, AnOwnerThatIsGoneIsNil) {
  store.edit("DELETE FROM ZABCDRECORD WHERE ZUNIQUEID = 'P1:ABPerson'");
  const auto dates = store.fetch("ABCDContactDate");
  ASSERT_EQ(dates.size(), 3U);
  EXPECT_EQ(dates[0]->toOne("owner"), nullptr);
  EXPECT_NE(dates[2]->toOne("owner"), nullptr);
}

TEST_P(EveryGeneration, AnOwnerOfAnotherKindIsNil) {
  store.edit(
      "UPDATE ZABCDCONTACTDATE SET ZOWNER = "
      "(SELECT Z_PK FROM ZABCDRECORD WHERE ZUNIQUEID = 'A:ABGroup')");
  for (const auto* date : store.fetch("ABCDContactDate")) EXPECT_EQ(date->toOne("owner"), nullptr);
}

TEST_P(EveryGeneration, NothingIsWritten) {
  const auto before = store.folder.fingerprint();
  store.fetch("ABCDContactDate");
  store.fetch("ABCDGroup");
  store.coordinator.reset();
  EXPECT_EQ(store.folder.fingerprint(), before);
}

TEST_P(EveryGeneration, EntityNumbersAreLookedUp) {
  // The same content under numbers that no generation has.
  store.edit(
      "UPDATE Z_PRIMARYKEY SET Z_ENT = Z_ENT + 100;"
      "UPDATE Z_PRIMARYKEY SET Z_SUPER = Z_SUPER + 100 WHERE Z_SUPER <> 0;"
      "UPDATE ZABCDRECORD SET Z_ENT = Z_ENT + 100;"
      "UPDATE ZABCDCONTACTDATE SET Z_ENT = Z_ENT + 100");
  EXPECT_EQ(store.fetch("ABCDContact").size(), 3U);
  EXPECT_EQ(store.fetch("ABCDGroup").size(), 4U);
  EXPECT_EQ(store.fetch("ABCDContactDate").size(), 3U);
}

struct SQLiteStoreTest : testing::Test {
  ContactsStore store;
  void SetUp() override { store.write(StoreGeneration::current, threePeople(), fiveGroups()); }

  void expectMalformed(const std::string& part) {
    const auto opened = store.open();
    ASSERT_FALSE(opened.ok());
    EXPECT_EQ(opened.error().kind, Error::Kind::malformed);
    EXPECT_NE(opened.error().text().find(store.path), std::string::npos) << opened.error().text();
    EXPECT_NE(opened.error().text().find(part), std::string::npos) << opened.error().text();
    EXPECT_EQ(store.coordinator->store(), nullptr);
  }
};

TEST_F(SQLiteStoreTest, AColumnThatTheFileLacksReadsAsNil) {
  store.edit("ALTER TABLE ZABCDRECORD DROP COLUMN ZNICKNAME");
  store.edit("DROP INDEX ZABCDCONTACTDATE_ZOWNER_INDEX");
  store.edit("ALTER TABLE ZABCDCONTACTDATE DROP COLUMN ZOWNER");
  const auto people = store.fetch("ABCDContact");
  EXPECT_EQ(texts(people, "nickname"), (Texts{"-", "-", "-"}));
  EXPECT_EQ(texts(people, "firstName"), (Texts{"Ada", "Grace", "-"}));
  EXPECT_EQ(store.fetch("ABCDContactDate")[0]->toOne("owner"), nullptr);
}

TEST_F(SQLiteStoreTest, AnEntityThatTheFileLacksHasNoObjects) {
  store.edit("DELETE FROM Z_PRIMARYKEY WHERE Z_NAME = 'ABCDContactDate'");
  EXPECT_TRUE(store.fetch("ABCDContactDate").empty());
  EXPECT_EQ(store.fetch("ABCDContact").size(), 3U);
}

TEST_F(SQLiteStoreTest, AJoinTableThatTheFileLacksJoinsNothing) {
  store.edit("DROP TABLE Z_22PARENTGROUPS; DROP TABLE Z_18PARENTGROUPS");
  EXPECT_EQ(groupsOf(*store.fetch("ABCDContact")[0]), Texts{});
  EXPECT_EQ(groupsOf(*store.fetch("ABCDGroup")[1]), Texts{});
}

TEST_F(SQLiteStoreTest, AnEntityOutsideTheModelIsAbsent) {
  const auto fetched = store.tryFetch("ABCDColour");
  ASSERT_FALSE(fetched.ok());
  EXPECT_NE(fetched.error().text().find("ABCDColour"), std::string::npos);
}

TEST_F(SQLiteStoreTest, TextInADateColumnIsNilAndNoted) {
  store.edit(
      "UPDATE ZABCDRECORD SET ZBIRTHDAY = 'tomorrow' WHERE ZUNIQUEID = 'P1:ABPerson';"
      "UPDATE ZABCDCONTACTDATE SET ZDATE = x'00' WHERE ZUNIQUEID = 'D1';"
      "UPDATE ZABCDCONTACTDATE SET ZDATE = 9e99 WHERE ZUNIQUEID = 'D3'");
  const auto dates = store.fetch("ABCDContactDate");
  EXPECT_TRUE(dates[0]->valueForKey("date").isNil());
  EXPECT_TRUE(dates[2]->valueForKey("date").isNil());
  EXPECT_TRUE(store.fetch("ABCDContact")[0]->valueForKey("birthday").isNil());
  const auto notes = store.coordinator->store()->notes();
  ASSERT_EQ(notes.size(), 2U);
  EXPECT_NE(notes[0].find("2 values of ZABCDCONTACTDATE.ZDATE"), std::string::npos) << notes[0];
  EXPECT_NE(notes[1].find("1 values of ZABCDRECORD.ZBIRTHDAY"), std::string::npos) << notes[1];
}

TEST_F(SQLiteStoreTest, DatesAreNumbersWholeOrNot) {
  store.edit(
      "UPDATE ZABCDCONTACTDATE SET ZDATE = -0.5 WHERE ZUNIQUEID = 'D1';"
      "UPDATE ZABCDCONTACTDATE SET ZDATE = 86400 WHERE ZUNIQUEID = 'D2'");
  const auto dates = store.fetch("ABCDContactDate");
  EXPECT_EQ(dates[0]->valueForKey("date"),
            PropertyList(utc(2000, 12, 31, 23, 59, 59) + std::chrono::milliseconds{500}));
  EXPECT_EQ(dates[1]->valueForKey("date"), PropertyList(utc(2001, 1, 2)));
  EXPECT_TRUE(store.coordinator->store()->notes().empty());
}

TEST_F(SQLiteStoreTest, DaysAreNoonInZonesFarEast) {
  store.zone = "Pacific/Kiritimati";
  const NSTimeZone zone(store.zone);
  const auto people = store.fetch("ABCDContact");
  // In 1604 that island lay behind Greenwich: the stored instant is on the same day there.
  EXPECT_EQ(people[2]->valueForKey("birthday"), PropertyList(utc(1604, 2, 29, 12)));
  const CivilTime wedding =
      zone.civil(*store.fetch("ABCDContactDate")[2]->valueForKey("date").date());
  EXPECT_TRUE(wedding == (CivilTime{.year = 1997, .month = 1, .day = 1, .hour = 12}));
}

TEST_F(SQLiteStoreTest, InvalidTextIsRepaired) {
  store.edit(
      "UPDATE ZABCDRECORD SET ZFIRSTNAME = CAST(x'41FF42' AS TEXT), ZLASTNAME = x'4142', "
      "ZNICKNAME = CAST(x'610062' AS TEXT) WHERE ZUNIQUEID = 'P1:ABPerson'");
  const auto people = store.fetch("ABCDContact");
  EXPECT_EQ(people[0]->valueForKey("firstName"), PropertyList("A\xEF\xBF\xBD"
                                                              "B"));
  EXPECT_TRUE(people[0]->valueForKey("lastName").isNil()) << "data is no text";
  EXPECT_EQ(people[0]->valueForKey("nickname"), PropertyList(std::string("a\0b", 3)));
}

TEST_F(SQLiteStoreTest, AnEmptyTextIsNotNil) {
  store.edit("UPDATE ZABCDRECORD SET ZFIRSTNAME = '' WHERE ZUNIQUEID = 'P1:ABPerson'");
  EXPECT_EQ(store.fetch("ABCDContact")[0]->valueForKey("firstName"), PropertyList(""));
}

TEST_F(SQLiteStoreTest, GroupsMayFormACircle) {
  store.edit(
      "INSERT INTO Z_18PARENTGROUPS SELECT a.Z_PK, c.Z_PK FROM ZABCDRECORD a, ZABCDRECORD c "
      "WHERE a.ZNAME = 'Outer' AND c.ZNAME IN ('Inner', 'Outer')");
  const auto groups = store.fetch("ABCDGroup");
  EXPECT_EQ(groupsOf(*groups[0]), (Texts{"Outer", "Inner"}));
}

TEST_F(SQLiteStoreTest, EntitiesMayFormACircle) {
  store.edit(
      "UPDATE Z_PRIMARYKEY SET Z_SUPER = "
      "(SELECT Z_ENT FROM Z_PRIMARYKEY WHERE Z_NAME = 'ABCDSubscribedGroup') "
      "WHERE Z_NAME = 'ABCDRecord'");
  EXPECT_EQ(store.fetch("ABCDContact").size(), 3U);
  EXPECT_EQ(store.fetch("ABCDGroup").size(), 4U);
}

TEST_F(SQLiteStoreTest, RowsOfUnknownEntitiesAreLeftOut) {
  store.edit("UPDATE ZABCDRECORD SET Z_ENT = 999 WHERE ZUNIQUEID = 'P1:ABPerson'");
  EXPECT_EQ(texts(store.fetch("ABCDContact"), "uniqueId"), (Texts{"P2:ABPerson", "P3:ABPerson"}));
}

TEST_F(SQLiteStoreTest, AFileThatIsNoDatabaseIsMalformed) {
  store.folder.writeFile("AddressBook-v22.abcddb", std::string(8192, 'x'));
  expectMalformed("not a database");
}

TEST_F(SQLiteStoreTest, AnEmptyFileIsMalformed) {
  store.folder.writeFile("AddressBook-v22.abcddb", "");
  expectMalformed("Z_PRIMARYKEY");
}

TEST_F(SQLiteStoreTest, ATruncatedFileIsMalformedAtEveryLength) {
  const std::string whole = store.folder.readFile("AddressBook-v22.abcddb");
  for (std::size_t length = 1; length < whole.size(); length += 997) {
    store.folder.writeFile("AddressBook-v22.abcddb", whole.substr(0, length));
    const auto opened = store.open();
    ASSERT_FALSE(opened.ok()) << length;
    EXPECT_EQ(opened.error().kind, Error::Kind::malformed) << opened.error().text();
    EXPECT_NE(opened.error().text().find(store.path), std::string::npos);
  }
}

TEST_F(SQLiteStoreTest, ADamagedPageFailsTheFetchAndLeavesTheRestReadable) {
  std::string bytes = store.folder.readFile("AddressBook-v22.abcddb");
  const std::size_t at = bytes.find("_$!<Anniversary>!$_");
  ASSERT_NE(at, std::string::npos);
  const std::size_t page = at / 4096 * 4096;
  for (std::size_t i = page; i < page + 4096; ++i) bytes[i] = '\x5A';
  store.folder.writeFile("AddressBook-v22.abcddb", bytes);
  const auto dates = store.tryFetch("ABCDContactDate");
  ASSERT_FALSE(dates.ok());
  EXPECT_NE(dates.error().text().find(store.path), std::string::npos);
  EXPECT_EQ(store.fetch("ABCDContact").size(), 3U);
  EXPECT_FALSE(store.tryFetch("ABCDContactDate").ok()) << "again, not an empty list";
}

TEST_F(SQLiteStoreTest, ASchemaWithoutItsTablesIsMalformed) {
  const struct {
    const char* sql;
    const char* part;
  } rows[] = {{"DROP TABLE ZABCDRECORD", "ZABCDRECORD"},
              {"DROP TABLE ZABCDCONTACTDATE", "ZABCDCONTACTDATE"},
              {"DELETE FROM Z_PRIMARYKEY; DROP TABLE ZABCDRECORD", "ZABCDRECORD"},
              {"DROP TABLE Z_PRIMARYKEY", "Z_PRIMARYKEY"},
              {"ALTER TABLE Z_PRIMARYKEY RENAME COLUMN Z_NAME TO Z_OTHER", "Z_NAME"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.sql);
    store.write(StoreGeneration::current, threePeople());
    store.edit(row.sql);
    expectMalformed(row.part);
  }
}

TEST_F(SQLiteStoreTest, AViewInPlaceOfATableIsNotRun) {
  store.edit(
      "DROP TABLE ZABCDCONTACTDATE;"
      "CREATE VIEW ZABCDCONTACTDATE AS WITH RECURSIVE t(n) AS (SELECT 1 UNION ALL SELECT n + 1 "
      "FROM t) SELECT n AS Z_PK, 4 AS Z_ENT FROM t");
  expectMalformed("ZABCDCONTACTDATE");
}

TEST_F(SQLiteStoreTest, ALockedStoreIsNamed) {
  EditDatabase writer(store.path);
  writer.run("BEGIN EXCLUSIVE");
  const auto opened = store.open();
  ASSERT_FALSE(opened.ok());
  EXPECT_NE(opened.error().text().find(store.path), std::string::npos);
  EXPECT_NE(opened.error().text().find("locked"), std::string::npos);
}

TEST_F(SQLiteStoreTest, AFetchIsOnePictureOfAStoreThatAnotherProgramWrites) {
  store.edit("PRAGMA journal_mode=WAL");
  EditDatabase writer(store.path);
  writer.run("UPDATE ZABCDRECORD SET ZFIRSTNAME = 'Augusta' WHERE ZUNIQUEID = 'P1:ABPerson'");
  EXPECT_EQ(texts(store.fetch("ABCDContact"), "firstName"), (Texts{"Augusta", "Grace", "-"}));
  writer.run("UPDATE ZABCDRECORD SET ZFIRSTNAME = 'Ada'");
  EXPECT_EQ(texts(store.fetch("ABCDContact"), "firstName"), (Texts{"Augusta", "Grace", "-"}))
      << "objects are read once";
}

TEST_F(SQLiteStoreTest, TakesNothingIn) {
  ASSERT_TRUE(store.open().ok());
  NSManagedObjectContext context;
  context.setPersistentStoreCoordinator(store.coordinator.get());
  EXPECT_FALSE(context.hasChanges());
  EXPECT_TRUE(context.save().ok());
  NSManagedObject& object = context.insertNewObjectForEntityForName("ABCDContact");
  context.setValueForKey(object, "x", "firstName");
  EXPECT_TRUE(context.hasChanges());
  EXPECT_FALSE(context.save().ok());
}

}  // namespace
}  // namespace annivo
