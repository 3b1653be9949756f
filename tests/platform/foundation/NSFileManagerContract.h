// SPDX-License-Identifier: MIT
// The contract of NSFileManager: included by the tests of each room that has one, which make the
// suite for each of its own.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// A file manager with an empty folder in it.
struct FileManagerMachine {
  virtual ~FileManagerMachine() = default;
  NSFileManager* files = nullptr;
  std::string root;
  SystemClock clock;
};

struct FileManagerKind {
  const char* name;
  std::function<std::unique_ptr<FileManagerMachine>()> make;
};

class NSFileManagerContract : public testing::TestWithParam<FileManagerKind> {
 protected:
  NSFileManager& files() { return *machine_->files; }
  std::string at(const std::string& name) const { return machine_->root + "/" + name; }
  void write(const std::string& name, std::string_view bytes) {
    ASSERT_TRUE(files().writeAtomically(at(name), bytes));
  }
  std::string content(const std::string& name) {
    const auto bytes = files().contentsAtPath(at(name));
    return bytes ? *bytes : bytes.error().text();
  }
  std::vector<std::string> names(const std::string& folder) {
    std::vector<std::string> result;
    const auto entries = files().contentsOfDirectory(folder);
    EXPECT_TRUE(entries) << folder;
    if (!entries) return result;
    for (const DirectoryEntry& entry : *entries) result.push_back(entry.name);
    return result;
  }

  std::unique_ptr<FileManagerMachine> machine_ = GetParam().make();
};

TEST_P(NSFileManagerContract, ReadsBackWhatWasWritten) {
  const std::string bytes("a\0b\xFF\r\n", 6);
  write("file", bytes);
  EXPECT_EQ(content("file"), bytes);
  write("file", "");
  EXPECT_EQ(content("file"), "");
}

TEST_P(NSFileManagerContract, WritesDurablyLikeAtomically) {
  ASSERT_TRUE(files().writeDurably(at("file"), "one"));
  ASSERT_TRUE(files().writeDurably(at("file"), "two"));
  EXPECT_EQ(content("file"), "two");
  EXPECT_EQ(names(machine_->root), std::vector<std::string>{"file"});
}

TEST_P(NSFileManagerContract, LeavesNoTemporaryFileBehindAWrite) {
  write("file", "x");
  EXPECT_EQ(names(machine_->root), std::vector<std::string>{"file"});
}

TEST_P(NSFileManagerContract, ReplacesATemporaryFileOfAnInterruptedRun) {
  {
    const auto stale = files().openForAppending(at(".file.tmp"));
    ASSERT_TRUE(stale);
    ASSERT_TRUE((*stale)->append("a longer text of an interrupted run"));
  }
  write("file", "new");
  EXPECT_EQ(content("file"), "new");
}

TEST_P(NSFileManagerContract, WritesAbsentIntoAMissingFolder) {
  const auto written = files().writeAtomically(at("none/file"), "x");
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().kind, Error::Kind::absent);
  EXPECT_NE(written.error().text().find(at("none/file")), std::string::npos);
}

TEST_P(NSFileManagerContract, DoesNotWriteOverAFolder) {
  ASSERT_TRUE(files().createDirectory(at("folder")));
  EXPECT_FALSE(files().writeAtomically(at("folder"), "x"));
  EXPECT_EQ(names(machine_->root), std::vector<std::string>{"folder"});
}

TEST_P(NSFileManagerContract, SaysAbsentForWhatIsNotThere) {
  EXPECT_EQ(files().contentsAtPath(at("none")).error().kind, Error::Kind::absent);
  EXPECT_EQ(files().attributesAtPath(at("none"), Links::follow).error().kind, Error::Kind::absent);
  EXPECT_EQ(files().contentsOfDirectory(at("none")).error().kind, Error::Kind::absent);
  EXPECT_EQ(files().removeFile(at("none")).error().kind, Error::Kind::absent);
  EXPECT_EQ(files().rename(at("none"), at("other")).error().kind, Error::Kind::absent);
  EXPECT_FALSE(files().fileExistsAtPath(at("none")));
  EXPECT_FALSE(files().isWritable(at("none")));
}

TEST_P(NSFileManagerContract, SaysUnreadableForTheContentOfAFolder) {
  EXPECT_EQ(files().contentsAtPath(machine_->root).error().kind, Error::Kind::unreadable);
}

TEST_P(NSFileManagerContract, ReadsUpToTheLimitAndNotBeyond) {
  write("file", "12345");
  EXPECT_TRUE(files().contentsAtPath(at("file"), 5));
  const auto beyond = files().contentsAtPath(at("file"), 4);
  ASSERT_FALSE(beyond);
  EXPECT_EQ(beyond.error().kind, Error::Kind::unreadable);
  EXPECT_NE(beyond.error().text().find(at("file")), std::string::npos);
}

TEST_P(NSFileManagerContract, TellsTypeSizeAndPermissions) {
  write("file", "12345");
  ASSERT_TRUE(files().createDirectory(at("folder")));
  const auto file = files().attributesAtPath(at("file"), Links::doNotFollow);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->type, FileType::regular);
  EXPECT_EQ(file->size, 5u);
  EXPECT_EQ(file->permissions, 0600u);
  const auto folder = files().attributesAtPath(at("folder"), Links::follow);
  ASSERT_TRUE(folder);
  EXPECT_EQ(folder->type, FileType::directory);
  EXPECT_EQ(folder->permissions, 0700u);
}

TEST_P(NSFileManagerContract, DatesAFileAtItsWriting) {
  const Date before = machine_->clock.now() - std::chrono::seconds{2};
  write("file", "x");
  const auto attributes = files().attributesAtPath(at("file"), Links::follow);
  ASSERT_TRUE(attributes);
  EXPECT_GT(attributes->modificationDate, before);
  EXPECT_LT(attributes->modificationDate, machine_->clock.now() + std::chrono::seconds{2});
}

TEST_P(NSFileManagerContract, ListsSortedByNameBytesWithTypes) {
  ASSERT_TRUE(files().createDirectory(at("a")));
  write("B", "");
  write("a.b", "");
  write("é", "");
  write("a/inner", "");
  const auto entries = files().contentsOfDirectory(machine_->root);
  ASSERT_TRUE(entries);
  EXPECT_EQ(names(machine_->root), (std::vector<std::string>{"B", "a", "a.b", "é"}));
  EXPECT_EQ((*entries)[1].type, FileType::directory);
  EXPECT_EQ((*entries)[2].type, FileType::regular);
}

TEST_P(NSFileManagerContract, SaysAbsentForTheListOfAFile) {
  write("file", "x");
  EXPECT_EQ(files().contentsOfDirectory(at("file")).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, MakesAFolderOnceAndIsContentWithOneThatIsThere) {
  ASSERT_TRUE(files().createDirectory(at("folder")));
  write("folder/file", "x");
  ASSERT_TRUE(files().createDirectory(at("folder")));
  EXPECT_EQ(content("folder/file"), "x");
}

TEST_P(NSFileManagerContract, DoesNotMakeAFolderOverAFileOrWithoutItsParent) {
  write("file", "x");
  EXPECT_FALSE(files().createDirectory(at("file")));
  EXPECT_EQ(files().createDirectory(at("none/folder")).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, MakesEveryFolderBelowARoot) {
  ASSERT_TRUE(files().createDirectoriesUnder(machine_->root, at("a/b/c")));
  ASSERT_TRUE(files().createDirectoriesUnder(machine_->root, at("a/b/c")));
  ASSERT_TRUE(files().createDirectoriesUnder(machine_->root, machine_->root));
  EXPECT_TRUE(files().fileExistsAtPath(at("a/b/c")));
}

TEST_P(NSFileManagerContract, MakesNoFolderAboveOrBesideTheRoot) {
  EXPECT_FALSE(files().createDirectoriesUnder(at("none"), at("none/a")));
  EXPECT_FALSE(files().fileExistsAtPath(at("none")));
  EXPECT_EQ(files().createDirectoriesUnder(at("one"), at("other/a")).error().kind,
            Error::Kind::refused);
  EXPECT_EQ(files().createDirectoriesUnder(at("one"), at("oneself")).error().kind,
            Error::Kind::refused);
}

TEST_P(NSFileManagerContract, RemovesAFileButNoFolder) {
  write("file", "x");
  ASSERT_TRUE(files().createDirectory(at("folder")));
  EXPECT_TRUE(files().removeFile(at("file")));
  EXPECT_FALSE(files().fileExistsAtPath(at("file")));
  EXPECT_FALSE(files().removeFile(at("folder")));
  EXPECT_TRUE(files().fileExistsAtPath(at("folder")));
}

TEST_P(NSFileManagerContract, RenamesOverAFile) {
  write("from", "new");
  write("to", "old");
  ASSERT_TRUE(files().rename(at("from"), at("to")));
  EXPECT_EQ(content("to"), "new");
  EXPECT_FALSE(files().fileExistsAtPath(at("from")));
}

TEST_P(NSFileManagerContract, RenamesAFolderWithItsContent) {
  ASSERT_TRUE(files().createDirectoriesUnder(machine_->root, at("a/b")));
  write("a/b/file", "x");
  ASSERT_TRUE(files().rename(at("a"), at("c")));
  EXPECT_EQ(content("c/b/file"), "x");
  EXPECT_FALSE(files().fileExistsAtPath(at("a")));
}

TEST_P(NSFileManagerContract, SetsDamagedFilesAsideUnderNamesOfTheirOwn) {
  const Date now = *dateFromReferenceSeconds(806784360.25);
  const std::string aside = "file.damaged-20260726T184600Z";
  for (const auto& name : {aside, aside + "-2", aside + "-3"}) {
    write("file", name);
    EXPECT_EQ(files().pathAside(at("file"), now), at(name));
    const auto moved = files().setAside(at("file"), now);
    ASSERT_TRUE(moved);
    EXPECT_EQ(*moved, at(name));
    EXPECT_FALSE(files().fileExistsAtPath(at("file")));
  }
  for (const auto& name : {aside, aside + "-2", aside + "-3"}) EXPECT_EQ(content(name), name);
  EXPECT_EQ(files().setAside(at("file"), now).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, AppendsToWhatIsThere) {
  for (const char* part : {"one ", "two"}) {
    const auto file = files().openForAppending(at("journal"));
    ASSERT_TRUE(file);
    ASSERT_TRUE((*file)->append(part));
    ASSERT_TRUE((*file)->append(""));
  }
  EXPECT_EQ(content("journal"), "one two");
  EXPECT_EQ(files().attributesAtPath(at("journal"), Links::follow)->permissions, 0600u);
}

TEST_P(NSFileManagerContract, DoesNotOpenAFolderOrAFileInAMissingFolder) {
  EXPECT_FALSE(files().openForAppending(machine_->root));
  EXPECT_EQ(files().openForAppending(at("none/file")).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, CallsAFileAndAFolderOfOursWritable) {
  write("file", "x");
  EXPECT_TRUE(files().isWritable(at("file")));
  EXPECT_TRUE(files().isWritable(machine_->root));
}

TEST_P(NSFileManagerContract, SynchronizesWhatIsThereOnly) {
  write("file", "x");
  EXPECT_TRUE(files().synchronize(at("file")));
  EXPECT_TRUE(files().synchronize(machine_->root));
  EXPECT_EQ(files().synchronize(at("none")).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, LocksAgainOnceTheLockIsGone) {
  for (int i = 0; i < 2; ++i) {
    const auto lock = files().lock(at("lock"));
    ASSERT_TRUE(lock);
    EXPECT_TRUE(files().fileExistsAtPath(at("lock")));
  }
  EXPECT_EQ(files().lock(at("none/lock")).error().kind, Error::Kind::absent);
}

TEST_P(NSFileManagerContract, RefusesANameThatIsTooLongAndKeepsTheFolderClean) {
  EXPECT_FALSE(files().writeAtomically(at(std::string(300, 'x')), "x"));
  EXPECT_TRUE(names(machine_->root).empty());
}

// The walk over a tree.

TEST_P(NSFileManagerContract, WalksATreeDepthFirstInNameOrder) {
  for (const char* folder : {"a", "a/Events", "b", "b/inner"}) {
    ASSERT_TRUE(files().createDirectory(at(folder)));
  }
  for (const char* file : {"a/Events/1", "a/x", "b/inner/y", "c"}) write(file, "");
  NSDirectoryEnumerator walk(files(), machine_->root);
  std::vector<std::string> found;
  while (const auto entry = walk.nextObject()) found.push_back(*entry);
  EXPECT_EQ(found, (std::vector<std::string>{"a", "a/Events", "a/Events/1", "a/x", "b", "b/inner",
                                             "b/inner/y", "c"}));
  EXPECT_EQ(walk.nextObject(), std::nullopt);
}

TEST_P(NSFileManagerContract, SkipsTheDescendentsOfTheEntryJustReturnedOnly) {
  for (const char* folder : {"a", "a/Events", "b", "b/Events"}) {
    ASSERT_TRUE(files().createDirectory(at(folder)));
  }
  for (const char* file : {"a/Events/1", "a/x", "b/Events/2"}) write(file, "");
  NSDirectoryEnumerator walk(files(), machine_->root);
  std::vector<std::string> found;
  while (const auto entry = walk.nextObject()) {
    found.push_back(*entry);
    if (*entry == "a/Events" || *entry == "a/x") walk.skipDescendents();
  }
  EXPECT_EQ(found,
            (std::vector<std::string>{"a", "a/Events", "a/x", "b", "b/Events", "b/Events/2"}));
}

TEST_P(NSFileManagerContract, WalksNothingWithoutARoot) {
  NSDirectoryEnumerator walk(files(), at("none"));
  EXPECT_EQ(walk.nextObject(), std::nullopt);
  EXPECT_EQ(walk.fileAttributes(), std::nullopt);
}

TEST_P(NSFileManagerContract, GivesTheAttributesOfTheEntryJustReturned) {
  write("file", "123");
  NSDirectoryEnumerator walk(files(), machine_->root);
  EXPECT_EQ(walk.fileAttributes(), std::nullopt);
  ASSERT_TRUE(walk.nextObject());
  ASSERT_TRUE(walk.fileAttributes());
  EXPECT_EQ(walk.fileAttributes()->size, 3u);
}

}  // namespace annivo
