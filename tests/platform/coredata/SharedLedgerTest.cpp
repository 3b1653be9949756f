// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/platform/coredata/LedgerFixture.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

/// A ledger that other programs put, change or keep elsewhere.
struct SharedLedger : testing::Test, LedgerFixture {};

TEST_F(SharedLedger, ClosingAFileThatSomebodyPutInItsPlaceFails) {
  const auto generation = [](const std::string& number) {
    std::string text = document(object("z102", "theirs"));
    const std::string empty = "<metadata></metadata>";
    return text.replace(text.find(empty), empty.size(),
                        "<metadata><plist><dict><key>AnnivoGeneration</key><integer>" + number +
                            "</integer></dict></plist></metadata>");
  };
  const struct {
    const char* name;
    std::string theirs;
  } rows[] = {{"a higher generation", generation("99")},
              {"the same generation", generation("1")},
              {"an earlier generation", document(object("z102", "theirs"))},
              {"a damaged one", "<database>"}};
  for (const bool changes : {true, false}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(row.name);
      if (folder.exists("L.xml")) folder.remove("L.xml");
      fill({"a"});
      auto store = open();
      ASSERT_EQ(myUIDs(*store), std::vector<std::string>{"a"});
      if (changes) insert(*store, "b");
      ASSERT_TRUE(store->save().ok());
      write(row.theirs);
      const auto closed = store->close();
      ASSERT_FALSE(closed.ok());
      EXPECT_NE(closed.error().text().find(path()), std::string::npos);
      EXPECT_EQ(file(), row.theirs);
      if (hasJournal()) folder.remove("L.xml.journal");
    }
  }
}

TEST_F(SharedLedger, ClosingAFileThatSomebodyRemovedFails) {
  fill({"a"});
  auto store = open();
  insert(*store, "b");
  ASSERT_TRUE(store->save().ok());
  folder.remove("L.xml");
  EXPECT_FALSE(store->close().ok());
}

TEST_F(SharedLedger, ClosingSucceedsWhereAnotherStoreHasWhatWasSaved) {
  for (const bool isClosed : {false, true}) {
    SCOPED_TRACE(isClosed ? "in the file" : "in the journal");
    if (folder.exists("L.xml")) folder.remove("L.xml");
    fill({"a", "gone", "kept"});
    auto store = open();
    insert(*store, "b");
    set(*store, *all(*store).front(), "iCalUID", "another");
    store->remove(*all(*store).at(1));
    ASSERT_TRUE(store->save().ok());
    auto other = open();
    insert(*other, "c");
    ASSERT_TRUE(other->save().ok());
    if (isClosed) {
      ASSERT_TRUE(other->close().ok());
    }
    EXPECT_TRUE(store->close().ok());
    if (!isClosed) {
      ASSERT_TRUE(other->close().ok());
    }
    auto again = open();
    EXPECT_EQ(myUIDs(*again), (std::vector<std::string>{"a", "kept", "b", "c"}));
  }
}

struct LinkedLedger : testing::Test, LedgerFixture {
  LinkedLedger() {
    folder.makeFolder("elsewhere");
    fs::create_symlink("elsewhere/real.xml", path());
  }
  void expectALinkTo(const std::vector<std::string>& uids) {
    EXPECT_TRUE(fs::is_symlink(path()));
    EXPECT_EQ(fs::read_symlink(path()), "elsewhere/real.xml");
    auto store = open();
    EXPECT_EQ(myUIDs(*store), uids);
  }
};

TEST_F(LinkedLedger, StaysALinkThroughEverySave) {
  fill({"a"});
  expectALinkTo({"a"});
  EXPECT_TRUE(fs::is_regular_file(folder.path("elsewhere/real.xml")));
  {
    auto store = open();
    insert(*store, "b");
    ASSERT_TRUE(store->save().ok());
    EXPECT_TRUE(hasJournal()) << "beside the link";
    insert(*store, "c");
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }
  expectALinkTo({"a", "b", "c"});
  EXPECT_EQ(folder.snapshot().size(), 3U) << "nothing else is left: folder, file, link";
}

TEST_F(LinkedLedger, KeepsItsFileWhereASaveIsCutOff) {
  fill({"a"});
  {
    auto store = open();
    insert(*store, "b");
    ASSERT_TRUE(store->save().ok());
  }
  expectALinkTo({"a", "b"});
}

TEST_F(LinkedLedger, SetsADamagedFileAsideWhereItLies) {
  folder.writeFile("elsewhere/real.xml", "<database>");
  {
    auto store = open();
    insert(*store, "new");
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }
  expectALinkTo({"new"});
  EXPECT_EQ(folder.readFile("elsewhere/real.xml.damaged-20261120T184600Z"), "<database>");
}

TEST_F(LinkedLedger, IsNotMadeAFileWhereItsFolderIsMissing) {
  folder.remove("elsewhere");
  auto store = open();
  insert(*store, "new");
  EXPECT_FALSE(store->save().ok());
  EXPECT_TRUE(fs::is_symlink(path()));
}

TEST_F(LinkedLedger, IsUnreadableWhereLinksGoInACircle) {
  folder.remove("L.xml");
  fs::create_symlink("L.xml", path());
  auto store = open();
  const auto loaded = store->load();
  ASSERT_FALSE(loaded.ok());
  EXPECT_EQ(loaded.error().kind, Error::Kind::unreadable);
  EXPECT_TRUE(store->close().ok());
  EXPECT_TRUE(fs::is_symlink(path()));
}

TEST_F(LinkedLedger, IsUnreadableWhereSomebodyElseMadeIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a link away";
  fill({"a"});
  ASSERT_EQ(::lchown(path().c_str(), 12345, 12345), 0);
  auto store = open();
  const auto loaded = store->load();
  ASSERT_FALSE(loaded.ok());
  EXPECT_EQ(loaded.error().kind, Error::Kind::unreadable);
  EXPECT_NE(loaded.error().text().find("somebody else"), std::string::npos);
}

}  // namespace
}  // namespace annivo
