// SPDX-License-Identifier: MIT
#include "contacts/ZPKQueryAddressBook.h"
#include "tests/contacts/AddressBookHome.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

TEST(ZPKQueryAddressBook, MergesTheMainStoreAndTheSourcesInTheOrderOfTheWalk) {
  AddressBookHome home;
  home.writeStore({born("second", {1980, 1, 1})}, {{"G2", "two", {0}, {}}}, sourceStore("A"),
                  StoreGeneration::olderA);
  home.writeStore({born("third", {1980, 1, 1}), dated("fourth", "x")}, {}, sourceStore("B"),
                  StoreGeneration::olderB);
  home.writeStore({born("first", {1980, 1, 1}), dated("zeroth", "y")}, {{"G1", "one", {0}, {}}});
  ZPKQueryAddressBook book(home.platform());
  ASSERT_EQ(book.addressBookStores().size(), 3U);
  EXPECT_EQ(book.addressBookStores()[0]->dbPath(), home.path(kMainStore));
  EXPECT_EQ(fieldOf(book.birthdayDates(), &ContactDateRecord::personUID),
            (Texts{"first:ABPerson", "second:ABPerson", "third:ABPerson"}));
  EXPECT_EQ(fieldOf(book.anniversaryDates(), &ContactDateRecord::dateUID),
            (Texts{"zeroth-date", "fourth-date"}));
  EXPECT_EQ(book.addressBookGroups(), (std::vector<GroupRecord>{{"one", "G1"}, {"two", "G2"}}));
  EXPECT_EQ(groupsOf(book.birthdayDates()[1]), Texts{"G2"});
}

TEST(ZPKQueryAddressBook, ThePersonOfTwoStoresIsThereTwice) {
  AddressBookHome home;
  home.writeStore({born("P", {1980, 1, 1})});
  home.writeStore({born("P", {1980, 1, 1})}, {}, sourceStore("A"));
  ZPKQueryAddressBook book(home.platform());
  EXPECT_EQ(book.birthdayDates().size(), 2U);
}

TEST(ZPKQueryAddressBook, GroupsOfOneStoreAreNotMatchedInAnother) {
  AddressBookHome home;
  home.writeStore({born("P", {1980, 1, 1})}, {{"G", "child", {0}, {}}, {"T", "top", {}, {0}}});
  home.writeStore({born("Q", {1980, 1, 1})}, {{"G", "child", {0}, {}}}, sourceStore("A"));
  ZPKQueryAddressBook book(home.platform());
  EXPECT_EQ(groupsOf(book.birthdayDates()[0]), (Texts{"G", "T"}));
  EXPECT_EQ(groupsOf(book.birthdayDates()[1]), Texts{"G"});
}

TEST(ZPKQueryAddressBook, LooksNotIntoMetadataAndImages) {
  AddressBookHome home;
  for (const char* folder : {"Metadata", "Images", "Sources/A/Metadata", "Sources/A/Images",
                             "OldMetadata", "Metadata/deeper"}) {
    home.writeStore({born("P", {1980, 1, 1})}, {},
                    kAddressBookFolder + "/" + folder + "/AddressBook-v22.abcddb");
  }
  ZPKQueryAddressBook book(home.platform());
  EXPECT_TRUE(book.addressBookStores().empty());
}

TEST(ZPKQueryAddressBook, TakesOnlyTheExactFileNameAtAnyDepth) {
  AddressBookHome home;
  const std::string deep = kAddressBookFolder + "/a/b/c/AddressBook-v22.abcddb";
  home.writeStore({born("P", {1980, 1, 1})}, {}, deep);
  for (const char* name : {"AddressBook-v22.abcddb-journal", "AddressBook-v23.abcddb",
                           "AddressBook.data", "addressbook-v22.abcddb", "X.abcddb"}) {
    home.writeFile(kAddressBookFolder + "/" + name, "no store");
  }
  home.writeFile(kAddressBookFolder + "/MyAddressBook-v22.abcddb", "no store");
  ZPKQueryAddressBook book(home.platform());
  ASSERT_EQ(book.addressBookStores().size(), 1U);
  EXPECT_EQ(book.addressBookStores()[0]->dbPath(), home.path(deep));
  EXPECT_TRUE(home.alerts.shown().empty());
}

TEST(ZPKQueryAddressBook, NoFolderAndNoStoreAreNoErrors) {
  AddressBookHome home;
  {
    ZPKQueryAddressBook book(home.platform());
    EXPECT_TRUE(book.birthdayDates().empty());
    EXPECT_TRUE(book.anniversaryDates().empty());
    EXPECT_TRUE(book.addressBookGroups().empty());
    EXPECT_TRUE(book.addressbookCustomDateLabels().empty());
  }
  home.folder().makeFolder(kAddressBookFolder);
  EXPECT_TRUE(ZPKQueryAddressBook(home.platform()).addressBookStores().empty());
  home.folder().remove("Library");
  home.writeFile(kAddressBookFolder, "a file in place of the folder");
  EXPECT_TRUE(ZPKQueryAddressBook(home.platform()).addressBookStores().empty());
  EXPECT_TRUE(home.alerts.shown().empty());
  EXPECT_TRUE(home.log.lines().empty());
}

TEST(ZPKQueryAddressBook, ABadStoreLeavesTheOthersTheirDates) {
  AddressBookHome home;
  home.writeStore({born("P", {1980, 1, 1})});
  home.writeFile(sourceStore("A"), std::string(8192, 'x'));
  home.writeFile(sourceStore("B"), "");
  home.writeStore({born("Q", {1980, 1, 1})}, {}, sourceStore("C"));
  ZPKQueryAddressBook book(home.platform());
  EXPECT_EQ(fieldOf(book.birthdayDates(), &ContactDateRecord::firstName), (Texts{"P", "Q"}));
  EXPECT_TRUE(book.anniversaryDates().empty());
  // Each bad store once, with its name, and once that nothing could be made of one.
  ASSERT_EQ(home.alerts.shown().size(), 3U);
  EXPECT_NE(home.alerts.shown()[0].messageText.find(home.path(sourceStore("A"))),
            std::string::npos);
  EXPECT_EQ(home.alerts.shown()[1].messageText, "Failed to initialize the store");
  EXPECT_NE(home.alerts.shown()[2].messageText.find(home.path(sourceStore("B"))),
            std::string::npos);
}

TEST(ZPKQueryAddressBook, ALabelOfTwoStoresIsListedOnce) {
  AddressBookHome home;
  home.writeStore({dated("P", "x"), dated("Q", "_$!<Anniversary>!$_")});
  home.writeStore({dated("P", "y"), dated("Q", "x")}, {}, sourceStore("A"));
  ZPKQueryAddressBook book(home.platform());
  const Texts expected{"x", "_$!<Anniversary>!$_", "y"};
  EXPECT_EQ(book.addressbookCustomDateLabels(), expected);
  EXPECT_EQ(book.addressbookCustomDateLabels(), expected);
}

TEST(ZPKQueryAddressBook, ListsAreMadeOnce) {
  AddressBookHome home;
  home.writeStore({born("P", {1980, 1, 1}), dated("Q", "x")}, {{"G", "g", {0}, {}}});
  ZPKQueryAddressBook book(home.platform());
  const auto* birthdays = &book.birthdayDates();
  const auto* anniversaries = &book.anniversaryDates();
  const auto* groups = &book.addressBookGroups();
  home.folder().remove(kMainStore);
  home.writeStore({}, {}, sourceStore("A"));
  const auto* birthday = birthdays->data();
  const auto* anniversary = anniversaries->data();
  const auto* group = groups->data();
  EXPECT_EQ(book.birthdayDates().data(), birthday);
  EXPECT_EQ(book.anniversaryDates().data(), anniversary);
  EXPECT_EQ(book.addressBookGroups().data(), group);
  EXPECT_EQ(birthdays->size(), 1U);
  EXPECT_EQ(anniversaries->size(), 1U);
  EXPECT_EQ(groups->size(), 1U);
  EXPECT_EQ(book.addressBookStores().size(), 1U);
}

TEST(ZPKQueryAddressBook, TheLabelsAreAskedForOnce) {
  AddressBookHome home;
  home.writeStore({dated("P", "x")});
  home.editStore("UPDATE ZABCDCONTACTDATE SET ZLABEL = hex(zeroblob(9000000))");
  ZPKQueryAddressBook book(home.platform());
  EXPECT_TRUE(book.addressbookCustomDateLabels().empty());
  ASSERT_EQ(home.log.count(home.path(kMainStore)), 1U);
  EXPECT_TRUE(book.addressbookCustomDateLabels().empty());
  EXPECT_EQ(home.log.count(home.path(kMainStore)), 1U) << "or the failed fetch were logged again";
}

TEST(ZPKQueryAddressBook, StopsWhereThereIsNoModel) {
  AddressBookHome home;
  home.useSystem("10.9");
  home.writeStore({born("P", {1980, 1, 1})});
  EXPECT_THROW(ZPKQueryAddressBook{home.platform()}, NSInternalInconsistencyException);
}

}  // namespace
}  // namespace annivo
