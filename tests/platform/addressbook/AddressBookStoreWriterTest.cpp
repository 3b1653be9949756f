// SPDX-License-Identifier: MIT
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string_view>

#include "codecs/plist/PropertyList.h"
#include "platform/addressbook/AddressBookStoreWriter.h"
#include "platform/addressbook/StoreSchema.h"
#include "tests/platform/addressbook/StoreFile.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {
namespace {

using Lines = std::vector<std::string>;

StoredPerson named(const char* first) {
  StoredPerson person;
  person.firstName = first;
  return person;
}

StoredPerson born(StoredDay day) {
  StoredPerson person;
  person.birthday = day;
  return person;
}

/// Names of what lies in the folder of a store.
Lines filesBeside(const StoreFile& store) {
  Lines names;
  for (const auto& [name, content] : store.folder().snapshot()) names.push_back(name);
  return names;
}

class EveryGeneration : public testing::TestWithParam<GenerationFacts> {
 protected:
  [[nodiscard]] std::string membership() const {
    return "Z_" + std::to_string(GetParam().contact) + "PARENTGROUPS";
  }
  [[nodiscard]] std::string nesting() const {
    return "Z_" + std::to_string(GetParam().abstractGroup) + "PARENTGROUPS";
  }
  void write(const std::vector<StoredPerson>& people,
             const std::vector<StoredGroup>& groups = {}) const {
    store.write(GetParam().generation, people, groups);
  }
  StoreFile store;
};

INSTANTIATE_TEST_SUITE_P(AddressBookStoreWriter, EveryGeneration, testing::ValuesIn(kGenerations),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(EveryGeneration, NumbersTheEntities) {
  write({});
  const auto numberOf = [&](const std::string& entity) {
    return store.value("SELECT Z_ENT FROM Z_PRIMARYKEY WHERE Z_NAME = '" + entity + "'");
  };
  EXPECT_EQ(numberOf("ABCDContact"), std::to_string(GetParam().contact));
  EXPECT_EQ(numberOf("ABCDGroup"), std::to_string(GetParam().group));
  EXPECT_EQ(numberOf("ABCDAbstractGroup"), std::to_string(GetParam().abstractGroup));
}

TEST_P(EveryGeneration, NamesTheParentOfEachEntity) {
  write({});
  EXPECT_EQ(store.column("SELECT child.Z_NAME || ' < ' || parent.Z_NAME FROM Z_PRIMARYKEY child "
                         "JOIN Z_PRIMARYKEY parent ON child.Z_SUPER = parent.Z_ENT "
                         "WHERE child.Z_NAME LIKE 'ABCD%' ORDER BY child.Z_NAME"),
            (Lines{"ABCDAbstractGroup < ABCDRecord", "ABCDContact < ABCDRecord",
                   "ABCDGroup < ABCDAbstractGroup", "ABCDInfo < ABCDRecord",
                   "ABCDSmartGroup < ABCDAbstractGroup", "ABCDSubscribedContact < ABCDContact",
                   "ABCDSubscribedGroup < ABCDGroup"}));
  EXPECT_EQ(store.value("SELECT Z_SUPER FROM Z_PRIMARYKEY WHERE Z_NAME = 'ABCDRecord'"), "0");
}

TEST_P(EveryGeneration, KeepsTheHighestKeyOfATableOnItsRootEntity) {
  StoredPerson person = named("Ann");
  person.dates = {{}, {}, {}};
  person.emails = {"a@b.example", "c@d.example"};
  write({person, named("Bob")}, {{"", "Friends", {}, {}}});
  const auto highest = [&](const std::string& entity) {
    return store.value("SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_NAME = '" + entity + "'");
  };
  EXPECT_EQ(highest("ABCDRecord"), store.value("SELECT MAX(Z_PK) FROM ZABCDRECORD"));
  EXPECT_EQ(highest("ABCDContactDate"), "3");
  EXPECT_EQ(highest("ABCDEmailAddress"), "2");
  EXPECT_EQ(highest("ABCDContact"), "0");
}

TEST_P(EveryGeneration, WritesPeopleInTheirOrder) {
  write({named("Zoe"), named("Ann"), named("Mia")});
  EXPECT_EQ(store.column("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE ZFIRSTNAME NOT NULL "
                         "ORDER BY Z_PK"),
            (Lines{"Zoe", "Ann", "Mia"}));
}

TEST_P(EveryGeneration, PutsPeopleIntoGroups) {
  write({named("Ann"), named("Bob"), named("Cid")},
        {{"", "Friends", {0, 2}, {}}, {"", "Work", {2}, {}}});
  const std::string contact = "Z_" + std::to_string(GetParam().contact) + "CONTACTS";
  const std::string group = "Z_" + std::to_string(GetParam().group) + "PARENTGROUPS1";
  EXPECT_EQ(store.column("SELECT p.ZFIRSTNAME || ' in ' || g.ZNAME FROM " + membership() +
                         " JOIN ZABCDRECORD p ON p.Z_PK = " + contact +
                         " JOIN ZABCDRECORD g ON g.Z_PK = " + group + " ORDER BY p.Z_PK, g.Z_PK"),
            (Lines{"Ann in Friends", "Cid in Friends", "Cid in Work"}));
}

TEST_P(EveryGeneration, PutsGroupsIntoGroups) {
  write({}, {{"", "A", {}, {1}}, {"", "B", {}, {2}}, {"", "C", {}, {}}});
  const std::string child = "Z_" + std::to_string(GetParam().abstractGroup) + "CHILDGROUPS";
  const std::string parent = "Z_" + std::to_string(GetParam().group) + "PARENTGROUPS";
  EXPECT_EQ(store.column("SELECT c.ZNAME || ' in ' || p.ZNAME FROM " + nesting() +
                         " JOIN ZABCDRECORD c ON c.Z_PK = " + child +
                         " JOIN ZABCDRECORD p ON p.Z_PK = " + parent + " ORDER BY c.ZNAME"),
            (Lines{"B in A", "C in B"}));
}

TEST_P(EveryGeneration, CountsAMemberNamedTwiceOnce) {
  write({named("Ann")}, {{"", "A", {0, 0}, {1, 1}}, {"", "B", {}, {}}});
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM " + membership()), "1");
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM " + nesting()), "1");
}

TEST_P(EveryGeneration, NotesTheOwnCardWhereItsReadersLook) {
  StoredPerson own = named("Me");
  own.isMe = true;
  write({named("Ann"), own});
  const std::string column = "Z" + std::to_string(GetParam().contact) + "_ME";
  const bool hasContainers = GetParam().generation == StoreGeneration::current;
  EXPECT_EQ(store.value("SELECT p.ZFIRSTNAME FROM ZABCDRECORD r JOIN ZABCDRECORD p "
                        "ON p.Z_PK = r.ZME"),
            "Me");
  EXPECT_EQ(store.value("SELECT e.Z_NAME || ' ' || r." + column +
                        " FROM ZABCDRECORD r JOIN Z_PRIMARYKEY e ON e.Z_ENT = r.Z_ENT "
                        "WHERE r.ZME NOT NULL"),
            (hasContainers ? "CNCDContainer " : "ABCDInfo ") + std::to_string(GetParam().contact));
}

TEST_P(EveryGeneration, NotesNoOwnCardWhereThereIsNone) {
  write({named("Ann")});
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM ZABCDRECORD WHERE ZME NOT NULL"), "0");
}

TEST_P(EveryGeneration, WritesOneInfoRow) {
  write({named("Ann")});
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM ZABCDRECORD WHERE ZUNIQUEID LIKE '%:ABInfo'"), "1");
}

TEST_P(EveryGeneration, GivesFreshIdentifiersTheirForms) {
  StoredPerson person = named("Ann");
  person.dates = {{.uniqueId = "", .label = "x", .day = StoredDay{2001, 1, 1}}};
  person.emails = {"a@b.example"};
  write({person}, {{"", "Friends", {}, {}}});
  const std::string uuid = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
  const auto form = [&](const std::string& query) {
    std::string text = store.value(query);
    for (std::size_t i = 0; i < std::min(text.size(), uuid.size()); ++i) {
      if (std::string_view("0123456789ABCDEF").find(text[i]) != std::string_view::npos) {
        text[i] = 'X';
      }
    }
    return text;
  };
  EXPECT_EQ(form("SELECT ZUNIQUEID FROM ZABCDRECORD WHERE ZFIRSTNAME NOT NULL"),
            uuid + ":ABPerson");
  EXPECT_EQ(form("SELECT ZUNIQUEID FROM ZABCDRECORD WHERE ZNAME NOT NULL"), uuid + ":ABGroup");
  EXPECT_EQ(form("SELECT ZUNIQUEID FROM ZABCDCONTACTDATE"), uuid);
  EXPECT_EQ(form("SELECT ZUNIQUEID FROM ZABCDEMAILADDRESS"), uuid);
}

TEST_P(EveryGeneration, KeepsGivenIdentifiers) {
  StoredPerson person = named("Ann");
  person.uniqueId = "P:ABPerson";
  person.dates = {{.uniqueId = "D", .label = {}, .day = {}}};
  write({person}, {{"G:ABGroup", "Friends", {}, {}}});
  EXPECT_EQ(store.column("SELECT ZUNIQUEID FROM ZABCDRECORD WHERE ZUNIQUEID IN "
                         "('P:ABPerson', 'G:ABGroup') ORDER BY 1"),
            (Lines{"G:ABGroup", "P:ABPerson"}));
  EXPECT_EQ(store.value("SELECT ZUNIQUEID FROM ZABCDCONTACTDATE"), "D");
}

TEST_P(EveryGeneration, TellsSubscribedAndSmartOnesByTheirEntities) {
  StoredPerson person = named("Ann");
  person.isSubscribed = true;
  write({person}, {{"", "plain", {}, {}},
                   {"", "subscribed", {0}, {}, StoredGroup::Kind::subscribed},
                   {"", "smart", {0}, {0}, StoredGroup::Kind::smart}});
  EXPECT_EQ(store.column("SELECT e.Z_NAME FROM ZABCDRECORD r JOIN Z_PRIMARYKEY e "
                         "ON e.Z_ENT = r.Z_ENT WHERE ZNAME NOT NULL OR ZFIRSTNAME NOT NULL "
                         "ORDER BY Z_PK"),
            (Lines{"ABCDSubscribedContact", "ABCDGroup", "ABCDSubscribedGroup", "ABCDSmartGroup"}));
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM " + membership()), "1")
      << "a smart group has no members of its own";
  EXPECT_EQ(store.value("SELECT COUNT(*) FROM " + nesting()), "0");
}

TEST_P(EveryGeneration, NamesTheOwnerOfEachDateAndAddress) {
  StoredPerson person = named("Ann");
  person.dates = {{.uniqueId = "1", .label = "First met", .day = StoredDay{1999, 5, 1}},
                  {.uniqueId = "2", .label = {}, .day = {}}};
  person.emails = {"Ann@Home.Example", "ann@work.example"};
  write({named("Bob"), person});
  EXPECT_EQ(store.column("SELECT ZFIRSTNAME || ' ' || IFNULL(ZLABEL, '-') || ' ' || "
                         "IFNULL(ZDATE, '-') FROM ZABCDCONTACTDATE d JOIN ZABCDRECORD p "
                         "ON p.Z_PK = d.ZOWNER ORDER BY d.Z_PK"),
            (Lines{"Ann First met -52747200", "Ann - -"}));
  const std::string entity = "Z" + std::to_string(GetParam().contact) + "_OWNER";
  EXPECT_EQ(store.column("SELECT DISTINCT " + entity + " FROM ZABCDEMAILADDRESS"),
            Lines{std::to_string(GetParam().contact)});
  EXPECT_EQ(
      store.column("SELECT ZISPRIMARY || ZORDERINGINDEX || ' ' || ZADDRESS || ' ' || "
                   "ZADDRESSNORMALIZED FROM ZABCDEMAILADDRESS ORDER BY Z_PK"),
      (Lines{"10 Ann@Home.Example ann@home.example", "01 ann@work.example ann@work.example"}));
}

TEST_P(EveryGeneration, KeepsEveryTextAsItIs) {
  StoredPerson person;
  person.firstName = "Zoë \"Z\" '; DROP TABLE ZABCDRECORD; --";
  person.middleName = "";
  person.lastName = "山田\n🎈";
  person.displayFlags = std::nullopt;
  write({person});
  EXPECT_EQ(store.column("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE ZLASTNAME NOT NULL"),
            Lines{*person.firstName});
  EXPECT_EQ(store.column("SELECT ZMIDDLENAME FROM ZABCDRECORD WHERE ZLASTNAME NOT NULL"),
            Lines{""});
  EXPECT_EQ(store.column("SELECT ZLASTNAME FROM ZABCDRECORD WHERE ZLASTNAME NOT NULL"),
            Lines{*person.lastName});
  EXPECT_EQ(store.column("SELECT ZNICKNAME FROM ZABCDRECORD WHERE ZLASTNAME NOT NULL"),
            Lines{"nil"});
  EXPECT_EQ(store.column("SELECT ZDISPLAYFLAGS FROM ZABCDRECORD WHERE ZLASTNAME NOT NULL"),
            Lines{"nil"});
}

TEST_P(EveryGeneration, IsASoundDatabaseThatSaysWhatItIs) {
  write({named("Ann"), born({1980, 6, 10})}, {{"", "Friends", {0, 1}, {}}});
  EXPECT_EQ(store.value("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(store.value("SELECT Z_VERSION FROM Z_METADATA"), "1");
  const std::string hex = store.value("SELECT HEX(Z_PLIST) FROM Z_METADATA");
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  const auto about = parsePropertyList(bytes, "Z_PLIST");
  ASSERT_TRUE(about);
  EXPECT_TRUE((*about)["NSStoreType"].isEqualToString("SQLite"));
}

TEST_P(EveryGeneration, LeavesOnlyTheStore) {
  write({named("Ann")});
  EXPECT_EQ(filesBeside(store), Lines{"AddressBook-v22.abcddb"});
  struct stat status {};
  ASSERT_EQ(::stat(store.path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST(AddressBookStoreWriter, OnlyCurrentStoresHaveContainers) {
  StoredPerson own = named("Me");
  own.isMe = true;
  StoreFile current;
  current.write(StoreGeneration::current, {named("Ann"), own}, {{"", "Friends", {}, {}}});
  const std::string container =
      current.value("SELECT Z_PK FROM ZABCDRECORD WHERE ZUNIQUEID LIKE '%:ABContainer'");
  EXPECT_EQ(current.column("SELECT DISTINCT IFNULL(ZCONTAINER1, ZCONTAINER) FROM ZABCDRECORD "
                           "WHERE ZFIRSTNAME NOT NULL OR ZNAME NOT NULL"),
            Lines{container});
  EXPECT_EQ(current.value("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE "
                          "ZCONTAINERWHERECONTACTISME = " +
                          container),
            "Me");
  StoreFile older;
  older.write(StoreGeneration::olderA, {own});
  EXPECT_EQ(older.value("SELECT COUNT(*) FROM pragma_table_info('ZABCDRECORD') "
                        "WHERE name LIKE 'ZCONTAINER%'"),
            "0");
  EXPECT_EQ(older.value("SELECT COUNT(*) FROM Z_PRIMARYKEY WHERE Z_NAME LIKE 'CNCD%'"), "0");
}

TEST(AddressBookStoreWriter, NumbersEveryEntityOfACurrentStore) {
  const StoreSchema schema(StoreGeneration::current);
  EXPECT_EQ(schema.number("ABCDAddressingGrammar"), 1);
  EXPECT_EQ(schema.number("ABCDContactDate"), 4);
  EXPECT_EQ(schema.number("ABCDEmailAddress"), 11);
  EXPECT_EQ(schema.number("ABCDRecord"), 17);
  EXPECT_EQ(schema.number("CNCDContainer"), 25);
  EXPECT_EQ(schema.number("ABCDURLAddress"), 31);
  EXPECT_EQ(schema.number("CNCDUnifiedContactInfo"), 34);
  EXPECT_EQ(schema.number("ABCDNoSuchThing"), 0);
}

TEST(AddressBookStoreWriter, WritesABirthdayAsNoonUTCOfItsDay) {
  struct Row {
    StoredDay day;
    const char* moment;
    const char* withinYear;
  };
  const Row rows[] = {{{1604, 1, 1}, "-12528129600", "43200"},
                      {{1604, 2, 29}, "-12523032000", "5140800"},
                      {{1604, 12, 31}, "-12496593600", "31492800"},
                      {{1900, 1, 1}, "-3187252800", "43200"},
                      {{2001, 1, 1}, "43200", "43200"},
                      {{2024, 12, 31}, "757339200", "31492800"}};
  for (const Row& row : rows) {
    StoreFile store;
    store.write(StoreGeneration::current, {born(row.day)});
    const std::string where = " FROM ZABCDRECORD WHERE ZBIRTHDAY NOT NULL";
    EXPECT_EQ(store.value("SELECT ZBIRTHDAY" + where), row.moment);
    EXPECT_EQ(store.value("SELECT typeof(ZBIRTHDAY)" + where), "integer");
    EXPECT_EQ(store.value("SELECT ZBIRTHDAYYEAR" + where), std::to_string(row.day.year));
    EXPECT_EQ(store.value("SELECT ZBIRTHDAYYEARLESS" + where), row.withinYear);
  }
}

class RefusedStore : public testing::Test {
 protected:
  Result<void> write(const std::vector<StoredPerson>& people,
                     const std::vector<StoredGroup>& groups = {}) const {
    return AddressBookStoreWriter::write(files, store.path(), StoreGeneration::current, people,
                                         groups, kReferenceDate);
  }
  mutable PosixFileManager files;
  StoreFile store;
};

TEST_F(RefusedStore, RefusesADateThatIsNoDay) {
  for (const StoredDay day :
       {StoredDay{2023, 2, 29}, StoredDay{2024, 13, 1}, StoredDay{2024, 0, 1},
        StoredDay{2024, 4, 31}, StoredDay{2024, 257, 1}, StoredDay{2024, 1, 257},
        StoredDay{0, 1, 1}, StoredDay{10000, 1, 1}}) {
    const auto written = write({born(day)});
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().kind, Error::Kind::refused);
    EXPECT_NE(written.error().description.find(store.path()), std::string::npos);
  }
  StoredPerson person;
  person.dates = {{.uniqueId = "", .label = {}, .day = StoredDay{2023, 2, 29}}};
  EXPECT_FALSE(write({person}));
  EXPECT_EQ(filesBeside(store), Lines{});
}

TEST_F(RefusedStore, RefusesAMemberThatIsNotThere) {
  EXPECT_FALSE(write({named("Ann")}, {{"", "Friends", {1}, {}}}));
  EXPECT_FALSE(write({named("Ann")}, {{"", "Friends", {}, {1}}}));
  EXPECT_EQ(filesBeside(store), Lines{});
}

TEST_F(RefusedStore, LeavesTheStoreThatIsThere) {
  ASSERT_TRUE(write({named("Ann")}));
  const std::string before = store.folder().readFile("AddressBook-v22.abcddb");
  EXPECT_FALSE(write({named("Bob")}, {{"", "Friends", {1}, {}}}));
  FailingFileManager failing(files);
  failing.failChange(1);
  EXPECT_FALSE(AddressBookStoreWriter::write(failing, store.path(), StoreGeneration::current,
                                             {named("Bob")}, {}, kReferenceDate));
  EXPECT_EQ(store.folder().readFile("AddressBook-v22.abcddb"), before);
  EXPECT_EQ(filesBeside(store), Lines{"AddressBook-v22.abcddb"});
  EXPECT_TRUE(write({named("Bob")}));
  EXPECT_EQ(store.value("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE ZFIRSTNAME NOT NULL"), "Bob");
}

TEST_F(RefusedStore, IsReadWhereverItsFileIsKept) {
  SystemClock clock;
  MemoryFileManager memory(clock);
  memory.makeFolders("/home/ann");
  const std::string path = "/home/ann/store.abcddb";
  ASSERT_TRUE(AddressBookStoreWriter::write(memory, path, StoreGeneration::current, {named("Ann")},
                                            {}, kReferenceDate));
  const auto database = SQLiteDatabase::openForReading(memory, path);
  ASSERT_TRUE(database) << database.error().text();
  auto names = database->prepare("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE ZFIRSTNAME NOT NULL");
  ASSERT_TRUE(names);
  ASSERT_TRUE(*names->step());
  EXPECT_EQ(names->text(0), "Ann");
  EXPECT_FALSE(database->execute("DELETE FROM ZABCDRECORD")) << "open for reading only";
}

TEST_F(RefusedStore, FailsInAFolderThatIsNotThere) {
  const auto written =
      AddressBookStoreWriter::write(files, store.folder().path("none/x.abcddb"),
                                    StoreGeneration::current, {}, {}, kReferenceDate);
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().kind, Error::Kind::absent);
}

TEST_F(RefusedStore, IgnoresWhatAKilledWriterLeft) {
  store.folder().writeFile(".AddressBook-v22.abcddb.tmp", "half a store");
  EXPECT_TRUE(write({named("Ann")}));
  EXPECT_EQ(filesBeside(store), Lines{"AddressBook-v22.abcddb"});
  EXPECT_EQ(store.value("SELECT ZFIRSTNAME FROM ZABCDRECORD WHERE ZFIRSTNAME NOT NULL"), "Ann");
}

/// Lets no file of this process grow beyond a size, as a full disk would not.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit before_{};
};

TEST_F(RefusedStore, LeavesNoFileWhereTheDiskIsTooSmall) {
  const std::vector<StoredPerson> people(2000, named("Ann"));
  for (const rlim_t bytes : {rlim_t{0}, rlim_t{5000}, rlim_t{100000}}) {
    const SmallDisk disk(bytes);
    EXPECT_FALSE(write(people)) << bytes;
    EXPECT_EQ(filesBeside(store), Lines{}) << bytes;
  }
  EXPECT_TRUE(write(people));
}

}  // namespace
}  // namespace annivo
