// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "parent/settings/Contacts.h"
#include "parent/settings/Session.h"
#include "parent/settings/Words.h"
#include "parent/sources/Import.h"
#include "parent/sources/LastingIdentifier.h"
#include "tests/parent/support/CommandHome.h"
#include "tests/support/FailingFileManager.h"

namespace annivo {
namespace {

const std::string kAnn =
    vCard("FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:19800610\nANNIVERSARY:20050917\nUID:u1\n");
const std::string kBob = vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:--0229\nUID:u2\n");

/// A home with vCard files to import.
class Import : public testing::Test {
 protected:
  Result<ImportReport> import(const std::vector<std::string>& paths,
                              std::optional<std::string> me = {},
                              const std::string& source = "vCards") {
    std::vector<std::string> full;
    for (const std::string& path : paths) full.push_back(home.path(path));
    auto report = importVCards(home.platform(), {full, source, std::move(me)},
                               [](std::uint64_t, std::uint64_t) {});
    home.endRun();
    return report;
  }

  ImportReport imported(const std::string& cards) {
    home.writeFile("cards.vcf", cards);
    auto report = import({"cards.vcf"});
    EXPECT_TRUE(report.ok()) << (report ? "" : report.error().description);
    return report ? *report : ImportReport();
  }

  /// "Ann Smith u1:ABPerson 1980-06-10" for each person with dates.
  std::vector<std::string> peopleInBook() {
    std::vector<std::string> lines;
    for (const ListedPerson& person : Contacts(home.platform()).people()) {
      std::string line = person.name + ' ' + person.uid;
      for (const auto& date : person.dates) {
        line += ' ' + shownDay(*date.thisDate, home.platform().defaultTimeZone());
      }
      lines.push_back(line);
    }
    home.endRun();
    return lines;
  }

  std::vector<std::string> groupsInBook() {
    std::vector<std::string> lines;
    for (const ListedGroup& group : Contacts(home.platform()).groups()) {
      lines.push_back(group.name + ' ' + std::to_string(group.people));
    }
    home.endRun();
    return lines;
  }

  static std::string sourceFolder(const std::string& name = "vCards") {
    return "Library/Application Support/AddressBook/Sources/" +
           lastingIdentifier(JoinedFields() << "source" << name);
  }

  static std::string store() { return sourceFolder() + "/AddressBook-v22.abcddb"; }

  TestHome home;
};

TEST_F(Import, PutsPeopleAndDatesIntoASourceOfTheAddressBook) {
  const ImportReport report = imported(kAnn + kBob);
  EXPECT_EQ(report.people, 2U);
  EXPECT_EQ(report.dates, 3U);
  EXPECT_TRUE(report.changed);
  EXPECT_EQ(peopleInBook(), (std::vector<std::string>{"Ann Smith u1:ABPerson 1980-06-10 2005-09-17",
                                                      "Bob Jones u2:ABPerson --02-29"}));
  EXPECT_TRUE(home.exists(sourceFolder() + "/AddressBook-v22.abcddb"));
}

TEST_F(Import, OfTheSameCardsAgainWritesNothing) {
  (void)imported(kAnn + vCard("FN:No UID\nBDAY:20010203\nitem1.X-ABDATE:20020304\nCATEGORIES:A\n"));
  const auto before = home.folder().fingerprint("Library");
  EXPECT_FALSE(imported(kAnn + vCard("FN:No UID\nBDAY:20010203\nitem1.X-ABDATE:20020304\n"
                                     "CATEGORIES:A\n"))
                   .changed);
  EXPECT_EQ(home.folder().fingerprint("Library"), before);
}

TEST_F(Import, TouchesTheMetadataFolderOnlyWhenSomethingChanged) {
  (void)imported(kAnn);
  const std::string metadata = sourceFolder() + "/Metadata";
  home.touch(metadata, utc(2020, 1, 1));
  (void)imported(kAnn);
  EXPECT_EQ(home.folder().modificationDate(metadata), utc(2020, 1, 1));
  (void)imported(kBob);
  EXPECT_GT(home.folder().modificationDate(metadata), utc(2020, 1, 1));
}

TEST_F(Import, ReplacesTheSourceAsAWhole) {
  (void)imported(kAnn);
  (void)imported(kBob);
  EXPECT_EQ(peopleInBook(), (std::vector<std::string>{"Bob Jones u2:ABPerson --02-29"}));
}

TEST_F(Import, KeepsOtherSources) {
  home.writeFile("a.vcf", kAnn);
  home.writeFile("b.vcf", kBob);
  ASSERT_TRUE(import({"a.vcf"}, {}, "home").ok());
  ASSERT_TRUE(import({"b.vcf"}, {}, "work").ok());
  EXPECT_EQ(peopleInBook().size(), 2U);
}

TEST_F(Import, WritesTheSourceAgainWhenItsStoreIsGone) {
  (void)imported(kAnn);
  home.folder().remove(sourceFolder() + "/AddressBook-v22.abcddb");
  EXPECT_TRUE(imported(kAnn).changed);
  EXPECT_EQ(peopleInBook().size(), 1U);
}

TEST_F(Import, ReadsASyncedFolderWithItsSubfolders) {
  home.writeFile("vdir/home/b.vcf", kBob);
  home.writeFile("vdir/office/a.VCF", kAnn);
  home.writeFile("vdir/.hidden.vcf", vCard("FN:Hidden\n"));
  home.writeFile("vdir/displayname", "Contacts");
  home.writeFile("vdir/home/b.vcf.tmp", vCard("FN:Unfinished\n"));
  const auto report = import({"vdir"});
  ASSERT_TRUE(report.ok());
  EXPECT_EQ(report->people, 2U);
}

TEST_F(Import, KeepsUIDsWhateverTheyHold) {
  (void)imported(vCard("FN:A\nBDAY:20000101\nUID:../../etc/passwd\n") +
                 vCard("FN:B\nBDAY:20000101\nUID:*?%@\\n'; DROP TABLE\n") +
                 vCard("FN:C\nBDAY:20000101\nUID:X:ABPerson\n"));
  EXPECT_EQ(peopleInBook(), (std::vector<std::string>{"A ../../etc/passwd:ABPerson 2000-01-01",
                                                      "B *?%@\n'; DROP TABLE:ABPerson 2000-01-01",
                                                      "C X:ABPerson 2000-01-01"}));
}

TEST_F(Import, DerivesAMissingUIDFromTheNames) {
  (void)imported(vCard("FN:Ann Smith\nBDAY:19800610\n"));
  const auto first = peopleInBook();
  (void)imported(vCard("FN:Ann Smith\nBDAY:19800610\nTEL:123\nREV:2026\n"));
  EXPECT_EQ(peopleInBook(), first);
  ASSERT_EQ(first.size(), 1U);
  EXPECT_TRUE(first[0].find(":ABPerson") != std::string::npos) << first[0];
}

TEST_F(Import, TellsNamesakesWithoutUIDsApart) {
  const ImportReport report =
      imported(vCard("FN:Ann\nBDAY:19800610\n") + vCard("FN:Ann\nBDAY:19900610\n") +
               vCard("FN:Ann\nBDAY:19900610\n"));
  EXPECT_EQ(report.people, 2U);
  ASSERT_EQ(report.skippedCards.size(), 1U);
  EXPECT_EQ(report.skippedCards[0].reason, "the same card came before");
}

TEST_F(Import, SkipsASecondCardOfTheSameUID) {
  const ImportReport report = imported(kAnn + vCard("FN:Other\nUID:urn:uuid:u1\n"));
  EXPECT_EQ(report.people, 1U);
  ASSERT_EQ(report.skippedCards.size(), 1U);
  EXPECT_EQ(report.skippedCards[0].where, home.path("cards.vcf") + ":9 Other");
  EXPECT_EQ(report.skippedCards[0].reason, "a card with the same UID came before");
}

TEST_F(Import, MakesGroupsOfCategoriesAndGroupCards) {
  (void)imported(
      vCard("FN:Everyone\nX-ADDRESSBOOKSERVER-KIND:group\nUID:g1\n"
            "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:g2\n") +
      vCard("FN:Friends\nX-ADDRESSBOOKSERVER-KIND:group\nUID:g2\n"
            "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:u1\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:gone\n") +
      kAnn + vCard("FN:Bob\nBDAY:--0229\nUID:u2\nCATEGORIES:Work\\, old,Friends\n"));
  EXPECT_EQ(groupsInBook(), (std::vector<std::string>{"Everyone 2", "Friends 2", "Work, old 1"}));
}

TEST_F(Import, TakesGroupsThatFormACircle) {
  (void)imported(vCard("FN:A\nX-ADDRESSBOOKSERVER-KIND:group\nUID:g1\n"
                       "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:g2\n") +
                 vCard("FN:B\nX-ADDRESSBOOKSERVER-KIND:group\nUID:g2\n"
                       "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:g1\n"
                       "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:u1\n") +
                 kAnn);
  EXPECT_EQ(groupsInBook(), (std::vector<std::string>{"A 1", "B 1"}));
}

TEST_F(Import, MarksTheOwnCardAndRemembersIt) {
  home.writeFile("cards.vcf", vCard("FN:Me\nUID:me-1\nEMAIL:me@example.org\n") + kAnn);
  ASSERT_TRUE(import({"cards.vcf"}, "me-1").ok());
  const auto email = [&] {
    const auto me = home.platform().sharedAddressBook().me();
    home.endRun();
    return me && !me->emails.entries.empty() ? me->emails.entries[0].value : std::string("none");
  };
  EXPECT_EQ(email(), "me@example.org");
  (void)imported(vCard("FN:Me\nUID:me-1\nEMAIL:new@example.org\n") + kAnn);
  EXPECT_EQ(email(), "new@example.org");
  (void)imported(kAnn);
  EXPECT_EQ(email(), "none");
}

TEST_F(Import, RefusesAnOwnCardThatIsNotThere) {
  home.writeFile("cards.vcf", kAnn);
  const auto report = import({"cards.vcf"}, "nobody");
  ASSERT_FALSE(report.ok());
  EXPECT_EQ(report.error().description.substr(0, 31), "no card has the UID \"nobody\"; t");
  EXPECT_FALSE(home.exists("Library/Application Support/AddressBook"));
}

// Bad input: one clear line, the previous source intact.

TEST_F(Import, SkipsBadCardsAndTakesTheOthers) {
  const ImportReport report =
      imported("BEGIN:VCARD\nFN:Never\n" + kAnn + vCard("FN:Bad \xFF name\n") +
               vCard("NOTE:" + std::string(2000000, 'x') + "\n") +
               vCard("X-ADDRESSBOOKSERVER-KIND:group\nUID:g\n"));
  EXPECT_EQ(report.people, 1U);
  std::vector<std::string> reasons;
  for (const LeftOut& card : report.skippedCards) reasons.push_back(card.reason);
  EXPECT_EQ(reasons, (std::vector<std::string>{
                         "the card never ends (END:VCARD is missing)", "FN: it is not valid UTF-8",
                         "the card is larger than 1 MiB", "the group has no name"}));
}

TEST_F(Import, ReadsUTF16WithAByteOrderMark) {
  std::string wide = "\xFF\xFE";
  for (const char c : kAnn) (wide += c) += '\0';
  EXPECT_EQ(imported(wide).people, 1U);
  std::string big = "\xFE\xFF";
  for (const char c : kAnn) (big += '\0') += c;
  EXPECT_EQ(imported(big).people, 1U);
}

TEST_F(Import, ReadsLineEndsOfBothKinds) {
  std::string text = "\xEF\xBB\xBF";
  for (const char c : kAnn) text += c == '\n' ? std::string("\r\n") : std::string(1, c);
  EXPECT_EQ(imported(text).dates, 2U);
}

struct Unusable {
  const char* name;
  const char* content;
};

TEST_F(Import, OfNothingUsableLeavesThePreviousSourceIntact) {
  (void)imported(kAnn);
  const auto before = home.folder().fingerprint("Library");
  for (const std::string& content :
       {std::string(), std::string("BEGIN:VCARD\nFN:Never"), std::string(3000000, 'x'),
        std::string(1000, '\0'), std::string("BEGIN:VCARD\nEND:VCARD")}) {
    home.writeFile("bad.vcf", content);
    const auto report = import({"bad.vcf"});
    if (report.ok()) {
      ADD_FAILURE() << "taken: " << content.substr(0, 40);
      continue;
    }
    EXPECT_EQ(report.error().description.find('\n'), std::string::npos);
    EXPECT_NE(report.error().description.find("bad.vcf"), std::string::npos);
  }
  EXPECT_EQ(home.folder().fingerprint("Library"), before);
}

TEST_F(Import, OfAMissingFileNamesIt) {
  const auto report = import({"missing.vcf"});
  ASSERT_FALSE(report.ok());
  EXPECT_NE(report.error().description.find("missing.vcf"), std::string::npos);
}

TEST_F(Import, OfAPipeIsRefusedAtOnce) {
  ASSERT_EQ(mkfifo(home.path("pipe.vcf").c_str(), 0600), 0);
  const auto report = import({"pipe.vcf"});
  ASSERT_FALSE(report.ok());
  EXPECT_NE(report.error().description.find("is neither a file nor a folder"), std::string::npos);
}

/// Runs `body` in a child without rights, or with a limit; its exit status.
template <typename Body>
int inChild(Body body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_F(Import, OfAFolderWithoutPermissionIsRefusedByItsName) {
  home.writeFile("open/closed/a.vcf", kAnn);
  ASSERT_EQ(chmod(home.path("open/closed").c_str(), 0000), 0);
  ASSERT_EQ(chmod(home.path().c_str(), 0755), 0);
  EXPECT_EQ(inChild([&] {
              if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) return 3;
              const auto report = importVCards(home.platform(), {{home.path("open")}, "vCards", {}},
                                               [](std::uint64_t, std::uint64_t) {});
              if (report.ok()) return 1;
              return report.error().description.find("open/closed") == std::string::npos ? 2 : 0;
            }),
            0);
  ASSERT_EQ(chmod(home.path("open/closed").c_str(), 0700), 0);
}

TEST_F(Import, OnADiskThatFillsLeavesThePreviousSourceIntact) {
  (void)imported(kAnn);
  const auto before = home.folder().fingerprint("Library");
  std::string many;
  for (int i = 0; i < 500; ++i) {
    many += vCard("FN:Person " + std::to_string(i) + "\nBDAY:19800610\nUID:p" + std::to_string(i) +
                  "\n");
  }
  home.writeFile("cards.vcf", many);
  EXPECT_EQ(inChild([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{65536, 65536};
              setrlimit(RLIMIT_FSIZE, &limit);
              const auto report = import({"cards.vcf"});
              if (report.ok()) return 1;
              return report.error().description.empty() ? 2 : 0;
            }),
            0);
  EXPECT_EQ(peopleInBook(),
            (std::vector<std::string>{"Ann Smith u1:ABPerson 1980-06-10 2005-09-17"}));
  const auto after = home.folder().snapshot(sourceFolder());
  for (const auto& [path, content] : after) EXPECT_EQ(path.find(".tmp"), path.npos) << path;
  EXPECT_EQ(before.size(), home.folder().fingerprint("Library").size());
}

TEST_F(Import, ThatFailsAtAnyChangeLeavesAWholeSourceAndMendsItself) {
  (void)imported(kAnn);
  home.writeFile("cards.vcf", kAnn + kBob);
  PosixFileManager disk;
  for (std::size_t change = 1; change < 12; ++change) {
    home.writeFile("one.vcf", kAnn);
    ASSERT_TRUE(import({"one.vcf"}).ok());
    FailingFileManager failing(disk);
    home.useFileManager(&failing);
    failing.failChangesFrom(change);
    const auto report = import({"cards.vcf"});
    home.useFileManager(nullptr);
    const std::size_t people = peopleInBook().size();
    EXPECT_TRUE(people == 1 || people == 2) << change;
    if (report.ok()) {
      EXPECT_EQ(people, 2U);
    }
    ASSERT_TRUE(import({"cards.vcf"}).ok()) << change;
    EXPECT_EQ(peopleInBook().size(), 2U) << change;
    const auto again = import({"cards.vcf"});
    ASSERT_TRUE(again.ok());
    EXPECT_FALSE(again->changed) << change;
  }
}

TEST_F(Import, ThatFailsAtOneStepSaysSoAndKeepsTheOldStoreUnlessTheNewIsThere) {
  PosixFileManager disk;
  home.writeFile("one.vcf", kAnn);
  home.writeFile("cards.vcf", kAnn + kBob);
  constexpr std::size_t kSteps = 6;  // three logs removed, the store, its Metadata, Configuration
  for (std::size_t step = 1; step <= kSteps + 1; ++step) {
    ASSERT_TRUE(import({"one.vcf"}).ok());
    const std::string before = home.readFile(store());
    FailingFileManager failing(disk);
    home.useFileManager(&failing);
    failing.failChange(step);
    const auto report = import({"cards.vcf"});
    home.useFileManager(nullptr);
    EXPECT_EQ(report.ok(), step > kSteps) << step;
    if (!report.ok()) {
      EXPECT_NE(report.error().description.find(sourceFolder()), std::string::npos);
    }
    EXPECT_EQ(home.readFile(store()) == before, step <= 4) << step;
    EXPECT_EQ(peopleInBook().size(), step <= 4 ? 1U : 2U) << step;
  }
}

TEST_F(Import, LeavesNoLogOfTheOldStoreBesideTheNew) {
  (void)imported(kAnn);
  for (const char* log : {"-journal", "-wal", "-shm"}) home.writeFile(store() + log, "old");
  (void)imported(kBob);
  for (const char* log : {"-journal", "-wal", "-shm"}) EXPECT_FALSE(home.exists(store() + log));
  EXPECT_EQ(peopleInBook(), (std::vector<std::string>{"Bob Jones u2:ABPerson --02-29"}));
}

}  // namespace
}  // namespace annivo
