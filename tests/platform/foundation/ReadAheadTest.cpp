// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/foundation/ReadAhead.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

using Names = std::vector<std::string>;

/// A folder with the files "a" to "e", each of its own content.
class ReadAheadTest : public testing::Test {
 protected:
  ReadAheadTest() {
    for (const char* name : {"a", "b", "c", "d", "e"}) {
      folder.writeFile(name, std::string("content of ") + name);
    }
    open = files.openFolder(folder.path());
  }
  /// Reads the files and makes them ready.
  void read(const Names& names) {
    ahead.prefetch(open, names);
    ahead.collect();
  }
  std::string claimed(std::string_view name) {
    return std::string(ahead.claim(*open, name).value_or("(none)"));
  }

  TemporaryFolder folder;
  PosixFileManager files;
  std::shared_ptr<const ReadableFolder> open;
  ReadAhead ahead{64};
};

TEST_F(ReadAheadTest, GivesEachFileOnceInWhateverOrder) {
  read({"a", "b", "c", "d", "e"});
  for (const char* name : {"a", "b", "e", "c", "d"}) {
    EXPECT_EQ(claimed(name), std::string("content of ") + name);
    EXPECT_EQ(claimed(name), "(none)");
  }
}

TEST_F(ReadAheadTest, ReadsWhatWasThereBeforeItIsAskedFor) {
  read({"a"});
  folder.remove("a");
  EXPECT_EQ(claimed("a"), "content of a");
}

TEST_F(ReadAheadTest, GivesOutOnlyWhatIsCollected) {
  ahead.prefetch(open, {"a", "b"});
  EXPECT_EQ(claimed("a"), "(none)");
  ahead.collect();
  ahead.prefetch(open, {"c"});
  EXPECT_EQ(claimed("a"), "content of a");
  EXPECT_EQ(claimed("c"), "(none)");
  ahead.collect();
  EXPECT_EQ(claimed("b"), "(none)");
  EXPECT_EQ(claimed("c"), "content of c");
  read({"c"});
  ahead.collect();
  EXPECT_EQ(claimed("c"), "(none)");
}

TEST_F(ReadAheadTest, DropsWhatWasReadAndNotCollected) {
  ahead.prefetch(open, {"a"});
  ahead.drop("b");
  read({"b"});
  EXPECT_EQ(claimed("a"), "(none)");
  EXPECT_EQ(claimed("b"), "content of b");
}

TEST_F(ReadAheadTest, LeavesOutWhatIsNoReadableFileOfThatSize) {
  folder.writeFile("large", std::string(65, 'x'));
  folder.writeFile("empty", "");
  folder.makeFolder("folder");
  std::filesystem::create_symlink(folder.path("a"), folder.path("link"));
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  read({"large", "folder", "a", "link", "fifo", "absent", "empty", "b"});
  for (const char* name : {"large", "folder", "link", "fifo", "absent"}) {
    EXPECT_EQ(claimed(name), "(none)") << name;
  }
  EXPECT_EQ(claimed("a"), "content of a");
  EXPECT_EQ(claimed("empty"), "");
  EXPECT_EQ(claimed("b"), "content of b");
}

TEST_F(ReadAheadTest, DropsWhatIsChangedWhenItIsCollectedAndWhileItIsRead) {
  ahead.prefetch(open, {"a", "b"});
  ahead.drop("a");
  ahead.drop("c");
  ahead.collect();
  ahead.prefetch(open, {"a", "c"});
  EXPECT_EQ(claimed("a"), "(none)");
  ahead.drop("b");
  EXPECT_EQ(claimed("b"), "(none)");
  ahead.collect();
  EXPECT_EQ(claimed("a"), "content of a") << "what was changed before it began is no matter";
  EXPECT_EQ(claimed("c"), "content of c");
}

TEST_F(ReadAheadTest, HasNothingOfAnotherFolder) {
  const auto other = files.openFolder(folder.path());
  read({"a"});
  EXPECT_FALSE(ahead.claim(*other, "a"));
  EXPECT_EQ(claimed("a"), "content of a");
}

TEST_F(ReadAheadTest, KeepsTheFolderThatItReads) {
  const ReadableFolder& itself = *open;
  const std::weak_ptr<const ReadableFolder> alive = open;
  ahead.prefetch(std::move(open), Names(1000, "a"));
  EXPECT_FALSE(alive.expired()) << "while it is read";
  ahead.collect();
  EXPECT_EQ(ahead.claim(itself, "a"), "content of a");
  ahead.collect();
  EXPECT_TRUE(alive.expired()) << "and no longer than needed";
}

TEST_F(ReadAheadTest, MayEndWhileItReads) { ahead.prefetch(open, Names(1000, "a")); }

}  // namespace
}  // namespace annivo
