// SPDX-License-Identifier: MIT
#include "contacts/ZPKQueryAddressBookSection.h"
#include "tests/contacts/AddressBookHome.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

struct EveryStore : testing::TestWithParam<StoreGeneration> {
  AddressBookHome home;

  void write(const std::vector<StoredPerson>& people, const std::vector<StoredGroup>& groups = {}) {
    home.writeStore(people, groups, kMainStore, GetParam());
  }
  ZPKQueryAddressBookSection::Items items(const std::string& name) {
    return ZPKQueryAddressBookSection(home.platform(), home.path(kMainStore)).arrayForEntity(name);
  }
};

std::string nameOf(const testing::TestParamInfo<StoreGeneration>& generation) {
  constexpr const char* kNames[] = {"olderA", "olderB", "current"};
  return kNames[static_cast<int>(generation.param)];
}

INSTANTIATE_TEST_SUITE_P(Section, EveryStore,
                         testing::Values(StoreGeneration::olderA, StoreGeneration::olderB,
                                         StoreGeneration::current),
                         nameOf);

TEST_P(EveryStore, ABirthdayRecordHoldsThePersonsValues) {
  StoredPerson person = born("P", {1815, 12, 10});
  person.firstName = "Ada";
  person.middleName = "King";
  person.lastName = "Lovelace";
  person.nickname = "Countess";
  person.organization = "Engine";
  person.displayFlags = 0;
  write({person});
  const auto dates = items("ABCDContact").dates;
  ASSERT_EQ(dates.size(), 1U);
  const ContactDateRecord& record = dates[0];
  EXPECT_EQ(record.firstName, "Ada");
  EXPECT_EQ(record.middleName, "King");
  EXPECT_EQ(record.lastName, "Lovelace");
  EXPECT_EQ(record.nickName, "Countess");
  EXPECT_EQ(record.organization, "Engine");
  EXPECT_EQ(record.isOrganization, "0");
  EXPECT_EQ(record.dateType, "birthday") << "not capitalised";
  EXPECT_EQ(record.thisDate, utc(1815, 12, 10, 12));
  EXPECT_EQ(record.dateUID, "P:ABPerson");
  EXPECT_EQ(record.personUID, "P:ABPerson");
  EXPECT_TRUE(record.groups.empty());
}

TEST_P(EveryStore, EveryAbsentValueIsNull) {
  StoredPerson person;
  person.uniqueId = "P:ABPerson";
  person.displayFlags = std::nullopt;
  person.dates = {{"D", std::nullopt, std::nullopt}};
  write({person});
  home.editStore(
      "UPDATE ZABCDRECORD SET ZUNIQUEID = NULL; UPDATE ZABCDCONTACTDATE SET ZUNIQUEID = NULL");
  const auto dates = items("ABCDContactDate").dates;
  ASSERT_EQ(dates.size(), 1U);
  for (const char* key : {"first name", "middle name", "last name", "nick name", "organization",
                          "isOrganization", "date type", "date UID", "person UID"}) {
    EXPECT_EQ(dates[0].textForKey(key), "NULL") << key;
  }
  EXPECT_FALSE(dates[0].thisDate.has_value());
  EXPECT_TRUE(dates[0].groups.empty());
}

TEST_P(EveryStore, OnePersonYieldsOneBirthdayAndARecordForEachDate) {
  StoredPerson person = born("P", {1980, 1, 2});
  person.dates = {{"D1", "_$!<Anniversary>!$_", StoredDay{2001, 2, 3}},
                  {"D2", "Wedding", StoredDay{2002, 3, 4}}};
  write({person, dated("Q", "Moved")});
  EXPECT_EQ(fieldOf(items("ABCDContact").dates, &ContactDateRecord::dateUID), Texts{"P:ABPerson"})
      << "a person without a birthday yields no birthday";
  const auto dates = items("ABCDContactDate").dates;
  EXPECT_EQ(fieldOf(dates, &ContactDateRecord::dateUID), (Texts{"D1", "D2", "Q-date"}));
  EXPECT_EQ(fieldOf(dates, &ContactDateRecord::personUID),
            (Texts{"P:ABPerson", "P:ABPerson", "Q:ABPerson"}));
  EXPECT_EQ(dates[1].thisDate, utc(2002, 3, 4, 12));
}

TEST_P(EveryStore, OnlyTheAnniversaryCodeBecomesItsWord) {
  write({dated("A", "_$!<Anniversary>!$_"), dated("B", "_$!<Other>!$_"), dated("C", "anniversary"),
         dated("D", std::nullopt), dated("E", "")});
  EXPECT_EQ(fieldOf(items("ABCDContactDate").dates, &ContactDateRecord::dateType),
            (Texts{"Anniversary", "_$!<Other>!$_", "anniversary", "NULL", ""}));
}

TEST_P(EveryStore, LabelsAreDistinctAndRaw) {
  write({dated("A", "_$!<Anniversary>!$_"), dated("B", "x"), dated("C", "x"), dated("D", "X"),
         dated("E", std::nullopt), dated("F", "_$!<Anniversary>!$_")});
  EXPECT_EQ(items("ABCDContactDate_label").labels, (Texts{"_$!<Anniversary>!$_", "x", "X"}));
}

TEST_P(EveryStore, GroupsFollowEachOtherUpwards) {
  // C in B in A.
  write({born("P", {1980, 1, 1})}, {{"A", "a", {}, {1}}, {"B", "b", {}, {2}}, {"C", "c", {0}, {}}});
  EXPECT_EQ(groupsOf(items("ABCDContact").dates[0]), (Texts{"C", "B", "A"}));
}

TEST_P(EveryStore, ASharedParentIsListedTwice) {
  StoredPerson person = dated("P", "x");
  write({person}, {{"A", "a", {}, {1, 2}}, {"B", "b", {0}, {}}, {"C", "c", {0}, {}}});
  EXPECT_EQ(groupsOf(items("ABCDContactDate").dates[0]), (Texts{"B", "A", "C", "A"}));
}

TEST_P(EveryStore, AStoreWithoutGroupsGivesNone) {
  write({born("P", {1980, 1, 1}), dated("Q", "x")});
  EXPECT_TRUE(items("ABCDContact").dates[0].groups.empty());
  EXPECT_TRUE(items("ABCDContactDate").dates[0].groups.empty());
  EXPECT_TRUE(items("ABCDGroup").groups.empty());
}

TEST_P(EveryStore, GroupsAreListedInTheShortForm) {
  using Kind = StoredGroup::Kind;
  write({born("P", {1980, 1, 1})}, {{"B:ABGroup", "Zebra", {}, {}},
                                    {"A:ABGroup", "Ant", {}, {}, Kind::subscribed},
                                    {"S:ABGroup", "Clever", {}, {}, Kind::smart}});
  home.editStore("UPDATE ZABCDRECORD SET ZNAME = NULL WHERE ZUNIQUEID = 'A:ABGroup'");
  EXPECT_EQ(items("ABCDGroup").groups,
            (std::vector<GroupRecord>{{"Zebra", "B:ABGroup"}, {"NULL", "A:ABGroup"}}));
}

TEST_P(EveryStore, AnyOtherNameYieldsNothing) {
  write({born("P", {1980, 1, 1})}, {{"A", "a", {0}, {}}});
  for (const char* name : {"", "ABCDRecord", "ABCDEmailAddress", "abcdcontact", "x"}) {
    const auto found = items(name);
    EXPECT_TRUE(found.dates.empty() && found.groups.empty() && found.labels.empty()) << name;
  }
  EXPECT_TRUE(home.alerts.shown().empty());
}

TEST_P(EveryStore, TheCompanyRuleAppliesToTheFlagsOneAlone) {
  const struct {
    const char* name;
    std::optional<std::int64_t> flags;
    std::optional<std::string> organization;
    const char* first;
    const char* last;
  } rows[] = {{"company", 1, "Acme", "NULL", "Acme"},
              {"company without a name", 1, std::nullopt, "Jane", "Doe"},
              {"company of an empty name", 1, "", "NULL", ""},
              {"other bits too", 33, "Acme", "Jane", "Doe"},
              {"person", 0, "Acme", "Jane", "Doe"},
              {"no flags", std::nullopt, "Acme", "Jane", "Doe"}};
  std::vector<StoredPerson> people;
  for (const auto& row : rows) {
    StoredPerson person = born(row.name, {1980, 1, 1});
    person.firstName = "Jane";
    person.lastName = "Doe";
    person.middleName = "M";
    person.nickname = "N";
    person.organization = row.organization;
    person.displayFlags = row.flags;
    person.dates = {{"", "x", StoredDay{1990, 1, 1}}};
    people.push_back(person);
  }
  write(people);
  for (const char* entity : {"ABCDContact", "ABCDContactDate"}) {
    const auto dates = items(entity).dates;
    ASSERT_EQ(dates.size(), std::size(rows));
    for (std::size_t i = 0; i < dates.size(); ++i) {
      SCOPED_TRACE(rows[i].name);
      EXPECT_EQ(dates[i].firstName, rows[i].first);
      EXPECT_EQ(dates[i].lastName, rows[i].last);
      EXPECT_EQ(dates[i].middleName, "M");
      EXPECT_EQ(dates[i].nickName, "N");
      EXPECT_EQ(dates[i].organization, rows[i].organization.value_or("NULL"));
    }
  }
}

TEST_P(EveryStore, ADateWhoseOwnerIsGoneHasNoPerson) {
  write({dated("P", "x"), dated("Q", "y")}, {{"A", "a", {0, 1}, {}}});
  home.editStore("DELETE FROM ZABCDRECORD WHERE ZUNIQUEID = 'P:ABPerson'");
  const auto dates = items("ABCDContactDate").dates;
  ASSERT_EQ(dates.size(), 2U);
  EXPECT_EQ(dates[0].firstName, "NULL");
  EXPECT_EQ(dates[0].personUID, "NULL");
  EXPECT_TRUE(dates[0].groups.empty());
  EXPECT_EQ(dates[0].dateUID, "P-date");
  EXPECT_EQ(dates[0].dateType, "x");
  EXPECT_EQ(dates[1].personUID, "Q:ABPerson");
}

TEST_P(EveryStore, TextInADateColumnYieldsARecordWithoutADateAndALogLine) {
  write({dated("P", "x"), born("Q", {1980, 1, 1})});
  home.editStore(
      "UPDATE ZABCDCONTACTDATE SET ZDATE = 'soon'; UPDATE ZABCDRECORD SET ZBIRTHDAY = 'then' "
      "WHERE ZUNIQUEID = 'Q:ABPerson'");
  const auto dates = items("ABCDContactDate").dates;
  ASSERT_EQ(dates.size(), 1U);
  EXPECT_FALSE(dates[0].thisDate.has_value());
  EXPECT_TRUE(items("ABCDContact").dates.empty()) << "no birthday that can be read is none";
  EXPECT_GE(home.log.count(home.path(kMainStore) + ": 1 values of ZABCDCONTACTDATE.ZDATE"), 1U);
  EXPECT_EQ(home.log.count("soon"), 0U);
}

TEST_P(EveryStore, InvalidTextIsRepaired) {
  write({born("P", {1980, 1, 1})});
  home.editStore(
      "UPDATE ZABCDRECORD SET ZFIRSTNAME = CAST(x'C3' AS TEXT) WHERE ZUNIQUEID = 'P:ABPerson'");
  EXPECT_EQ(items("ABCDContact").dates[0].firstName, "\xEF\xBF\xBD");
}

TEST_P(EveryStore, AGroupMayBeItsOwnAncestor) {
  write({born("P", {1980, 1, 1})}, {{"A", "a", {0}, {0, 1}}, {"B", "b", {}, {0}}});
  EXPECT_EQ(groupsOf(items("ABCDContact").dates[0]), (Texts{"A", "B"}));
}

TEST_P(EveryStore, EachModelReadsIt) {
  write({born("P", {1980, 1, 1}), dated("Q", "x")}, {{"A", "a", {0}, {}}});
  for (const char* version : {"10.5.8", "10.6", "10.7.5"}) {
    SCOPED_TRACE(version);
    home.useSystem(version);
    home.endRun();
    EXPECT_EQ(items("ABCDContact").dates.size(), 1U);
    EXPECT_EQ(items("ABCDContactDate").dates.size(), 1U);
    EXPECT_EQ(groupsOf(items("ABCDContact").dates[0]), Texts{"A"});
  }
  EXPECT_TRUE(home.alerts.shown().empty());
}

TEST_P(EveryStore, NothingIsWritten) {
  write({born("P", {1980, 1, 1}), dated("Q", "x")}, {{"A", "a", {0}, {}}});
  const auto before = home.folder().fingerprint(kAddressBookFolder);
  (void)items("ABCDContact");
  (void)items("ABCDContactDate");
  EXPECT_EQ(home.folder().fingerprint(kAddressBookFolder), before);
}

TEST_P(EveryStore, ReadsAWalThatACrashLeft) {
  write({born("P", {1980, 1, 1})});
  EditDatabase(home.path(kMainStore))
      .run("PRAGMA journal_mode=WAL")
      .keepLog()
      .run("UPDATE ZABCDRECORD SET ZFIRSTNAME = 'New' WHERE ZUNIQUEID = 'P:ABPerson'");
  const auto before = home.snapshot(kAddressBookFolder);
  EXPECT_EQ(items("ABCDContact").dates[0].firstName, "New");
  EXPECT_EQ(home.snapshot(kAddressBookFolder), before);
}

struct ZPKQueryAddressBookSectionTest : testing::Test {
  AddressBookHome home;

  std::unique_ptr<ZPKQueryAddressBookSection> open() {
    return std::make_unique<ZPKQueryAddressBookSection>(home.platform(), home.path(kMainStore));
  }
  /// Both errors are shown, once each, and the queries yield nothing.
  void expectPresentedOnce(const std::string& part) {
    const auto section = open();
    EXPECT_TRUE(section->arrayForEntity("ABCDContactDate").dates.empty());
    EXPECT_TRUE(section->arrayForEntity("ABCDContact").dates.empty());
    ASSERT_EQ(home.alerts.shown().size(), 2U);
    const NSAlert& first = home.alerts.shown()[0];
    const std::string text = first.messageText + first.informativeText;
    EXPECT_NE(text.find(home.path(kMainStore)), std::string::npos) << text;
    EXPECT_NE(text.find(part), std::string::npos) << text;
    EXPECT_EQ(home.alerts.shown()[1].messageText, "Failed to initialize the store");
    EXPECT_EQ(home.alerts.shown()[1].informativeText,
              "There was an error building up the data file.");
    // Shown before, they are logged in full.
    EXPECT_GE(home.log.count("Error Domain=YOUR_ERROR_DOMAIN Code=9999 \"Failed to initialize the "
                             "store\" (There was an error building up the data file.)"),
              1U);
  }
};

TEST_F(ZPKQueryAddressBookSectionTest, AFileThatIsNoDatabaseIsPresentedOnce) {
  home.writeFile(kMainStore, std::string(8192, 'x'));
  const auto before = home.folder().fingerprint(kAddressBookFolder);
  expectPresentedOnce("not a database");
  EXPECT_EQ(home.folder().fingerprint(kAddressBookFolder), before);
}

TEST_F(ZPKQueryAddressBookSectionTest, ATruncatedFileIsPresentedOnce) {
  home.writeStore({born("P", {1980, 1, 1})});
  const std::string whole = home.readFile(kMainStore);
  home.writeFile(kMainStore, whole.substr(0, whole.size() / 2));
  expectPresentedOnce("malformed");
}

TEST_F(ZPKQueryAddressBookSectionTest, AFolderInPlaceOfTheFileIsPresentedOnce) {
  home.folder().makeFolder(kMainStore);
  expectPresentedOnce("");
}

TEST_F(ZPKQueryAddressBookSectionTest, ASchemaWithoutRecordsIsPresentedOnce) {
  home.writeStore({born("P", {1980, 1, 1})});
  home.editStore("DROP TABLE ZABCDRECORD");
  expectPresentedOnce("ZABCDRECORD");
}

TEST_F(ZPKQueryAddressBookSectionTest, AStoreLockedForLongIsPresentedAndTriedAgain) {
  home.writeStore({born("P", {1980, 1, 1})}, {{"A", "a", {0}, {}}});
  std::unique_ptr<ZPKQueryAddressBookSection> section;
  {
    EditDatabase writer(home.path(kMainStore));
    writer.run("BEGIN EXCLUSIVE");
    section = open();
    writer.run("COMMIT");
  }
  ASSERT_EQ(home.alerts.shown().size(), 2U);
  EXPECT_NE(home.alerts.shown()[0].messageText.find("locked"), std::string::npos);
  const auto dates = section->arrayForEntity("ABCDContact").dates;
  ASSERT_EQ(dates.size(), 1U);
  EXPECT_EQ(groupsOf(dates[0]), Texts{"A"}) << "with the groups that could not be read at first";
}

TEST_F(ZPKQueryAddressBookSectionTest, AFetchThatFailsIsLoggedAndYieldsNothing) {
  home.writeStore({dated("P", "a label to be found")});
  std::string bytes = home.readFile(kMainStore);
  const std::size_t page = bytes.find("a label to be found") / 4096 * 4096;
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(page), 4096, '\x5A');
  home.writeFile(kMainStore, bytes);
  const auto section = open();
  EXPECT_TRUE(section->arrayForEntity("ABCDContactDate").dates.empty());
  EXPECT_GE(home.log.count(home.path(kMainStore)), 1U) << "whatever the logging switch says";
  EXPECT_TRUE(home.alerts.shown().empty());
}

TEST_F(ZPKQueryAddressBookSectionTest, WithoutAModelTheFailureIsReportedAndThrown) {
  home.writeStore({born("P", {1980, 1, 1})});
  for (const char* version : {"10.8", "10.4.11", "10.15.7", "11.0"}) {
    SCOPED_TRACE(version);
    home.useSystem(version);
    home.endRun();
    home.alerts.clear();
    home.log.clear();
    try {
      (void)open();
      FAIL() << "no exception";
    } catch (const NSInternalInconsistencyException& exception) {
      EXPECT_EQ(exception.reason, "Managed object model is nil");
    }
    EXPECT_EQ(home.log.count("Managed object model is nil"), 1U);
    EXPECT_EQ(home.log.count("ZPKQueryAddressBookSection:persistentStoreCoordinator No model to "
                             "generate a store from"),
              1U);
    ASSERT_EQ(home.alerts.shown().size(), 1U);
    EXPECT_EQ(home.alerts.shown()[0].messageText, "Failed to initialize the store");
    EXPECT_EQ(home.alerts.shown()[0].informativeText,
              "There was an error building up the data file.");
  }
}

TEST_F(ZPKQueryAddressBookSectionTest, AModelThatIsMalformedIsNone) {
  home.writeStore({born("P", {1980, 1, 1})});
  home.useSystem("10.7");
  const std::string frameworks =
      home.productPath() + "/Contents/SharedSupport/System/Library/Frameworks";
  const std::string resources = frameworks + "/AddressBook.framework/Versions/A/Resources";
  std::filesystem::remove(frameworks);
  std::filesystem::create_directories(resources);
  std::ofstream(resources + "/ABAddressBook.momd") << "no model";
  EXPECT_THROW((void)open(), NSInternalInconsistencyException);
  EXPECT_GE(home.log.count("ABAddressBook.momd"), 1U);
}

TEST_F(ZPKQueryAddressBookSectionTest, KeepsItsPathAndItsGroups) {
  home.writeStore({born("P", {1980, 1, 1})}, {{"A", "a", {0}, {}}, {"B", "b", {}, {0}}});
  const auto section = open();
  EXPECT_EQ(section->dbPath(), home.path(kMainStore));
  ASSERT_EQ(section->abGroups().size(), 2U);
  EXPECT_EQ(section->abGroups()[0].name, "a");
  ASSERT_EQ(section->abGroups()[0].parentGroups.size(), 1U);
  Texts container{"before"};
  section->parentsForGroupsWithResultContainer(section->abGroups()[0].parentGroups, container);
  EXPECT_EQ(container, (Texts{"before", "B"}));
  section->parentsForGroupsWithResultContainer({}, container);
  EXPECT_EQ(container, (Texts{"before", "B"}));
}

TEST_F(ZPKQueryAddressBookSectionTest, CompanyRecordsAreCopies) {
  const ContactDateRecord jane{.firstName = "Jane", .lastName = "Doe", .organization = "Acme"};
  const ContactDateRecord company = ZPKQueryAddressBookSection::filterIfCompany(jane);
  EXPECT_EQ(company.firstName, "NULL");
  EXPECT_EQ(company.lastName, "Acme");
  EXPECT_EQ(company.organization, "Acme");
  EXPECT_EQ(jane.firstName, "Jane");
}

}  // namespace
}  // namespace annivo
