// SPDX-License-Identifier: MIT
// What the doubles of the file manager do beyond the contract.
#include <gtest/gtest.h>

#include <set>

#include "tests/support/Doubles.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {
namespace {

using Files = std::map<std::string, std::string>;

class MemoryFileManagerTest : public testing::Test {
 protected:
  MemoryFileManagerTest() { files_.makeFolders("/h"); }
  void append(const std::string& path, std::string_view bytes) {
    const auto file = files_.openForAppending(path);
    ASSERT_TRUE(file);
    ASSERT_TRUE((*file)->append(bytes));
  }

  ManualClock clock_{utc(2026, 11, 20)};
  MemoryFileManager files_{clock_};
};

TEST_F(MemoryFileManagerTest, LosesWhatWasNotSynchronized) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "old"));
  ASSERT_TRUE(files_.synchronize("/h"));
  ASSERT_TRUE(files_.writeAtomically("/h/a", "new"));
  ASSERT_TRUE(files_.writeAtomically("/h/b", "b"));
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/a", "new"}, {"/h/b", "b"}}));
  files_.cutPower(PowerLoss::nothingKept);
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/a", "old"}}));
}

TEST_F(MemoryFileManagerTest, BringsARemovedFileBack) {
  ASSERT_TRUE(files_.writeDurably("/h/a", "x"));
  ASSERT_TRUE(files_.removeFile("/h/a"));
  files_.cutPower(PowerLoss::nothingKept);
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/a", "x"}}));
}

TEST_F(MemoryFileManagerTest, KeepsNamesWithoutTheContentBehindThem) {
  ASSERT_TRUE(files_.writeDurably("/h/a", "old"));
  ASSERT_TRUE(files_.writeAtomically("/h/a", "new"));
  append("/h/journal", "one");
  files_.cutPower(PowerLoss::namesKept);
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/a", ""}, {"/h/journal", ""}}));
}

TEST_F(MemoryFileManagerTest, KeepsTheSynchronizedPartOfAGrowingFile) {
  append("/h/journal", "one ");
  ASSERT_TRUE(files_.synchronize("/h"));
  append("/h/journal", "two");
  files_.cutPower(PowerLoss::namesKept);
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/journal", "one "}}));
}

TEST_F(MemoryFileManagerTest, MakesADurableFilesFolderAndItsNeighboursDurable) {
  ASSERT_TRUE(files_.createDirectory("/h/new"));
  ASSERT_TRUE(files_.createDirectory("/h/other"));
  ASSERT_TRUE(files_.writeAtomically("/h/new/early", "early"));
  ASSERT_TRUE(files_.writeAtomically("/h/other/x", "x"));
  ASSERT_TRUE(files_.writeDurably("/h/new/mark", "mark"));
  files_.cutPower(PowerLoss::nothingKept);
  EXPECT_EQ(files_.files("/h"), (Files{{"/h/new/early", ""}, {"/h/new/mark", "mark"}}));
  EXPECT_TRUE(files_.fileExistsAtPath("/h/other")) << "folders are durable when they are made";
}

TEST_F(MemoryFileManagerTest, ADurableFileInARenamedFolderIsLostWithTheRename) {
  ASSERT_TRUE(files_.createDirectory("/h/new"));
  ASSERT_TRUE(files_.rename("/h/new", "/h/renamed"));
  ASSERT_TRUE(files_.writeDurably("/h/renamed/mark", "mark"));
  files_.cutPower(PowerLoss::nothingKept);
  EXPECT_EQ(files_.files("/h"), Files());
}

TEST_F(MemoryFileManagerTest, KeepsAnyPartByChance) {
  std::set<Files> outcomes;
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    MemoryFileManager files(clock_);
    files.makeFolders("/h");
    ASSERT_TRUE(files.writeDurably("/h/a", "1"));
    ASSERT_TRUE(files.writeAtomically("/h/a", "23"));
    ASSERT_TRUE(files.rename("/h/a", "/h/b"));
    files.cutPower(PowerLoss::somethingKept, seed);
    const Files left = files.files("/h");
    EXPECT_EQ(left.size(), 1u) << "a rename was torn, seed " << seed;
    outcomes.insert(left);
  }
  EXPECT_TRUE(outcomes.contains({{"/h/a", "1"}}));   // neither the write nor the rename
  EXPECT_TRUE(outcomes.contains({{"/h/a", ""}}));    // the write's name, not its content
  EXPECT_TRUE(outcomes.contains({{"/h/a", "2"}}));   // a part of it
  EXPECT_TRUE(outcomes.contains({{"/h/b", "23"}}));  // all
}

TEST_F(MemoryFileManagerTest, IsTheSameForTheSameSeed) {
  const auto outcome = [&](std::uint64_t seed) {
    MemoryFileManager files(clock_);
    files.makeFolders("/h");
    for (int i = 0; i < 20; ++i) {
      EXPECT_TRUE(files.writeAtomically("/h/" + std::to_string(i), "0123456789"));
    }
    files.cutPower(PowerLoss::somethingKept, seed);
    return files.files("/h");
  };
  EXPECT_EQ(outcome(5), outcome(5));
  EXPECT_NE(outcome(5), outcome(6));
}

TEST_F(MemoryFileManagerTest, LosesNothingThatIsDurable) {
  for (std::uint64_t seed = 0; seed < 50; ++seed) {
    ASSERT_TRUE(files_.writeDurably("/h/kept", std::to_string(seed)));
    ASSERT_TRUE(files_.writeAtomically("/h/loose", "x"));
    files_.cutPower(PowerLoss::somethingKept, seed);
    EXPECT_EQ(*files_.contentsAtPath("/h/kept", 100), std::to_string(seed));
  }
}

TEST_F(MemoryFileManagerTest, FreesLocksAndForgetsOpenFilesWhenThePowerFails) {
  const auto lock = files_.lock("/h/lock");
  ASSERT_TRUE(lock);
  EXPECT_FALSE(files_.lock("/h/lock"));
  const auto file = files_.openForAppending("/h/journal");
  ASSERT_TRUE(files_.synchronize("/h"));
  files_.cutPower(PowerLoss::nothingKept);
  EXPECT_TRUE(files_.lock("/h/lock"));
  ASSERT_TRUE((*file)->append("lost"));
  EXPECT_EQ(*files_.contentsAtPath("/h/journal", 100), "");
}

TEST_F(MemoryFileManagerTest, DatesFilesAndFoldersByItsClock) {
  clock_.set(utc(2026, 11, 21));
  ASSERT_TRUE(files_.writeAtomically("/h/a", "x"));
  const auto date = [&](const std::string& path) {
    return files_.attributesAtPath(path, Links::follow)->modificationDate;
  };
  EXPECT_EQ(date("/h/a"), utc(2026, 11, 21));
  EXPECT_EQ(date("/h"), utc(2026, 11, 21));
  files_.touch("/h", utc(2000, 1, 1));
  EXPECT_EQ(date("/h"), utc(2000, 1, 1));
}

TEST_F(MemoryFileManagerTest, CountsWhatIsAskedOfIt) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "x"));
  append("/h/b", "x");
  (void)files_.contentsAtPath("/h/a", 100).ok();
  ASSERT_TRUE(files_.removeFile("/h/a"));
  EXPECT_EQ(files_.counts().reads, 1u);
  EXPECT_EQ(files_.counts().changes(), 3u);
  files_.resetCounts();
  EXPECT_EQ(files_.counts().changes(), 0u);
}

class FailingFileManagerTest : public testing::Test {
 protected:
  FailingFileManagerTest() { memory_.makeFolders("/h"); }

  ManualClock clock_{utc(2026, 11, 20)};
  MemoryFileManager memory_{clock_};
  FailingFileManager files_{memory_};
};

TEST_F(FailingFileManagerTest, FailsOneChangeAndNoOther) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "1"));
  files_.failChange(2, ENOSPC);
  EXPECT_TRUE(files_.writeAtomically("/h/b", "2"));
  const auto failed = files_.writeAtomically("/h/a", "3");
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, ENOSPC);
  EXPECT_TRUE(files_.writeAtomically("/h/c", "4"));
  EXPECT_EQ(memory_.files("/h"), (Files{{"/h/a", "1"}, {"/h/b", "2"}, {"/h/c", "4"}}));
  EXPECT_EQ(files_.changes().size(), 4u);
}

TEST_F(FailingFileManagerTest, FailsEveryKindOfChangeUntilTold) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "1"));
  const auto journal = files_.openForAppending("/h/j");
  ASSERT_TRUE(journal);
  files_.failChangesFrom(1);
  EXPECT_FALSE(files_.writeAtomically("/h/a", "2"));
  EXPECT_FALSE(files_.writeDurably("/h/a", "2"));
  EXPECT_FALSE((*journal)->append("x"));
  EXPECT_FALSE(files_.openForAppending("/h/k"));
  EXPECT_FALSE(files_.createDirectory("/h/f"));
  EXPECT_FALSE(files_.removeFile("/h/a"));
  EXPECT_FALSE(files_.rename("/h/a", "/h/b"));
  EXPECT_FALSE(files_.synchronize("/h"));
  EXPECT_FALSE(files_.lock("/h/l"));
  EXPECT_EQ(memory_.files("/h"), (Files{{"/h/a", "1"}, {"/h/j", ""}}));
  files_.failNoMore();
  EXPECT_TRUE(files_.removeFile("/h/a"));
}

TEST_F(FailingFileManagerTest, LeavesHalfAChangeWhereTheProcessIsKilled) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "old"));
  files_.killAtChange(1);
  EXPECT_FALSE(files_.writeAtomically("/h/a", "longer"));
  EXPECT_FALSE(files_.writeAtomically("/h/b", "b"));
  EXPECT_EQ(memory_.files("/h"), (Files{{"/h/a", "old"}, {"/h/.a.tmp", "lon"}}));

  files_.failNoMore();
  const auto journal = files_.openForAppending("/h/j");
  ASSERT_TRUE(journal);
  files_.killAtChange(1);
  EXPECT_FALSE((*journal)->append("abcd"));
  EXPECT_EQ(*memory_.contentsAtPath("/h/j", 100), "ab");
}

TEST_F(FailingFileManagerTest, HidesContentAndForbidsChanges) {
  ASSERT_TRUE(files_.writeAtomically("/h/a", "1"));
  files_.makeUnreadable("/h/a");
  files_.makeUnreadable("/h");
  files_.makeUnwritable("/h");
  EXPECT_EQ(files_.contentsAtPath("/h/a", 9).error().kind, Error::Kind::unreadable);
  EXPECT_EQ(files_.contentsOfDirectory("/h").error().kind, Error::Kind::unreadable);
  EXPECT_TRUE(files_.fileExistsAtPath("/h/a"));
  EXPECT_FALSE(files_.isWritable("/h"));
  EXPECT_FALSE(files_.isWritable("/h/a"));
  EXPECT_FALSE(files_.writeAtomically("/h/a", "2"));
}

}  // namespace
}  // namespace annivo
