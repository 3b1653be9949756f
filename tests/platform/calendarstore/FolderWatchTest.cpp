// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/calendarstore/FolderWatch.h"
#include "tests/support/Doubles.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {
namespace {

class FolderWatchTest : public testing::Test {
 protected:
  FolderWatchTest() {
    files_.makeFolders("/h/events");
    watch_.begin("/h/events");
  }
  /// As another program does.
  void write(const std::string& path) {
    clock_.advance(std::chrono::seconds{1});
    ASSERT_TRUE(files_.writeAtomically(path, "x").ok());
  }
  void writeOwn(const std::string& path) {
    const FolderWatch::OwnChange own(watch_, path);
    write(path);
  }

  ManualClock clock_{utc(2026, 11, 20)};
  MemoryFileManager files_{clock_};
  FolderWatch watch_{files_};
};

TEST_F(FolderWatchTest, SeesNobodyWhereNothingChanges) { EXPECT_FALSE(watch_.sawOthers()); }

TEST_F(FolderWatchTest, SeesNobodyInOwnChanges) {
  writeOwn("/h/events/a");
  writeOwn("/h/events/b");
  EXPECT_FALSE(watch_.sawOthers());
}

TEST_F(FolderWatchTest, SeesAChangeOfSomebodyElse) {
  write("/h/events/theirs");
  EXPECT_TRUE(watch_.sawOthers());
}

TEST_F(FolderWatchTest, SeesItBeforeBetweenAndAfterOwnChanges) {
  for (const int place : {0, 1, 2}) {
    FolderWatch watch(files_);
    watch.begin("/h/events");
    for (int own = 0; own < 3; ++own) {
      if (own == place) write("/h/events/theirs");
      if (own == 2) break;
      const FolderWatch::OwnChange change(watch, "/h/events/ours");
      write("/h/events/ours");
    }
    EXPECT_TRUE(watch.sawOthers()) << place;
  }
}

TEST_F(FolderWatchTest, PassesOverFoldersThatAreNotWatched) {
  files_.makeFolders("/h/others");
  write("/h/others/theirs");
  writeOwn("/h/others/ours");
  EXPECT_FALSE(watch_.sawOthers());
}

TEST_F(FolderWatchTest, SeesAFolderThatComesOrGoes) {
  watch_.begin("/h/later");
  EXPECT_FALSE(watch_.sawOthers());
  files_.makeFolders("/h/later");
  EXPECT_TRUE(watch_.sawOthers());
}

TEST_F(FolderWatchTest, BegunAgainItKeepsWhatItKnows) {
  write("/h/events/theirs");
  watch_.begin("/h/events");
  EXPECT_TRUE(watch_.sawOthers());
}

}  // namespace
}  // namespace annivo
