// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <future>

#include "parent/runs/OverlayFileManager.h"
#include "tests/support/Doubles.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

class OverlayFileManagerTest : public testing::Test {
 protected:
  OverlayFileManagerTest() {
    folder.writeFile("sub/old", "old");
    before = folder.fingerprint();
  }
  ~OverlayFileManagerTest() override { EXPECT_EQ(folder.fingerprint(), before); }

  std::string content(const std::string& name) {
    const auto bytes = files.contentsAtPath(folder.path(name), NSFileManager::kDefaultLimit);
    return bytes ? *bytes : bytes.error().kind == Error::Kind::absent ? "(absent)" : "(error)";
  }

  std::string names(const std::string& name) {
    std::string all;
    const auto entries = files.contentsOfDirectory(folder.path(name));
    if (!entries) return "(error)";
    for (const auto& entry : *entries) all += (all.empty() ? "" : " ") + entry.name;
    return all;
  }

  std::string changed() {
    std::string all;
    for (const std::string& path : files.changedFiles()) {
      all += (all.empty() ? "" : " ") + path.substr(folder.path().size() + 1);
    }
    return all;
  }

  TemporaryFolder folder;
  std::map<std::string, std::string> before;
  ManualClock clock{utc(2026, 11, 20)};
  PosixFileManager disk;
  OverlayFileManager files{disk, clock};
};

TEST_F(OverlayFileManagerTest, ReadsThrough) {
  EXPECT_EQ(content("sub/old"), "old");
  EXPECT_EQ(names("sub"), "old");
  EXPECT_EQ(changed(), "");
}

TEST_F(OverlayFileManagerTest, ReadsAFileItselfAndFollowsNoLink) {
  folder.writeFile("elsewhere", "elsewhere");
  std::filesystem::create_symlink(folder.path("elsewhere"), folder.path("sub/link"));
  before = folder.fingerprint();
  const auto itself = [&](const std::string& name) {
    const auto bytes = files.contentsOfFileItself(folder.path(name), 9);
    return bytes ? *bytes : "(error)";
  };
  EXPECT_EQ(itself("sub/old"), "old");
  EXPECT_EQ(itself("sub/link"), "(error)");
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/new"), "123456789").ok());
  EXPECT_EQ(itself("sub/new"), "123456789");
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/new"), "1234567890").ok());
  EXPECT_EQ(itself("sub/new"), "(error)");
  ASSERT_TRUE(files.removeFile(folder.path("sub/old")).ok());
  EXPECT_EQ(itself("sub/old"), "(error)");
}

TEST_F(OverlayFileManagerTest, KeepsWritesInMemory) {
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/new"), "new").ok());
  ASSERT_TRUE(files.writeDurably(folder.path("sub/old"), "changed").ok());
  EXPECT_EQ(content("sub/new"), "new");
  EXPECT_EQ(content("sub/old"), "changed");
  EXPECT_EQ(names("sub"), "new old");
  EXPECT_EQ(changed(), "sub/new sub/old");
  const auto attributes = files.attributesAtPath(folder.path("sub/new"), Links::follow);
  ASSERT_TRUE(attributes.ok());
  EXPECT_EQ(attributes->size, 3U);
  EXPECT_EQ(attributes->modificationDate, utc(2026, 11, 20));
}

TEST_F(OverlayFileManagerTest, ForgetsAChangeThatIsTakenBack) {
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/old"), "changed").ok());
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/old"), "old").ok());
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/new"), "x").ok());
  ASSERT_TRUE(files.removeFile(folder.path("sub/new")).ok());
  EXPECT_EQ(changed(), "");
}

TEST_F(OverlayFileManagerTest, HidesWhatIsRemoved) {
  ASSERT_TRUE(files.removeFile(folder.path("sub/old")).ok());
  EXPECT_EQ(content("sub/old"), "(absent)");
  EXPECT_EQ(names("sub"), "");
  EXPECT_EQ(changed(), "sub/old");
  EXPECT_EQ(files.removeFile(folder.path("sub/old")).error().kind, Error::Kind::absent);
}

TEST_F(OverlayFileManagerTest, MakesFoldersAndFilesInThem) {
  const std::string made = folder.path("a/b");
  ASSERT_TRUE(files.createDirectoriesUnder(folder.path(), made).ok());
  ASSERT_TRUE(files.writeAtomically(made + "/c", "c").ok());
  EXPECT_EQ(names(""), "a sub");
  EXPECT_EQ(names("a"), "b");
  EXPECT_EQ(content("a/b/c"), "c");
  EXPECT_TRUE(files.isWritable(made));
}

TEST_F(OverlayFileManagerTest, AppendsToWhatTheBaseHolds) {
  auto file = files.openForAppending(folder.path("sub/old"));
  ASSERT_TRUE(file.ok());
  ASSERT_TRUE((*file)->append(" and new").ok());
  EXPECT_EQ(content("sub/old"), "old and new");
}

TEST_F(OverlayFileManagerTest, RenamesFiles) {
  ASSERT_TRUE(files.rename(folder.path("sub/old"), folder.path("sub/other")).ok());
  EXPECT_EQ(names("sub"), "other");
  EXPECT_EQ(changed(), "sub/old sub/other");
}

TEST_F(OverlayFileManagerTest, RenamesFoldersOfItsOwnWithAllTheyHold) {
  ASSERT_TRUE(files.createDirectoriesUnder(folder.path(), folder.path("a/b")).ok());
  ASSERT_TRUE(files.writeAtomically(folder.path("a/b/c"), "c").ok());
  ASSERT_TRUE(files.rename(folder.path("a"), folder.path("sub/z")).ok());
  EXPECT_EQ(names(""), "sub");
  EXPECT_EQ(content("sub/z/b/c"), "c");
  EXPECT_EQ(content("a/b/c"), "(absent)");
  EXPECT_FALSE(files.rename(folder.path("sub/z"), folder.path("sub/old")).ok());
  EXPECT_FALSE(files.rename(folder.path("sub"), folder.path("other")).ok());
}

TEST_F(OverlayFileManagerTest, AnOpenFolderHasWhatIsOverItsFiles) {
  folder.writeFile("sub/other", "other");
  before = folder.fingerprint();
  const auto open = files.openFolder(folder.path("sub"));
  const auto read = [&](const std::string& name) {
    const auto bytes = open->contentsOfFileItself(name, 9, "");
    return bytes ? *bytes : bytes.error().kind == Error::Kind::absent ? "(absent)" : "(error)";
  };
  EXPECT_EQ(read("old"), "old");
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/old"), "new").ok());
  ASSERT_TRUE(files.writeAtomically(folder.path("sub/mine"), "mine").ok());
  ASSERT_TRUE(files.removeFile(folder.path("sub/other")).ok());
  EXPECT_EQ(read("old"), "new");
  EXPECT_EQ(read("mine"), "mine");
  EXPECT_EQ(read("other"), "(absent)");
}

TEST_F(OverlayFileManagerTest, IsReadByAnotherThreadWhileItIsChanged) {
  ASSERT_TRUE(files.supportsOtherThreads());
  constexpr int kRounds = 2000;
  auto reading = std::async(std::launch::async, [&] {
    const auto open = files.openFolder(folder.path("sub"));
    int whole = 0;
    for (int i = 0; i < kRounds; ++i) {
      const auto byName = open->contentsOfFileItself("old", 9, "");
      const auto byPath = files.contentsAtPath(folder.path("sub/old"), 9);
      whole += byName && byPath && byName->size() == 3 && byPath->size() == 3 ? 1 : 0;
    }
    return whole;
  });
  for (int i = 0; i < kRounds; ++i) {
    ASSERT_TRUE(files.writeAtomically(folder.path("sub/old"), i % 2 == 0 ? "new" : "old").ok());
    ASSERT_TRUE(files.writeAtomically(folder.path("sub/" + std::to_string(i)), "more").ok());
  }
  EXPECT_EQ(reading.get(), kRounds);
}

TEST_F(OverlayFileManagerTest, RefusesWhatTheBaseWouldRefuse) {
  EXPECT_EQ(files.writeAtomically(folder.path("gone/x"), "").error().kind, Error::Kind::absent);
  EXPECT_FALSE(files.writeAtomically(folder.path("sub"), "").ok());
  EXPECT_FALSE(files.writeAtomically(folder.path("sub/old/x"), "").ok());
  FailingFileManager failing(disk);
  failing.makeUnwritable(folder.path("sub"));
  OverlayFileManager over(failing, clock);
  EXPECT_FALSE(over.writeAtomically(folder.path("sub/x"), "").ok());
  EXPECT_FALSE(over.removeFile(folder.path("sub/old")).ok());
  EXPECT_FALSE(over.isWritable(folder.path("sub")));
}

}  // namespace
}  // namespace annivo
