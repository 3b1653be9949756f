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
    ahead.begin(*open, names);
    ahead.begin(*open, {});
  }
  std::string taken(std::string_view name) {
    return std::string(ahead.take(*open, name).value_or("(none)"));
  }

  TemporaryFolder folder;
  PosixFileManager files;
  std::unique_ptr<ReadableFolder> open;
  ReadAhead ahead{64};
};

TEST_F(ReadAheadTest, GivesEachFileOnceInWhateverOrder) {
  read({"a", "b", "c", "d", "e"});
  for (const char* name : {"a", "b", "e", "c", "d"}) {
    EXPECT_EQ(taken(name), std::string("content of ") + name);
    EXPECT_EQ(taken(name), "(none)");
  }
}

TEST_F(ReadAheadTest, ReadsWhatWasThereBeforeItIsAskedFor) {
  read({"a"});
  folder.remove("a");
  EXPECT_EQ(taken("a"), "content of a");
}

TEST_F(ReadAheadTest, HasReadyWhatTheCallBeforeTheLastBegan) {
  ahead.begin(*open, {"a", "b"});
  EXPECT_EQ(taken("a"), "(none)");
  ahead.begin(*open, {"c"});
  EXPECT_EQ(taken("a"), "content of a");
  EXPECT_EQ(taken("c"), "(none)");
  ahead.begin(*open, {});
  EXPECT_EQ(taken("b"), "(none)");
  EXPECT_EQ(taken("c"), "content of c");
  ahead.begin(*open, {});
  EXPECT_EQ(taken("c"), "(none)");
}

TEST_F(ReadAheadTest, LeavesOutWhatIsNoReadableFileOfThatSize) {
  folder.writeFile("large", std::string(65, 'x'));
  folder.writeFile("empty", "");
  folder.makeFolder("folder");
  std::filesystem::create_symlink(folder.path("a"), folder.path("link"));
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  read({"large", "folder", "a", "link", "fifo", "absent", "empty", "b"});
  for (const char* name : {"large", "folder", "link", "fifo", "absent"}) {
    EXPECT_EQ(taken(name), "(none)") << name;
  }
  EXPECT_EQ(taken("a"), "content of a");
  EXPECT_EQ(taken("empty"), "");
  EXPECT_EQ(taken("b"), "content of b");
}

TEST_F(ReadAheadTest, ForgetsWhatIsChangedWhenItIsReadyAndWhileItIsRead) {
  ahead.begin(*open, {"a", "b"});
  ahead.forget("a");
  ahead.forget("c");
  ahead.begin(*open, {"a", "c"});
  EXPECT_EQ(taken("a"), "(none)");
  ahead.forget("b");
  EXPECT_EQ(taken("b"), "(none)");
  ahead.begin(*open, {});
  EXPECT_EQ(taken("a"), "content of a") << "what was changed before it began is no matter";
  EXPECT_EQ(taken("c"), "content of c");
}

TEST_F(ReadAheadTest, HasNothingOfAnotherFolder) {
  const auto other = files.openFolder(folder.path());
  read({"a"});
  EXPECT_FALSE(ahead.take(*other, "a"));
  EXPECT_EQ(taken("a"), "content of a");
}

TEST_F(ReadAheadTest, MayEndWhileItReads) {
  Names names(1000, "a");
  ahead.begin(*open, names);
}

}  // namespace
}  // namespace annivo
