// SPDX-License-Identifier: MIT
// A home in which an earlier build had imported contacts: its identifiers stay, so that no event is
// there twice and what the person set on events stays with them.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "platform/addressbook/AddressBookStoreWriter.h"
#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

/// What earlier builds made of these cards: its folder and its identifiers, of version 8.
const std::string kCards =
    vCard(
        "FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:19800610\nANNIVERSARY:20050917\nUID:u1\n"
        "CATEGORIES:Family\n") +
    vCard(
        "FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:--0229\nitem1.X-ABDATE:2010-01-02\n"
        "item1.X-ABLabel:First met\nCATEGORIES:Family\n") +
    vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:19900505\n");
const std::string kSources = "Library/Application Support/AddressBook/Sources";
const std::string kFolder = kSources + "/4B9EBC37-09C3-849F-8B2E-A23BDB6329D6";
const std::string kBob = "C55B6279-9223-810C-898B-4676E998A86B:ABPerson";
const std::string kOtherBob = "EFC9D10F-2312-81D8-8FE9-4F2B5997EFFB:ABPerson";
const std::string kFamily = "F662B463-AFBF-86C1-8007-406DCD323C14:ABGroup";

class EarlierHome : public testing::Test {
 protected:
  EarlierHome() {
    writeSource();
    home.folder.writeFile("cards.vcf", kCards);
    const std::string made = home.done({"calendars", "create", "Dates", "--for", "both"});
    events = "Library/Calendars/" + made.substr(0, made.find('\n')) + ".calendar/Events";
    (void)home.done({"settings", "group", "Family"});
    (void)home.done({"run"});
  }

  void writeSource() {
    const StoredPerson ann{.uniqueId = "u1:ABPerson",
                           .firstName = "Ann",
                           .lastName = "Smith",
                           .birthday = StoredDay{1980, 6, 10},
                           .dates = {{"457B2721-0F50-8F7C-8298-FC3465779E4D", "_$!<Anniversary>!$_",
                                      StoredDay{2005, 9, 17}}}};
    const StoredPerson bob{
        .uniqueId = kBob,
        .firstName = "Bob",
        .lastName = "Jones",
        .birthday = StoredDay{kYearOfNoYear, 2, 29},
        .dates = {{"86D0322C-36AC-83EA-83DE-3F82D5CD0458", "First met", StoredDay{2010, 1, 2}}}};
    const StoredPerson other{.uniqueId = kOtherBob,
                             .firstName = "Bob",
                             .lastName = "Jones",
                             .birthday = StoredDay{1990, 5, 5}};
    home.folder.makeFolder(kFolder + "/Metadata");
    PosixFileManager disk;
    const auto written = AddressBookStoreWriter::write(
        disk, home.folder.path(store()), StoreGeneration::current, {ann, bob, other},
        {{kFamily, "Family", {0, 1}, {}}}, utc(2026, 11, 20));
    ASSERT_TRUE(written.ok());
    home.folder.writeFile(
        kFolder + "/Configuration.plist",
        xmlPropertyList(PropertyList::Dictionary{
            {"name", "vCards"},
            {"digest", "1D6299B3-1088-8CD0-829E-6CF1AD06873B"},
            {"storeSize", static_cast<std::int64_t>(home.folder.readFile(store()).size())}}));
  }
  static std::string store() { return kFolder + "/AddressBook-v22.abcddb"; }
  void import() { (void)home.done({"import", home.folder.path("cards.vcf")}); }
  std::size_t sources() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(home.folder.path(kSources))) {
      names.insert(entry.path().filename());
    }
    return names.size();
  }

  ProgramHome home;
  std::string events;
};

TEST_F(EarlierHome, KeepsEveryEventAsItIsWhenTheCardsAreImportedAgain) {
  const auto before = home.folder.snapshot(events);
  ASSERT_EQ(before.size(), 12U);
  import();
  EXPECT_EQ(sources(), 1U);
  const std::string run = home.done({"run"});
  EXPECT_NE(run.find("Added (0)\nChanged (0)\nRemoved (0)\n"), std::string::npos) << run;
  EXPECT_EQ(home.folder.snapshot(events), before);
}

TEST_F(EarlierHome, GivesNewIdentifiersToWhatIsNewOnly) {
  home.folder.writeFile("cards.vcf", kCards + vCard("FN:Cid\nBDAY:20000101\nCATEGORIES:Family\n"));
  import();
  const std::string run = home.done({"run"});
  EXPECT_NE(run.find("Added (3)"), std::string::npos) << run;
  EXPECT_NE(run.find("Removed (0)"), std::string::npos) << run;
}

TEST_F(EarlierHome, KnowsNamesakesByTheirBirthdays) {
  home.folder.writeFile("cards.vcf", vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:19900505\n") +
                                         vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:19910505\n"));
  import();
  const std::string people = home.done({"people"});
  const auto line = [&](const std::string& uid) {
    const auto at = people.find(uid);
    if (at == people.npos) return std::string("none");
    const auto start = people.rfind('\n', at) + 1;
    return people.substr(start, at - start);
  };
  EXPECT_NE(line(kOtherBob).find("1990-05-05"), std::string::npos) << people;
  EXPECT_NE(line(kBob).find("1991-05-05"), std::string::npos) << people;
}

TEST_F(EarlierHome, WritesNothingWhenNothingChangedSinceTheFirstImportByThisRelease) {
  import();
  const auto before = home.folder.fingerprint("Library");
  import();
  EXPECT_EQ(home.folder.fingerprint("Library"), before);
}

TEST_F(EarlierHome, IsNotTakenForANewOneWhereItsConfigurationCannotBeRead) {
  const std::string configuration = home.folder.path(kFolder + "/Configuration.plist");
  std::filesystem::remove(configuration);
  std::filesystem::create_directory(configuration);
  const CommandOutcome outcome = home.inPipe({"import", home.folder.path("cards.vcf")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find(configuration), std::string::npos) << outcome.err;
  EXPECT_EQ(sources(), 1U);
}

TEST_F(EarlierHome, LeavesTheFoldersOfOtherProgramsAlone) {
  const std::string configuration = kFolder + "/Configuration.plist";
  home.folder.writeFile(configuration,
                        xmlPropertyList(PropertyList::Dictionary{{"name", "vCards"}}));
  const std::string before = home.folder.readFile(store());
  import();
  EXPECT_EQ(sources(), 2U);
  EXPECT_EQ(home.folder.readFile(store()), before);
}

}  // namespace
}  // namespace annivo
