// SPDX-License-Identifier: MIT
// The tables and models under resources/.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "base/Unicode.h"
#include "codecs/plist/PropertyList.h"
#include "platform/addressbook/ABAddressBook.h"
#include "platform/coredata/NSManagedObjectContext.h"
#include "platform/coredata/NSManagedObjectModel.h"
#include "platform/foundation/Gestalt.h"
#include "tests/platform/addressbook/StoreFile.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

const std::string kResources = ANNIVO_SOURCE_DIR "/resources";
const std::string kFramework =
    kResources + "/system/Library/Frameworks/AddressBook.framework/Versions/A/Resources";
const std::string kAgent = kResources + "/agent/Resources";

PropertyList::Dictionary readTable(const std::string& folder, const std::string& language) {
  const std::string path = folder + "/" + language + ".lproj/Localizable.strings";
  const auto bytes = PosixFileManager().contentsAtPath(path, NSFileManager::kDefaultLimit);
  EXPECT_TRUE(bytes) << path;
  if (!bytes) return {};
  const auto list = parsePropertyList(*bytes, path);
  EXPECT_TRUE(list && list->dictionary()) << path;
  return list && list->dictionary() ? *list->dictionary() : PropertyList::Dictionary{};
}

std::set<std::string> languagesIn(const std::string& folder) {
  std::set<std::string> languages;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".lproj") languages.insert(entry.path().stem());
  }
  return languages;
}

std::set<std::string> keysOf(const PropertyList::Dictionary& table) {
  std::set<std::string> keys;
  for (const auto& [key, value] : table) keys.insert(key);
  return keys;
}

std::string text(const PropertyList::Dictionary& table, const std::string& key) {
  const auto found = table.find(key);
  return found == table.end() ? "(missing)" : found->second.stringOr("(no text)");
}

bool isUsableText(const std::string& value) {
  return !value.empty() && isValidUTF8(value) && value.front() != ' ' && value.back() != ' ' &&
         value.find("NULL") == std::string::npos && value.find("^!") == std::string::npos;
}

TEST(LabelTables, ComeInAtLeastThirtyLanguagesOnBothSides) {
  EXPECT_GE(languagesIn(kFramework).size(), 30U);
  EXPECT_EQ(languagesIn(kFramework), languagesIn(kAgent));
}

class Table : public testing::TestWithParam<std::string> {
 protected:
  PropertyList::Dictionary labels = readTable(kFramework, GetParam());
  PropertyList::Dictionary titles = readTable(kAgent, GetParam());
};

INSTANTIATE_TEST_SUITE_P(LabelTables, Table, testing::ValuesIn(languagesIn(kFramework)),
                         [](const auto& row) {
                           std::string name = row.param;
                           std::erase(name, '-');
                           return name;
                         });

TEST_P(Table, HasEveryLabel) {
  EXPECT_EQ(keysOf(labels), keysOf(readTable(kFramework, "en")));
  for (const char* code :
       {"Birthday", "_$!<Anniversary>!$_", "_$!<Other>!$_", "_$!<Home>!$_", "_$!<Work>!$_",
        "_$!<Mobile>!$_", "_$!<HomePage>!$_", "_$!<Spouse>!$_"}) {
    EXPECT_TRUE(labels.contains(code)) << code;
  }
}

TEST_P(Table, HoldsOnlyUsableTexts) {
  for (const auto* table : {&labels, &titles}) {
    for (const auto& [key, value] : *table) {
      EXPECT_TRUE(isUsableText(value.stringOr(""))) << key;
    }
  }
}

TEST_P(Table, TurnsEveryDateTypeIntoTheWordsOfATitle) {
  const std::string birthday = text(labels, "Birthday");
  const std::string anniversary = text(labels, "_$!<Anniversary>!$_");
  std::set<std::string> dateTypes{birthday, capitalized(anniversary, GetParam())};
  for (const auto& [code, word] : labels) {
    if (code.starts_with("_$!<") && code != "_$!<Anniversary>!$_") {
      dateTypes.insert(code);
      EXPECT_EQ(text(titles, code), word.stringOr("")) << code;
    }
  }
  EXPECT_EQ(keysOf(titles), dateTypes);
  EXPECT_EQ(text(titles, birthday), birthday);
  EXPECT_EQ(text(titles, capitalized(anniversary, GetParam())), anniversary);
}

TEST_P(Table, CallsBirthdaysAndAnniversariesByDifferentNames) {
  EXPECT_NE(text(labels, "Birthday"), text(labels, "_$!<Anniversary>!$_"));
  EXPECT_NE(text(labels, "Birthday"), capitalized(text(labels, "_$!<Anniversary>!$_"), GetParam()));
}

TEST(LabelTables, CapitalizeTheAnniversaryByTheRulesOfEachLanguage) {
  struct Row {
    const char* language;
    const char* dateType;
    const char* title;
  };
  const Row rows[] = {{"af", "Herdenkingsdag", "herdenkingsdag"},
                      {"ar", "ذكرى سنوية", "ذكرى سنوية"},
                      {"az", "İldönümü", "ildönümü"},
                      {"be", "Гадавіна", "гадавіна"},
                      {"bg", "Годишнина", "годишнина"},
                      {"bn", "বার্ষিকী", "বার্ষিকী"},
                      {"ca", "Data Commemorativa", "data commemorativa"},
                      {"cs", "Výročí", "výročí"},
                      {"cy", "Pen-Blwydd Priodas", "pen-blwydd priodas"},
                      {"da", "Årsdag", "årsdag"},
                      {"de", "Jahrestag", "Jahrestag"},
                      {"el", "Επέτειος", "επέτειος"},
                      {"en", "Anniversary", "anniversary"},
                      {"eo", "Datreveno", "datreveno"},
                      {"es", "Aniversario", "aniversario"},
                      {"et", "Aastapäev", "aastapäev"},
                      {"eu", "Urteurrena", "urteurrena"},
                      {"fa", "سالگرد", "سالگرد"},
                      {"fi", "Vuosipäivä", "vuosipäivä"},
                      {"fr", "Anniversaire De Mariage", "anniversaire de mariage"},
                      {"ga", "Comóradh", "comóradh"},
                      {"gl", "Data Conmemorativa", "data conmemorativa"},
                      {"he", "יום שנה", "יום שנה"},
                      {"hi", "वर्षगाँठ", "वर्षगाँठ"},
                      {"hr", "Obljetnica", "obljetnica"},
                      {"hu", "Évforduló", "évforduló"},
                      {"id", "Hari Jadi", "hari jadi"},
                      {"is", "Merkisdagur", "merkisdagur"},
                      {"it", "Anniversario", "anniversario"},
                      {"ja", "記念日", "記念日"},
                      {"ko", "기념일", "기념일"},
                      {"lt", "Metinės", "metinės"},
                      {"lv", "Gadadiena", "gadadiena"},
                      {"mk", "Годишнина", "годишнина"},
                      {"ms", "Ulang Tahun", "ulang tahun"},
                      {"nb", "Årsdag", "årsdag"},
                      {"nl", "Jubileum", "jubileum"},
                      {"nn", "Årsdag", "årsdag"},
                      {"no", "Årsdag", "årsdag"},
                      {"pl", "Rocznica", "rocznica"},
                      {"pt-PT", "Data Comemorativa", "data comemorativa"},
                      {"pt", "Data Comemorativa", "data comemorativa"},
                      {"ro", "Aniversare", "aniversare"},
                      {"ru", "Годовщина", "годовщина"},
                      {"sk", "Výročie", "výročie"},
                      {"sl", "Obletnica", "obletnica"},
                      {"sq", "Përvjetor", "përvjetor"},
                      {"sr", "Годишњица", "годишњица"},
                      {"sv", "Årsdag", "årsdag"},
                      {"sw", "Maadhimisho", "maadhimisho"},
                      {"th", "วันครบรอบ", "วันครบรอบ"},
                      {"tr", "Yıl Dönümü", "yıl dönümü"},
                      {"uk", "Річниця", "річниця"},
                      {"vi", "Ngày Kỷ Niệm", "ngày kỷ niệm"},
                      {"zh-Hans", "纪念日", "纪念日"},
                      {"zh-Hant", "紀念日", "紀念日"}};
  const PosixFileManager files;
  const NSBundle framework(files, kResources + "/system/Library/Frameworks/AddressBook.framework");
  RecordingLog log;
  std::set<std::string> seen;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.language);
    seen.insert(row.language);
    const ABAddressBook book(files, log, "/nowhere", framework, {row.language});
    const std::string anniversary = book.localizedPropertyOrLabel(kABAnniversaryLabel);
    EXPECT_EQ(anniversary, row.title);
    EXPECT_EQ(book.capitalized(anniversary), row.dateType);
    EXPECT_EQ(text(readTable(kAgent, row.language), row.dateType), row.title);
  }
  EXPECT_EQ(seen, languagesIn(kFramework));
}

TEST(LabelTables, SpeakPlainEnglish) {
  const auto titles = readTable(kAgent, "en");
  EXPECT_EQ(text(titles, "birthday"), "birthday");
  EXPECT_EQ(text(titles, "_$!<Other>!$_"), "other");
  EXPECT_EQ(text(titles, "_$!<HomePage>!$_"), "home page");
}

TEST(ContactsModels, DescribeWhatEachFamilyHas) {
  struct Row {
    const char* file;
    bool notesOwnCardOnInfo, hasContainers;
  };
  for (const Row& row :
       {Row{"ABAddressBook.abz", false, false}, Row{"ABAddressBook.abmom", true, false},
        Row{"ABAddressBook.momd", true, true}}) {
    SCOPED_TRACE(row.file);
    const auto model = NSManagedObjectModel::initWithContentsOfURL(PosixFileManager(),
                                                                   kFramework + "/" + row.file);
    ASSERT_TRUE(model) << model.error().text();
    const auto* contact = model->entityForName("ABCDContact");
    const auto* subscribed = model->entityForName("ABCDSubscribedContact");
    const auto* date = model->entityForName("ABCDContactDate");
    const auto* group = model->entityForName("ABCDGroup");
    const auto* smart = model->entityForName("ABCDSmartGroup");
    const auto* info = model->entityForName("ABCDInfo");
    ASSERT_TRUE(contact && subscribed && date && group && smart && info);
    for (const char* attribute : {"uniqueId", "firstName", "middleName", "lastName", "nickname",
                                  "organization", "displayFlags", "birthday"}) {
      EXPECT_TRUE(contact->attributeIndex(attribute)) << attribute;
      EXPECT_TRUE(subscribed->attributeIndex(attribute)) << attribute;
    }
    EXPECT_EQ(contact->attributes[*contact->attributeIndex("birthday")].type, AttributeType::day);
    EXPECT_EQ(date->attributes[*date->attributeIndex("date")].type, AttributeType::day);
    EXPECT_TRUE(date->relationshipIndex("owner"));
    EXPECT_TRUE(contact->relationshipIndex("parentGroups"));
    EXPECT_TRUE(group->relationshipIndex("parentGroups"));
    EXPECT_TRUE(model->isKindOf(*subscribed, "ABCDContact"));
    EXPECT_FALSE(model->isKindOf(*smart, "ABCDGroup"));
    EXPECT_EQ(info->relationshipIndex("me").has_value(), row.notesOwnCardOnInfo);
    EXPECT_EQ(model->entityForName("CNCDContainer") != nullptr, row.hasContainers);
  }
}

TEST(ContactsModels, ReadTheStoresOfEveryGeneration) {
  StoredPerson ann{.birthday = StoredDay{1980, 6, 10},
                   .dates = {{.label = "First met", .day = StoredDay{1999, 5, 1}}}};
  StoredPerson bob{.birthday = StoredDay{1604, 2, 29}, .isSubscribed = true};
  PosixFileManager files;
  const ManualClock clock(kReferenceDate);
  for (const char* name : {"ABAddressBook.abz", "ABAddressBook.abmom", "ABAddressBook.momd"}) {
    const auto model = NSManagedObjectModel::initWithContentsOfURL(files, kFramework + "/" + name);
    ASSERT_TRUE(model);
    for (const GenerationFacts& facts : kGenerations) {
      SCOPED_TRACE(std::string(name) + " " + facts.name);
      StoreFile file;
      file.write(facts.generation, {ann, StoredPerson{}, bob},
                 {{.name = "Inner", .people = {0}},
                  {.name = "Outer", .subgroups = {0}, .kind = StoredGroup::Kind::subscribed},
                  {.name = "Search", .kind = StoredGroup::Kind::smart}});
      NSPersistentStoreCoordinator coordinator(*model, {files, clock, NSTimeZone()});
      const auto added = coordinator.addPersistentStore(StoreType::sqlite, file.path());
      ASSERT_TRUE(added) << added.error().text();
      NSManagedObjectContext context;
      context.setPersistentStoreCoordinator(&coordinator);
      const auto born = NSPredicateFormat::parse("((birthday != nil))").with({});
      const auto people = context.executeFetchRequest({"ABCDContact", born});
      const auto dates = context.executeFetchRequest({"ABCDContactDate", std::nullopt});
      const auto groups = context.executeFetchRequest({"ABCDGroup", std::nullopt});
      ASSERT_TRUE(people && dates && groups);
      ASSERT_EQ(people->size(), 2U);
      ASSERT_EQ(dates->size(), 1U);
      ASSERT_EQ(groups->size(), 2U);
      EXPECT_EQ(dates->front()->toOne("owner"), people->front());
      EXPECT_EQ(people->front()->toMany("parentGroups").size(), 1U);
      EXPECT_EQ(groups->front()->toMany("parentGroups").size(), 1U);
    }
  }
}

TEST(LedgerModel, HasExactlyTheFourAttributes) {
  const auto model =
      NSManagedObjectModel::initWithContentsOfURL(PosixFileManager(), kAgent + "/Ledger.mom");
  ASSERT_TRUE(model) << model.error().text();
  EXPECT_EQ(model->entities().size(), 1U);
  const auto* event = model->entityForName("Event");
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->attributes.size(), 4U);
  for (const char* attribute : {"myUID", "calendarUID", "iCalUID"}) {
    ASSERT_TRUE(event->attributeIndex(attribute)) << attribute;
    EXPECT_EQ(event->attributes[*event->attributeIndex(attribute)].type, AttributeType::string);
  }
  ASSERT_TRUE(event->attributeIndex("date"));
  EXPECT_EQ(event->attributes[*event->attributeIndex("date")].type, AttributeType::date);
  EXPECT_TRUE(event->relationships.empty());
}

TEST(SystemFolder, IsOfTheNewestFamilyThatHasAModel) {
  const PosixFileManager files;
  EXPECT_EQ(Gestalt(files, kResources + "/system").query(kGestaltSystemVersion), 0x1075);
}

}  // namespace
}  // namespace annivo
