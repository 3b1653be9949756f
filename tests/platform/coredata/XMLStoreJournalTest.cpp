// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/platform/coredata/LedgerFixture.h"

namespace annivo {
namespace {

struct XMLStoreJournalFile : testing::Test, LedgerFixture {
  [[nodiscard]] std::string journal() const { return folder.readFile("L.xml.journal"); }
  void writeJournal(const std::string& bytes) const { folder.writeFile("L.xml.journal", bytes); }
  /// A ledger of "a" and "b" with a journal of three saves: "c" came, "a" went, "b" became "B".
  void leaveAJournal() {
    folder.remove("L.xml.journal");
    folder.remove("L.xml");
    fill({"a", "b"});
    auto store = open();
    insert(*store, "c");
    ASSERT_TRUE(store->save().ok());
    store->remove(*all(*store).front());
    ASSERT_TRUE(store->save().ok());
    set(*store, *all(*store).front(), "myUID", "B");
    ASSERT_TRUE(store->save().ok());
  }
};

const std::vector<std::string> kAll = {"B", "c"};

TEST_F(XMLStoreJournalFile, ASaveGoesToTheJournalAndCloseFoldsIt) {
  fill({"a", "b"});
  const std::string before = file();
  auto store = open();
  insert(*store, "c");
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(file(), before);
  EXPECT_TRUE(hasJournal());
  ASSERT_TRUE(store->close().ok());
  EXPECT_FALSE(hasJournal());
  EXPECT_NE(file().find(">c<"), std::string::npos);
}

TEST_F(XMLStoreJournalFile,
       WhatAnInterruptedProcessSavedIsReplayedAndReplayingAgainChangesNothing) {
  leaveAJournal();
  const std::string left = journal();
  for (int round = 0; round < 3; ++round) {
    auto store = open();
    EXPECT_EQ(myUIDs(*store), kAll);
    EXPECT_EQ(journal(), left);
  }
  auto store = open();
  EXPECT_EQ(myUIDs(*store), kAll);
  ASSERT_TRUE(store->close().ok());
  EXPECT_FALSE(hasJournal());
  auto again = open();
  EXPECT_EQ(myUIDs(*again), kAll);
}

TEST_F(XMLStoreJournalFile, CutAtEveryByteItLosesNoWholeEntryAndCanBeContinued) {
  leaveAJournal();
  const std::string whole = journal();
  const std::string base = file();
  std::vector<std::vector<std::string>> states = {{"a", "b"}, {"a", "b", "c"}, {"b", "c"}, kAll};
  std::size_t reached = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    write(base);
    writeJournal(whole.substr(0, length));
    auto store = open();
    const auto found = myUIDs(*store);
    EXPECT_FALSE(store->damage()) << "length " << length;
    while (reached + 1 < states.size() && found == states[reached + 1]) ++reached;
    EXPECT_EQ(found, states[reached]) << "length " << length;
    insert(*store, "x");
    ASSERT_TRUE(store->save().ok());
    auto again = open();
    auto expected = states[reached];
    expected.push_back("x");
    EXPECT_EQ(myUIDs(*again), expected) << "length " << length;
  }
  EXPECT_EQ(reached, 3U);
}

TEST_F(XMLStoreJournalFile, AFlippedByteEndsItThere) {
  leaveAJournal();
  const std::string whole = journal();
  const std::string base = file();
  for (std::size_t i = whole.find("\nentry") + 1; i < whole.size(); ++i) {
    write(base);
    std::string damaged = whole;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x20);
    writeJournal(damaged);
    auto store = open();
    const auto found = myUIDs(*store);
    EXPECT_FALSE(store->damage());
    const bool known = found == std::vector<std::string>{"a", "b"} ||
                       found == std::vector<std::string>{"a", "b", "c"} ||
                       found == std::vector<std::string>{"b", "c"} || found == kAll;
    EXPECT_TRUE(known) << "byte " << i;
  }
}

TEST_F(XMLStoreJournalFile, AJournalThatWasFoldedAlreadyIsNotReplayed) {
  leaveAJournal();
  const std::string stale = journal();
  {
    auto store = open();
    all(*store);
    ASSERT_TRUE(store->close().ok());
  }
  {
    auto store = open();
    insert(*store, "a again");
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }
  writeJournal(stale);
  auto store = open();
  EXPECT_EQ(myUIDs(*store), (std::vector<std::string>{"B", "c", "a again"}));
  EXPECT_FALSE(store->damage());
  ASSERT_TRUE(store->close().ok());
  EXPECT_FALSE(hasJournal());
}

TEST_F(XMLStoreJournalFile, AJournalOfAnotherFileIsSetAside) {
  leaveAJournal();
  const std::string stale = journal();
  write(document(object("z102", "other")));
  auto store = open();
  EXPECT_EQ(myUIDs(*store), std::vector<std::string>{"other"});
  ASSERT_TRUE(store->damage());
  EXPECT_NE(store->damage()->text().find("L.xml.journal"), std::string::npos);
  ASSERT_TRUE(store->close().ok());
  EXPECT_EQ(folder.readFile("L.xml.journal.damaged-20261120T184600Z"), stale);
  EXPECT_FALSE(hasJournal());
}

TEST_F(XMLStoreJournalFile, WhatIsNoJournalIsSetAside) {
  for (const std::string& text :
       {std::string("no journal at all"), std::string("Annivo ledger journal x\nbase 1 2 3\n"),
        std::string("Annivo ledger journal 1\nbase x\n"),
        "Annivo ledger journal 1 " + std::string(200, 'x')}) {
    leaveAJournal();
    writeJournal(text);
    auto store = open();
    EXPECT_EQ(all(*store).size(), 2U);
    EXPECT_TRUE(store->damage()) << text;
    ASSERT_TRUE(store->close().ok());
    EXPECT_EQ(folder.readFile("L.xml.journal.damaged-20261120T184600Z"), text);
    folder.remove("L.xml.journal.damaged-20261120T184600Z");
  }
}

TEST_F(XMLStoreJournalFile, AJournalOfZerosAfterAPowerLossSaysNothing) {
  leaveAJournal();
  const std::string whole = journal();
  for (const std::size_t kept : {std::size_t{0}, std::size_t{30}, whole.size() - 5}) {
    writeJournal(whole.substr(0, kept) + std::string(500, '\0'));
    auto store = open();
    EXPECT_GE(all(*store).size(), 2U);
    EXPECT_FALSE(store->damage()) << kept;
  }
}

TEST_F(XMLStoreJournalFile, AJournalWhoseFileIsGoneIsSetAside) {
  leaveAJournal();
  folder.remove("L.xml");
  auto store = open();
  EXPECT_TRUE(all(*store).empty());
  EXPECT_TRUE(store->damage());
  insert(*store, "new");
  ASSERT_TRUE(store->save().ok());
  EXPECT_TRUE(folder.exists("L.xml.journal.damaged-20261120T184600Z"));
  EXPECT_TRUE(folder.exists("L.xml"));
}

TEST_F(XMLStoreJournalFile, AJournalOfANewerFormIsLeftAlone) {
  leaveAJournal();
  std::string newer = journal();
  newer.replace(newer.find("journal 1"), 9, "journal 2");
  writeJournal(newer);
  const std::string base = file();
  auto store = open();
  EXPECT_EQ(all(*store).size(), 2U);
  insert(*store, "x");
  EXPECT_FALSE(store->save().ok());
  EXPECT_TRUE(store->close().ok());
  EXPECT_EQ(journal(), newer);
  EXPECT_EQ(file(), base);
}

TEST_F(XMLStoreJournalFile, AnUnreadableJournalMakesTheLedgerUnreadable) {
  leaveAJournal();
  files.makeUnreadable(path() + ".journal");
  auto store = open();
  EXPECT_FALSE(store->load().ok());
  EXPECT_FALSE(store->execute({"Event", {}}).ok());
  EXPECT_EQ(store->insert(*model->entityForName("Event")), nullptr);
}

TEST_F(XMLStoreJournalFile, ASaveCostsTheSameInALedgerOfAnySize) {
  std::vector<std::size_t> written;
  std::vector<std::size_t> operations;
  for (const int records : {100, 100'000}) {
    folder.remove("L.xml");
    {
      auto store = open();
      for (int i = 0; i < records; ++i) insert(*store, "uid-" + std::to_string(100'000 + i));
      ASSERT_TRUE(store->save().ok());
      ASSERT_TRUE(store->close().ok());
    }
    auto store = open();
    insert(*store, "uid-000001");
    ASSERT_TRUE(store->save().ok());
    const auto size = journal().size();
    const auto changes = files.changes().size();
    files.makeUnreadable(path());
    insert(*store, "uid-000002");
    ASSERT_TRUE(store->save().ok()) << "without a look into the ledger's file";
    written.push_back(journal().size() - size);
    operations.push_back(files.changes().size() - changes);
    files.makeReadable(path());
  }
  EXPECT_EQ(operations, (std::vector<std::size_t>{1, 1}));
  EXPECT_NEAR(static_cast<double>(written[0]), static_cast<double>(written[1]), 8);
  EXPECT_LT(written[0], 1000U);
}

TEST_F(XMLStoreJournalFile, TheWorkedExampleOfTheDocumentIsRight) {
  const auto document = files.contentsAtPath(ANNIVO_SOURCE_DIR "/docs/formats/ledger.md", 1 << 20);
  ASSERT_TRUE(document.ok());
  const auto block = [&](const std::string& begin) {
    const auto at = document->find(begin) + begin.size();
    return document->substr(at, document->find("```", at) - at);
  };
  write(block("```xml\n"));
  auto store = open();
  NSManagedObject* known = all(*store).front();
  NSManagedObject& added = insert(*store, "0C9A6D2B-8F34-4A1E-B7D0-5E2C8A9F1B63",
                                  kReferenceDate + std::chrono::seconds{819892800});
  set(*store, added, "calendarUID", known->valueForKey("calendarUID"));
  set(*store, added, "iCalUID", "C5D7E9F1-1B3D-4F5A-8C7E-0A2B4C6D8E0F");
  ASSERT_TRUE(store->save().ok());
  set(*store, *known, "iCalUID", "F0E1D2C3-B4A5-4687-9788-796A5B4C3D2E");
  ASSERT_TRUE(store->save().ok());
  store->remove(added);
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(journal(), block("3. removes z103 again.\n\n```\n"));
}

TEST_F(XMLStoreJournalFile, WhatComesAndGoesBetweenTwoSavesIsNeverWritten) {
  fill({"a"});
  auto store = open();
  store->remove(insert(*store, "fleeting"));
  ASSERT_TRUE(store->save().ok());
  EXPECT_FALSE(hasJournal());
  insert(*store, "b");
  store->remove(insert(*store, "fleeting"));
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(journal().find("fleeting"), std::string::npos);
  store->remove(*all(*store).back());
  ASSERT_TRUE(store->save().ok());
  ASSERT_TRUE(store->close().ok());
  auto again = open();
  EXPECT_EQ(myUIDs(*again), std::vector<std::string>{"a"});
}

}  // namespace
}  // namespace annivo
