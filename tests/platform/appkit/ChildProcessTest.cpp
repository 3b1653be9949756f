// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "platform/appkit/ChildProcess.h"
#include "platform/foundation/Descriptor.h"

namespace annivo {
namespace {

/// What a shell that runs in the foreground writes to this process's standard output.
std::string writtenInForeground(const std::string& command) {
  testing::internal::CaptureStdout();
  const auto ended = runProcessInForeground("/bin/sh", {"-c", command});
  EXPECT_TRUE(ended.ok());
  return testing::internal::GetCapturedStdout();
}

TEST(ChildProcess, ReportsHowAnAwaitedProgramEnded) {
  const auto ended = runProcess("/bin/sh", {"-c", "echo out; echo err >&2; cat; exit 7"});
  ASSERT_TRUE(ended);
  EXPECT_EQ(ended->status, 7);
  EXPECT_EQ(ended->output, "out\n");
  EXPECT_EQ(ended->errors, "err\n");
  EXPECT_EQ(runProcess("/bin/sh", {"-c", "kill -9 $$"})->status, -1);
  EXPECT_FALSE(runProcess("/none/program", {}));
}

TEST(ChildProcess, KeepsTheBeginningOfALongOutput) {
  const auto ended = runProcess("/bin/sh", {"-c", "head -c 1000000 /dev/zero"});
  ASSERT_TRUE(ended);
  EXPECT_EQ(ended->output.size(), 65536u);
}

TEST(ChildProcess, LeavesAForegroundProgramTheOutputFolderAndEnvironmentOfThisOne) {
  ASSERT_EQ(::setenv("ANNIVO_TEST", "a value", 1), 0);
  EXPECT_EQ(writtenInForeground("pwd -P"), std::filesystem::current_path().string() + "\n");
  EXPECT_EQ(writtenInForeground("echo $ANNIVO_TEST"), "a value\n");
  ::unsetenv("ANNIVO_TEST");
}

TEST(ChildProcess, GivesAForegroundProgramNoOtherOpenFile) {
  const Descriptor open(::open("/dev/zero", O_RDONLY));  // inheritable
  ASSERT_TRUE(open.valid());
  EXPECT_EQ(writtenInForeground("ls -l /proc/self/fd").find("/dev/zero"), std::string::npos);
}

TEST(ChildProcess, TellsHowAForegroundProgramEnded) {
  const auto exited = runProcessInForeground("/bin/sh", {"-c", "exit 7"});
  ASSERT_TRUE(exited.ok());
  EXPECT_EQ(exited->status, 7);
  EXPECT_EQ(exited->signal, 0);
  const auto killed = runProcessInForeground("/bin/sh", {"-c", "kill -KILL $$"});
  ASSERT_TRUE(killed.ok());
  EXPECT_EQ(killed->status, -1);
  EXPECT_EQ(killed->signal, SIGKILL);
}

TEST(ChildProcess, NamesAForegroundProgramThatCannotBeStarted) {
  const auto ended = runProcessInForeground("/none/program", {});
  ASSERT_FALSE(ended.ok());
  EXPECT_EQ(ended.error().kind, Error::Kind::absent);
  EXPECT_NE(ended.error().text().find("/none/program"), std::string::npos);
}

}  // namespace
}  // namespace annivo
