// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <thread>

#include "platform/addressbook/ABAddressBook.h"
#include "tests/platform/addressbook/StoreFile.h"
#include "tests/support/Doubles.h"
#include "tests/support/EditDatabase.h"

namespace annivo {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kFolder = "Library/Application Support/AddressBook";
constexpr const char* kMainStore = "Library/Application Support/AddressBook/AddressBook-v22.abcddb";
const std::string kFramework =
    ANNIVO_SOURCE_DIR "/resources/system/Library/Frameworks/AddressBook.framework";

/// A home whose address book holds a main store and sources.
class ABAddressBookOwnCard : public testing::Test {
 protected:
  [[nodiscard]] std::string mainStore() const {
    home.makeFolder(kFolder);
    return home.path(kMainStore);
  }
  [[nodiscard]] std::string source(const std::string& name) const {
    const std::string folder = std::string(kFolder) + "/Sources/" + name;
    home.makeFolder(folder);
    return home.path(folder + "/AddressBook-v22.abcddb");
  }
  static StoredPerson person(const char* uid, Lines emails, bool isMe) {
    StoredPerson result;
    result.uniqueId = uid;
    result.emails = std::move(emails);
    result.isMe = isMe;
    return result;
  }
  static StoredPerson own(const char* uid, Lines emails = {}) {
    return person(uid, std::move(emails), true);
  }
  static void write(const std::string& path, const std::vector<StoredPerson>& people,
                    StoreGeneration generation = StoreGeneration::current) {
    PosixFileManager disk;
    const auto written =
        AddressBookStoreWriter::write(disk, path, generation, people, {}, kUnixEpoch);
    ASSERT_TRUE(written) << written.error().text();
  }
  [[nodiscard]] std::optional<ABPerson> me() {
    return ABAddressBook(files, log, home.path(), NSBundle(files, kFramework), {"en"}).me();
  }
  [[nodiscard]] std::string myId() {
    const auto card = me();
    return card ? card->uniqueId : "nobody";
  }
  [[nodiscard]] std::string primaryEmail() {
    const auto card = me();
    if (!card || !card->emails.primaryIdentifier) return "none";
    const auto index = card->emails.indexForIdentifier(*card->emails.primaryIdentifier);
    return card->emails.valueAtIndex(index).value_or("none");
  }

  PosixFileManager files;
  RecordingLog log;
  TemporaryFolder home;
};

class ABAddressBookOwnCardOfAGeneration : public ABAddressBookOwnCard,
                                          public testing::WithParamInterface<GenerationFacts> {};

INSTANTIATE_TEST_SUITE_P(ABAddressBook, ABAddressBookOwnCardOfAGeneration,
                         testing::ValuesIn(kGenerations),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ABAddressBookOwnCardOfAGeneration, IsFoundWithItsAddresses) {
  write(mainStore(),
        {person("A:ABPerson", {"a@x.example"}, false), own("B:ABPerson", {"b1@x.example", "b2"}),
         person("C:ABPerson", {"c@x.example"}, false)},
        GetParam().generation);
  const auto card = me();
  ASSERT_TRUE(card);
  EXPECT_EQ(card->uniqueId, "B:ABPerson");
  ASSERT_EQ(card->emails.entries.size(), 2U);
  EXPECT_EQ(card->emails.entries[0].value, "b1@x.example");
  EXPECT_EQ(card->emails.entries[1].value, "b2");
  EXPECT_EQ(primaryEmail(), "b1@x.example");
  EXPECT_TRUE(log.lines().empty());
}

TEST_P(ABAddressBookOwnCardOfAGeneration, IsAbsentWhereNoneIsNoted) {
  write(mainStore(), {person("A:ABPerson", {"a@x.example"}, false)}, GetParam().generation);
  EXPECT_EQ(myId(), "nobody");
  EXPECT_TRUE(log.lines().empty());
}

TEST_P(ABAddressBookOwnCardOfAGeneration, LeavesNothingBesideTheStore) {
  write(mainStore(), {own("B:ABPerson")}, GetParam().generation);
  const auto before = home.fingerprint();
  EXPECT_EQ(myId(), "B:ABPerson");
  EXPECT_EQ(home.fingerprint(), before);
}

TEST_F(ABAddressBookOwnCard, IsTheOneMarkedInItsContainerWhereNoRowNamesIt) {
  write(mainStore(), {person("A:ABPerson", {}, false), own("B:ABPerson", {"b@x.example"})});
  EditDatabase(mainStore()).run("UPDATE ZABCDRECORD SET ZME = NULL");
  EXPECT_EQ(myId(), "B:ABPerson");
  EXPECT_EQ(primaryEmail(), "b@x.example");
}

TEST_F(ABAddressBookOwnCard, IsTheOneThatARowNamesEvenIfAnotherIsMarked) {
  write(mainStore(), {person("A:ABPerson", {}, false), own("B:ABPerson")});
  EditDatabase(mainStore())
      .run(
          "UPDATE ZABCDRECORD SET ZCONTAINERWHERECONTACTISME = CASE ZUNIQUEID "
          "WHEN 'A:ABPerson' THEN 2 ELSE NULL END");
  EXPECT_EQ(myId(), "B:ABPerson");
}

TEST_F(ABAddressBookOwnCard, IsAbsentWhereTheRowNamesNoRecord) {
  write(mainStore(), {own("B:ABPerson")}, StoreGeneration::olderA);
  EditDatabase(mainStore()).run("DELETE FROM ZABCDRECORD WHERE ZUNIQUEID = 'B:ABPerson'");
  EXPECT_EQ(myId(), "nobody");
}

TEST_F(ABAddressBookOwnCard, IsAbsentWhereTextStandsForItsKey) {
  write(mainStore(), {own("B:ABPerson")}, StoreGeneration::olderB);
  EditDatabase(mainStore()).run("UPDATE ZABCDRECORD SET ZME = 'B:ABPerson' WHERE ZME NOT NULL");
  EXPECT_EQ(myId(), "nobody");
}

TEST_F(ABAddressBookOwnCard, WithDataForAnIdentifierHasNone) {
  write(mainStore(), {own("B:ABPerson", {"b@x.example"})});
  EditDatabase(mainStore()).run("UPDATE ZABCDRECORD SET ZUNIQUEID = x'00FF'");
  EXPECT_EQ(myId(), "");
  EXPECT_EQ(primaryEmail(), "b@x.example");
}

TEST_F(ABAddressBookOwnCard, IsReadFromTheLogBesideTheStore) {
  write(mainStore(), {own("B:ABPerson", {"old@x.example"})});
  EditDatabase(mainStore())
      .run("PRAGMA journal_mode = WAL")
      .keepLog()
      .run("UPDATE ZABCDEMAILADDRESS SET ZADDRESS = 'new@x.example'");
  ASSERT_TRUE(home.exists(std::string(kMainStore) + "-wal"));
  const auto before = home.fingerprint();
  EXPECT_EQ(primaryEmail(), "new@x.example");
  EXPECT_EQ(home.fingerprint(), before);
}

TEST_F(ABAddressBookOwnCard, OfTheMainStoreWins) {
  write(source("0"), {own("Source:ABPerson")});
  write(mainStore(), {own("Main:ABPerson")});
  EXPECT_EQ(myId(), "Main:ABPerson");
}

TEST_F(ABAddressBookOwnCard, IsLookedForInTheSourcesInTurn) {
  write(mainStore(), {person("Main:ABPerson", {}, false)});
  write(source("C"), {own("C:ABPerson")});
  write(source("B"), {own("B:ABPerson")});
  write(source("A"), {person("A:ABPerson", {}, false)});
  EXPECT_EQ(myId(), "B:ABPerson");
}

TEST_F(ABAddressBookOwnCard, IsFoundInASourceWithoutAMainStore) {
  write(source("A"), {own("A:ABPerson")});
  EXPECT_EQ(myId(), "A:ABPerson");
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ABAddressBookOwnCard, IsAbsentWithoutAnAddressBook) {
  EXPECT_EQ(myId(), "nobody");
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ABAddressBookOwnCard, WithoutAnAddressHasNoPrimaryOne) {
  write(mainStore(), {own("B:ABPerson")});
  EXPECT_EQ(myId(), "B:ABPerson");
  EXPECT_EQ(primaryEmail(), "none");
}

TEST_F(ABAddressBookOwnCard, HasThePrimaryAddressOfTheRules) {
  struct Row {
    const char* name;
    const char* change;
    const char* expected;
  };
  const Row rows[] = {
      {"the marked one", "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = (ZADDRESS = 'c')", "c"},
      {"none marked: the lowest place",
       "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = 0, ZORDERINGINDEX = 9 - Z_PK", "c"},
      {"nil counts as not marked",
       "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = NULL, ZORDERINGINDEX = 9 - Z_PK", "c"},
      {"a nil place is the last",
       "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = 0, "
       "ZORDERINGINDEX = CASE ZADDRESS WHEN 'a' THEN NULL ELSE 5 - Z_PK END",
       "c"},
      {"equal places: the first written",
       "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = 0, ZORDERINGINDEX = 0", "a"},
      {"two marked: the lowest place", "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = 1", "a"},
      {"a marked row without an address does not count",
       "UPDATE ZABCDEMAILADDRESS SET ZADDRESS = NULL WHERE ZADDRESS = 'a'", "b"},
      {"nor does one that holds data",
       "UPDATE ZABCDEMAILADDRESS SET ZADDRESS = x'61' WHERE ZADDRESS = 'a'", "b"},
      {"a place that holds text comes after the numbers",
       "UPDATE ZABCDEMAILADDRESS SET ZISPRIMARY = 'no', "
       "ZORDERINGINDEX = CASE ZADDRESS WHEN 'a' THEN 'first' ELSE 5 - Z_PK END",
       "c"},
      {"identifiers that are data", "UPDATE ZABCDEMAILADDRESS SET ZUNIQUEID = x'00FF'", "a"},
      {"no identifiers", "UPDATE ZABCDEMAILADDRESS SET ZUNIQUEID = NULL", "a"},
      {"the mark column is missing", "ALTER TABLE ZABCDEMAILADDRESS DROP COLUMN ZISPRIMARY", "a"},
      {"the place column is missing", "ALTER TABLE ZABCDEMAILADDRESS DROP COLUMN ZORDERINGINDEX",
       "a"},
      {"the identifier column is missing", "ALTER TABLE ZABCDEMAILADDRESS DROP COLUMN ZUNIQUEID",
       "a"},
      {"the table is missing", "DROP TABLE ZABCDEMAILADDRESS", "none"},
      {"all belong to another", "UPDATE ZABCDEMAILADDRESS SET ZOWNER = 1", "none"},
      {"bytes that are no UTF-8", "UPDATE ZABCDEMAILADDRESS SET ZADDRESS = CAST(x'61FF62' AS TEXT)",
       "a\xEF\xBF\xBD"
       "b"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    write(mainStore(), {own("B:ABPerson", {"a", "b", "c"})});
    EditDatabase(mainStore()).run(row.change);
    EXPECT_EQ(primaryEmail(), row.expected);
    EXPECT_EQ(log.lines(), Lines{});
    home.remove(kMainStore);
  }
}

TEST_F(ABAddressBookOwnCard, OfAnUnusableStoreIsLoggedAndLookedForElsewhere) {
  struct Row {
    const char* name;
    std::function<void(const std::string&)> spoil;
  };
  const Row rows[] = {
      {"no database",
       [](const std::string& path) {
         std::ofstream(path, std::ios::trunc) << "Dear diary, this is no database at all.";
       }},
      {"truncated", [](const std::string& path) { std::filesystem::resize_file(path, 6000); }},
      {"a folder",
       [](const std::string& path) {
         std::filesystem::remove(path);
         std::filesystem::create_directory(path);
       }},
      {"empty", [](const std::string& path) { std::filesystem::resize_file(path, 0); }},
      {"without records",
       [](const std::string& path) { EditDatabase(path).run("DROP TABLE ZABCDRECORD"); }},
  };
  write(source("A"), {own("A:ABPerson")});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    write(mainStore(), {own("Main:ABPerson")});
    row.spoil(mainStore());
    log.clear();
    EXPECT_EQ(myId(), "A:ABPerson");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().front().find(mainStore()), std::string::npos) << log.lines().front();
    home.remove(kMainStore);
  }
}

TEST_F(ABAddressBookOwnCard, OfAStoreThatIsLockedForLongIsLoggedAndLookedForElsewhere) {
  write(mainStore(), {own("Main:ABPerson", {"main@x.example"})});
  write(source("A"), {own("A:ABPerson", {"a@x.example"})});
  const auto before = home.fingerprint();
  {
    EditDatabase writer(mainStore());
    writer.run("BEGIN EXCLUSIVE");
    EXPECT_EQ(primaryEmail(), "a@x.example");
    writer.run("ROLLBACK");
  }
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_NE(log.lines().front().find(mainStore()), std::string::npos) << log.lines().front();
  EXPECT_NE(log.lines().front().find("locked"), std::string::npos) << log.lines().front();
  EXPECT_EQ(home.fingerprint(), before);
  EXPECT_EQ(primaryEmail(), "main@x.example") << "once it is free again";
}

TEST_F(ABAddressBookOwnCard, OfALockedStoreIsWaitedFor) {
  write(mainStore(), {own("Main:ABPerson")});
  EditDatabase writer(mainStore());
  writer.run("BEGIN EXCLUSIVE");
  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds{300});
    writer.run("COMMIT");
  });
  EXPECT_EQ(myId(), "Main:ABPerson");
  release.join();
  EXPECT_TRUE(log.lines().empty());
}

TEST(ABMultiValue, FindsAnEntryByItsIdentifier) {
  const ABMultiValue values{{{"x", "one"}, {"y", "two"}}, "y"};
  EXPECT_EQ(values.indexForIdentifier("y"), 1U);
  EXPECT_EQ(values.indexForIdentifier("z"), std::nullopt);
  EXPECT_EQ(values.valueAtIndex(1), "two");
  EXPECT_EQ(values.valueAtIndex(2), std::nullopt);
  EXPECT_EQ(values.valueAtIndex(std::nullopt), std::nullopt);
}

class Labels : public testing::Test {
 protected:
  [[nodiscard]] ABAddressBook book(Lines languages) {
    return {files, log, "/nowhere", NSBundle(files, kFramework), std::move(languages)};
  }
  PosixFileManager files;
  RecordingLog log;
};

TEST_F(Labels, AreInThePersonsLanguage) {
  struct Row {
    Lines languages;
    const char* birthday;
    const char* anniversary;
  };
  const Row rows[] = {
      {{"en"}, "birthday", "anniversary"},
      {{"de"}, "Geburtstag", "Jahrestag"},
      {{"el"}, "γενέθλια", "επέτειος"},
      {{"tr"}, "doğum günü", "yıl dönümü"},
      {{"zh-Hans"}, "生日", "纪念日"},
      {{"zh-Hant"}, "生日", "紀念日"},
      {{"pt-PT"}, "aniversário", "data comemorativa"},
      {{"pt-BR"}, "aniversário", "data comemorativa"},
      {{"de-AT", "fr"}, "Geburtstag", "Jahrestag"},
      {{"tlh", "fr"}, "anniversaire", "anniversaire de mariage"},
      {{"tlh"}, "birthday", "anniversary"},
      {{}, "birthday", "anniversary"},
      {{"../../en"}, "birthday", "anniversary"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.languages.empty() ? "no language" : row.languages.front());
    const ABAddressBook addressBook = book(row.languages);
    EXPECT_EQ(addressBook.localizedPropertyOrLabel(kABBirthdayProperty), row.birthday);
    EXPECT_EQ(addressBook.localizedPropertyOrLabel(kABAnniversaryLabel), row.anniversary);
  }
}

TEST_F(Labels, ThatNobodyKnowsStayAsTheyAre) {
  EXPECT_EQ(book({"de"}).localizedPropertyOrLabel("First met"), "First met");
  EXPECT_EQ(book({"de"}).localizedPropertyOrLabel("_$!<Nonesuch>!$_"), "_$!<Nonesuch>!$_");
  EXPECT_EQ(book({"de"}).localizedPropertyOrLabel(""), "");
}

TEST_F(Labels, AreCapitalizedByTheFirstLanguage) {
  struct Row {
    const char* language;
    const char* text;
    const char* expected;
  };
  const Row rows[] = {
      {"en", "anniversary", "Anniversary"},
      {"en", "iSTANBUL day", "Istanbul Day"},
      {"tr", "istanbul ışığı", "İstanbul Işığı"},
      {"tr", "IŞIK İZMİR", "Işık İzmir"},
      {"tr-TR", "izin", "İzin"},
      {"az", "ildönümü", "İldönümü"},
      {"el", "επέτειος γάμου", "Επέτειος Γάμου"},
      {"el", "ΕΠΕΤΕΙΟΣ", "Επετειος"},
      {"de", "straßenfest", "Straßenfest"},
      {"hr", "ǆ", "ǅ"},
      {"ru", "годовщина", "Годовщина"},
      {"zh-Hans", "纪念日", "纪念日"},
      {"ja", "記念日", "記念日"},
      {"ar", "ذكرى سنوية", "ذكرى سنوية"},
      {"hi", "वर्षगाँठ", "वर्षगाँठ"},
      {"cy", "pen-blwydd priodas", "Pen-Blwydd Priodas"},
      {"fr", "date d’anniversaire", "Date D’anniversaire"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.language) + " " + row.text);
    EXPECT_EQ(book({row.language, "en"}).capitalized(row.text), row.expected);
  }
  EXPECT_EQ(book({}).capitalized("izin"), "Izin");
}

}  // namespace
}  // namespace annivo
