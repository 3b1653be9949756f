// SPDX-License-Identifier: MIT
// What only a real disk has: links, FIFOs, permissions, other processes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "platform/foundation/NSFileManager.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

/// Runs `work` in a child process; its result is the child's. As root the child first becomes
/// nobody, whom permission bits hold.
bool inChild(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && ::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
    ::_exit(work() ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return status == 0;
}

class PosixFileManagerTest : public testing::Test {
 protected:
  std::string at(const std::string& name) const { return folder_.path(name); }

  TemporaryFolder folder_;
  PosixFileManager files_;
};

TEST_F(PosixFileManagerTest, NeverBlocksOnAFifo) {
  ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
  const auto content = files_.contentsAtPath(at("fifo"), NSFileManager::kDefaultLimit);
  ASSERT_FALSE(content);
  EXPECT_EQ(content.error().kind, Error::Kind::unreadable);
  EXPECT_EQ(files_.attributesAtPath(at("fifo"), Links::follow)->type, FileType::other);
  EXPECT_EQ((*files_.contentsOfDirectory(folder_.path()))[0].type, FileType::other);
  EXPECT_FALSE(files_.openForAppending(at("fifo")));
}

TEST_F(PosixFileManagerTest, ReadsNoDevice) {
  for (const char* device : {"/dev/zero", "/dev/null", "/dev/tty"}) {
    const auto content = files_.contentsAtPath(device, 1000);
    ASSERT_FALSE(content) << device;
    EXPECT_NE(content.error().kind, Error::Kind::absent) << device;
  }
}

TEST_F(PosixFileManagerTest, ReadsAFileWhoseSizeTheSystemDoesNotTell) {
  const auto content = files_.contentsAtPath("/proc/self/status", NSFileManager::kDefaultLimit);
  ASSERT_TRUE(content);
  EXPECT_GT(content->size(), 100u);
  EXPECT_FALSE(files_.contentsAtPath("/proc/self/status", 10));
}

TEST_F(PosixFileManagerTest, FollowsLinksWhereAskedTo) {
  folder_.writeFile("target", "content");
  fs::create_symlink("target", at("link"));
  fs::create_symlink("nowhere", at("dangling"));
  EXPECT_EQ(*files_.contentsAtPath(at("link"), 100), "content");
  EXPECT_EQ(files_.attributesAtPath(at("link"), Links::follow)->type, FileType::regular);
  EXPECT_EQ(files_.attributesAtPath(at("link"), Links::doNotFollow)->type, FileType::symbolicLink);
  EXPECT_EQ(files_.attributesAtPath(at("dangling"), Links::follow).error().kind,
            Error::Kind::absent);
  EXPECT_TRUE(files_.attributesAtPath(at("dangling"), Links::doNotFollow));
  EXPECT_FALSE(files_.fileExistsAtPath(at("dangling")));
}

TEST_F(PosixFileManagerTest, SaysWhatALinkStandsFor) {
  folder_.makeFolder("real");
  fs::create_symlink("real/file", at("link"));
  fs::create_symlink(at("link"), at("second"));
  fs::create_symlink("circle", at("circle"));
  EXPECT_EQ(*files_.linkTarget(at("link")), at("real/file")) << "though nothing is there";
  EXPECT_EQ(*files_.linkTarget(at("second")), at("real/file"));
  EXPECT_EQ(*files_.linkTarget(at("real")), at("real"));
  EXPECT_EQ(*files_.linkTarget(at("nothing")), at("nothing"));
  EXPECT_EQ(files_.linkTarget(at("circle")).error().kind, Error::Kind::unreadable);
}

TEST_F(PosixFileManagerTest, CallsACircleOfLinksUnreadable) {
  fs::create_symlink("b", at("a"));
  fs::create_symlink("a", at("b"));
  EXPECT_EQ(files_.contentsAtPath(at("a"), 100).error().kind, Error::Kind::unreadable);
}

TEST_F(PosixFileManagerTest, DoesNotEnterLinksOnAWalk) {
  folder_.makeFolder("real");
  fs::create_symlink(folder_.path(), at("real/up"));
  NSDirectoryEnumerator walk(files_, folder_.path());
  std::vector<std::string> found;
  while (const auto entry = walk.nextObject()) found.push_back(*entry);
  EXPECT_EQ(found, (std::vector<std::string>{"real", "real/up"}));
}

TEST_F(PosixFileManagerTest, ReplacesALinkAndNotItsTarget) {
  folder_.writeFile("target", "kept");
  fs::create_symlink("target", at("link"));
  ASSERT_TRUE(files_.writeAtomically(at("link"), "new"));
  EXPECT_EQ(folder_.readFile("target"), "kept");
  EXPECT_EQ(folder_.readFile("link"), "new");
}

TEST_F(PosixFileManagerTest, DoesNotFollowALinkPutInPlaceOfItsTemporaryFile) {
  folder_.writeFile("victim", "kept");
  fs::create_symlink("victim", at(".file.tmp"));
  ASSERT_TRUE(files_.writeAtomically(at("file"), "new"));
  EXPECT_EQ(folder_.readFile("victim"), "kept");
  EXPECT_EQ(folder_.readFile("file"), "new");
  EXPECT_FALSE(folder_.exists(".file.tmp"));
}

TEST_F(PosixFileManagerTest, FailsWithoutHarmWhereAFolderHasTheTemporaryName) {
  folder_.writeFile("file", "old");
  folder_.makeFolder(".file.tmp");
  EXPECT_FALSE(files_.writeAtomically(at("file"), "new"));
  EXPECT_EQ(folder_.readFile("file"), "old");
}

TEST_F(PosixFileManagerTest, MakesFilesForTheOwnerOnlyWhateverTheOldOneAllowed) {
  folder_.writeFile("file", "old");
  ASSERT_EQ(::chmod(at("file").c_str(), 0666), 0);
  ASSERT_TRUE(files_.writeAtomically(at("file"), "new"));
  EXPECT_EQ(files_.attributesAtPath(at("file"), Links::follow)->permissions, 0600u);
}

TEST_F(PosixFileManagerTest, TellsTheModificationDateToTheMicrosecond) {
  folder_.writeFile("file", "x");
  const Date date = utc(2026, 11, 20, 18, 46) + std::chrono::microseconds{123456};
  folder_.touch("file", date);
  EXPECT_EQ(files_.attributesAtPath(at("file"), Links::follow)->modificationDate, date);
  folder_.touch("file", utc(1950, 1, 1) - std::chrono::microseconds{1});
  EXPECT_EQ(files_.attributesAtPath(at("file"), Links::follow)->modificationDate,
            utc(1950, 1, 1) - std::chrono::microseconds{1});
}

TEST_F(PosixFileManagerTest, IsHeldByPermissions) {
  folder_.writeFile("locked/file", "x");
  folder_.writeFile("secret", "x");
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(at("locked").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(at("locked/file").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(at("secret").c_str(), 0000), 0);
  EXPECT_TRUE(inChild([&] {
    return files_.contentsAtPath(at("secret"), 100).error().kind == Error::Kind::unreadable &&
           files_.attributesAtPath(at("secret"), Links::follow).ok() &&
           !files_.isWritable(at("locked")) && !files_.isWritable(at("locked/file")) &&
           files_.contentsAtPath(at("locked/file"), 100).ok() &&
           !files_.writeAtomically(at("locked/file"), "y").ok() &&
           !files_.createDirectory(at("locked/folder")).ok() &&
           !files_.lock(at("locked/lock")).ok();
  }));
  EXPECT_EQ(folder_.readFile("locked/file"), "x");
  ASSERT_EQ(::chmod(at("locked").c_str(), 0755), 0);
}

TEST_F(PosixFileManagerTest, LetsAnotherProcessWaitForTheLock) {
  int go[2];
  int got[2];
  ASSERT_EQ(::pipe(go), 0);
  ASSERT_EQ(::pipe(got), 0);
  const pid_t child = ::fork();  // before the lock, which it would share
  if (child == 0) {
    char byte = 0;
    bool good = ::read(go[0], &byte, 1) == 1;
    const auto lock = files_.lock(at("lock"));
    good = good && lock && ::write(got[1], "y", 1) == 1;
    ::_exit(good ? 0 : 1);
  }
  auto lock = files_.lock(at("lock"));
  ASSERT_TRUE(lock);
  ASSERT_EQ(::write(go[1], "g", 1), 1);
  pollfd waiting{.fd = got[0], .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&waiting, 1, 200), 0) << "the lock was given twice";
  *lock = nullptr;
  EXPECT_EQ(::poll(&waiting, 1, 10000), 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  for (const int end : {go[0], go[1], got[0], got[1]}) ::close(end);
}

TEST_F(PosixFileManagerTest, LeavesNoDescriptorToAProgramItStarts) {
  const auto file = files_.openForAppending(at("file"));
  const auto lock = files_.lock(at("lock"));
  ASSERT_TRUE(file && lock);
  int inherited = 0;
  for (int descriptor = 3; descriptor < 100; ++descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    char path[4096] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    if (flags < 0 || ::readlink(link.c_str(), path, sizeof path - 1) < 0) continue;
    if (std::string_view(path).starts_with(folder_.path())) inherited += !(flags & FD_CLOEXEC);
  }
  EXPECT_EQ(inherited, 0);
}

TEST(PathComponent, RefusesWhatWouldLeaveTheFolderOrHarmALine) {
  for (const char* good : {"a", "A1B2-C3", "...", ".hidden", "a b", "é", "x\\y", "a:b"}) {
    const auto component = pathComponent(good, "calendar UID");
    ASSERT_TRUE(component) << good;
    EXPECT_EQ(*component, good);
  }
  for (const std::string& bad :
       {std::string(), std::string("."), std::string(".."), std::string("a/b"), std::string("/"),
        std::string("../x"), std::string("a\0b", 3), std::string("a\nb"), std::string("a\x7F"),
        std::string(201, 'x')}) {
    const auto component = pathComponent(bad, "calendar UID");
    ASSERT_FALSE(component) << bad;
    EXPECT_EQ(component.error().kind, Error::Kind::refused);
    EXPECT_NE(component.error().text().find("calendar UID"), std::string::npos);
  }
  EXPECT_TRUE(pathComponent(std::string(200, 'x'), "name"));
}

}  // namespace
}  // namespace annivo
