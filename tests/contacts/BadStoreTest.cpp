// SPDX-License-Identifier: MIT
// A store that cannot be used, or holds what it should not, among stores that are sound.
#include <algorithm>

#include "contacts/ZPKQueryAddressBook.h"
#include "tests/contacts/AddressBookHome.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

/// Three stores, one of which is to be spoilt, and what is asked of them.
class ThreeStores {
 public:
  AddressBookHome home;
  const Texts stores{kMainStore, sourceStore("A"), sourceStore("B")};

  /// In each store a person of its name with a birthday and a date, in a group.
  void write(StoreGeneration generation) {
    for (const std::string& store : stores) {
      StoredPerson person = dated(nameOf(store), "label of " + nameOf(store));
      person.birthday = StoredDay{1980, 1, 1};
      home.writeStore({person}, {{nameOf(store) + ":ABGroup", nameOf(store), {0}, {}}}, store,
                      generation);
    }
  }
  static std::string nameOf(const std::string& store) {
    return store == kMainStore ? "main" : store == sourceStore("A") ? "A" : "B";
  }
  /// The names of all stores but one.
  [[nodiscard]] Texts namesWithout(const std::string& store) const {
    Texts names;
    for (const std::string& other : stores) {
      if (other != store) names.push_back(nameOf(other));
    }
    return names;
  }

  /// Asks everything, twice; the stores stay as they are.
  void readAll() {
    const auto before = home.folder().fingerprint(kAddressBookFolder);
    ZPKQueryAddressBook book(home.platform());
    birthdays = book.birthdayDates();
    dates = book.anniversaryDates();
    groups = book.addressBookGroups();
    labels = book.addressbookCustomDateLabels();
    for (const char* name : {"ABCDContact", "ABCDContactDate", "ABCDGroup"}) {
      (void)book.arrayForEntity(name);
    }
    EXPECT_EQ(home.folder().fingerprint(kAddressBookFolder), before) << "something was written";
  }
  /// Everything of the sound stores is there and nothing else.
  void expectOnlyTheOthersOf(const std::string& store) const {
    const Texts names = namesWithout(store);
    Texts groupNames;
    for (const GroupRecord& group : groups) groupNames.push_back(group.name);
    EXPECT_EQ(fieldOf(birthdays, &ContactDateRecord::firstName), names);
    EXPECT_EQ(fieldOf(dates, &ContactDateRecord::firstName), names);
    EXPECT_EQ(groupNames, names);
    EXPECT_EQ(labels.size(), names.size());
  }
  /// One alert names the file and says what is wrong with it; one says that there is no store.
  void expectPresentedOnce(const std::string& store, const std::string& part) const {
    ASSERT_EQ(home.alerts.shown().size(), 2U);
    const NSAlert& alert = home.alerts.shown()[0];
    const std::string text = alert.messageText + alert.informativeText;
    EXPECT_NE(text.find(home.path(store)), std::string::npos) << text;
    EXPECT_NE(text.find(part), std::string::npos) << text;
    EXPECT_EQ(home.alerts.shown()[1].messageText, "Failed to initialize the store");
  }

  std::vector<ContactDateRecord> birthdays;
  std::vector<ContactDateRecord> dates;
  std::vector<GroupRecord> groups;
  Texts labels;
};

constexpr StoreGeneration kGenerations[] = {StoreGeneration::olderA, StoreGeneration::olderB,
                                            StoreGeneration::current};

struct Unusable {
  const char* name;
  void (*spoil)(AddressBookHome& home, const std::string& store);
  const char* part;  ///< of what the person is told
};

class UnusableStore : public testing::TestWithParam<Unusable> {};

TEST_P(UnusableStore, IsPresentedOnceAndTheOthersCount) {
  for (const StoreGeneration generation : kGenerations) {
    for (const char* spoilt : {"main", "A", "B"}) {
      SCOPED_TRACE(std::string(spoilt) + " of generation " +
                   std::to_string(static_cast<int>(generation)));
      ThreeStores book;
      book.write(generation);
      const std::string& store =
          *std::find_if(book.stores.begin(), book.stores.end(),
                        [&](const auto& path) { return ThreeStores::nameOf(path) == spoilt; });
      GetParam().spoil(book.home, store);
      book.readAll();
      book.expectOnlyTheOthersOf(store);
      book.expectPresentedOnce(store, GetParam().part);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Stores, UnusableStore,
    testing::Values(Unusable{"NoDatabase",
                             [](AddressBookHome& home, const std::string& store) {
                               home.writeFile(store, std::string(8192, 'x'));
                             },
                             "not a database"},
                    Unusable{"Empty",
                             [](AddressBookHome& home, const std::string& store) {
                               home.writeFile(store, "");
                             },
                             "Z_PRIMARYKEY"},
                    Unusable{"TruncatedByHalf",
                             [](AddressBookHome& home, const std::string& store) {
                               const std::string whole = home.readFile(store);
                               home.writeFile(store, whole.substr(0, whole.size() / 2));
                             },
                             "malformed"},
                    Unusable{"TruncatedByAByte",
                             [](AddressBookHome& home, const std::string& store) {
                               const std::string whole = home.readFile(store);
                               home.writeFile(store, whole.substr(0, whole.size() - 1));
                             },
                             "truncated"},
                    Unusable{"WithoutRecords",
                             [](AddressBookHome& home, const std::string& store) {
                               home.editStore("DROP TABLE ZABCDRECORD", store);
                             },
                             "it has no ZABCDRECORD"},
                    Unusable{"AFolder",
                             [](AddressBookHome& home, const std::string& store) {
                               home.folder().remove(store);
                               home.folder().makeFolder(store);
                             },
                             ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LockedStore, IsPresentedOnceAndTheOthersCount) {
  ThreeStores book;
  book.write(StoreGeneration::current);
  EditDatabase writer(book.home.path(sourceStore("A")));
  writer.run("BEGIN EXCLUSIVE");
  const auto before = book.home.folder().fingerprint(kAddressBookFolder);
  ZPKQueryAddressBook all(book.home.platform());
  EXPECT_EQ(fieldOf(all.birthdayDates(), &ContactDateRecord::firstName), (Texts{"main", "B"}));
  EXPECT_EQ(fieldOf(all.anniversaryDates(), &ContactDateRecord::firstName), (Texts{"main", "B"}));
  EXPECT_EQ(book.home.folder().fingerprint(kAddressBookFolder), before);
  book.expectPresentedOnce(sourceStore("A"), "another program has it locked");
}

struct Odd {
  const char* name;
  const char* sql;  ///< {nesting} is the table that puts groups into groups
  Texts birthdays;  ///< first names of the birthdays of all stores
  Texts dates;      ///< first names of the dates of all stores
  std::size_t undated = 0;
  const char* logged = nullptr;  ///< what one line of the log says of the file
};

class OddStore : public testing::TestWithParam<Odd> {
 protected:
  static std::string sql(StoreGeneration generation) {
    constexpr const char* kNesting[] = {"Z_14PARENTGROUPS", "Z_16PARENTGROUPS", "Z_18PARENTGROUPS"};
    constexpr std::string_view kName = "{nesting}";
    std::string text = GetParam().sql;
    const std::size_t at = text.find(kName);
    if (at != std::string::npos) {
      text.replace(at, kName.size(), kNesting[static_cast<int>(generation)]);
    }
    return text;
  }
};

TEST_P(OddStore, IsNoErrorAndTheOthersCount) {
  for (const StoreGeneration generation : kGenerations) {
    SCOPED_TRACE(static_cast<int>(generation));
    ThreeStores book;
    book.write(generation);
    book.home.editStore(sql(generation), sourceStore("A"));
    book.readAll();
    EXPECT_EQ(fieldOf(book.birthdays, &ContactDateRecord::firstName), GetParam().birthdays);
    EXPECT_EQ(fieldOf(book.dates, &ContactDateRecord::firstName), GetParam().dates);
    EXPECT_EQ(static_cast<std::size_t>(std::count_if(
                  book.dates.begin(), book.dates.end(),
                  [](const ContactDateRecord& record) { return !record.thisDate.has_value(); })),
              GetParam().undated);
    EXPECT_TRUE(book.home.alerts.shown().empty());
    EXPECT_EQ(book.home.log.lines().size(), GetParam().logged == nullptr ? 0U : 1U);
    if (GetParam().logged != nullptr) {
      EXPECT_EQ(book.home.log.count(book.home.path(sourceStore("A")) + ": " + GetParam().logged),
                1U);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Stores, OddStore,
    testing::Values(
        Odd{.name = "TextInADateColumn",
            .sql = "UPDATE ZABCDCONTACTDATE SET ZDATE = 'soon'",
            .birthdays = {"main", "A", "B"},
            .dates = {"main", "A", "B"},
            .undated = 1,
            .logged = "1 values of ZABCDCONTACTDATE.ZDATE"},
        Odd{.name = "TextInABirthdayColumn",
            .sql = "UPDATE ZABCDRECORD SET ZBIRTHDAY = 'then' WHERE ZBIRTHDAY NOT NULL",
            .birthdays = {"main", "B"},
            .dates = {"main", "A", "B"},
            .logged = "1 values of ZABCDRECORD.ZBIRTHDAY"},
        Odd{.name = "TextThatIsNotUTF8",
            .sql = "UPDATE ZABCDRECORD SET ZFIRSTNAME = CAST(x'41FF' AS TEXT), ZUNIQUEID = "
                   "CAST(x'FE' AS TEXT) WHERE ZFIRSTNAME NOT NULL; UPDATE ZABCDCONTACTDATE SET "
                   "ZLABEL = CAST(x'C3' AS TEXT)",
            .birthdays = {"main", "A\uFFFD", "B"},
            .dates = {"main", "A\uFFFD", "B"}},
        Odd{.name = "AGroupThatIsItsOwnAncestor",
            .sql = "INSERT INTO {nesting} SELECT Z_PK, Z_PK FROM ZABCDRECORD WHERE ZNAME = 'A'",
            .birthdays = {"main", "A", "B"},
            .dates = {"main", "A", "B"}},
        Odd{.name = "ADateWhoseOwnerIsGone",
            .sql = "DELETE FROM ZABCDRECORD WHERE ZBIRTHDAY NOT NULL",
            .birthdays = {"main", "B"},
            .dates = {"main", "NULL", "B"}},
        Odd{.name = "ADateWithoutAValue",
            .sql = "UPDATE ZABCDCONTACTDATE SET ZDATE = NULL",
            .birthdays = {"main", "A", "B"},
            .dates = {"main", "A", "B"},
            .undated = 1}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace annivo
