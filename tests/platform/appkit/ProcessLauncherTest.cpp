// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

#include "platform/appkit/NSWorkspace.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

/// Writes what a launched program finds to the file that is its only argument.
constexpr const char* kProgram = R"(
import os, signal, sys, time
def name(fd):
    try: return os.readlink("/proc/self/fd/" + fd)
    except OSError: return None
files = {fd: name(fd) for fd in os.listdir("/proc/self/fd")}
text = "files " + " ".join(f"{fd}={path}" for fd, path in sorted(files.items()) if path) + "\n"
text += f"leads {os.getsid(0) == os.getpid()}\n"
text += f"session {os.getsid(0)}\n"
text += f"folder {os.getcwd()}\n"
text += f"blocked {len(signal.pthread_sigmask(signal.SIG_BLOCK, []))}\n"
text += f"arguments {sys.argv[2:]}\n"
time.sleep(float(os.environ.get("DELAY", "0")))
text += f"parent {os.getppid()}\n"
with open(sys.argv[1] + ".part", "w") as out: out.write(text)
os.rename(sys.argv[1] + ".part", sys.argv[1])
)";

class ProcessLauncherTest : public testing::Test {
 protected:
  Result<void> launch() {
    return ProcessLauncher().launch("/usr/bin/python3", {"-c", kProgram, folder_.path("found")});
  }
  /// The rest of the line that begins with `key`, once the program has written it.
  std::string found(const std::string& key) {
    for (int i = 0; i < 300 && !folder_.exists("found"); ++i) std::this_thread::sleep_for(100ms);
    std::istringstream lines(folder_.readFile("found"));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(key + " ")) return line.substr(key.size() + 1);
    }
    return "(nothing)";
  }
  TemporaryFolder folder_;
};

TEST_F(ProcessLauncherTest, GivesTheProgramNoOpenFileOfThisProcess) {
  const int open = ::open("/dev/zero", O_RDONLY);  // inheritable
  const int high = ::fcntl(open, F_DUPFD, 200);    // far above the others
  const int quiet = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  EXPECT_TRUE(launch());
  EXPECT_EQ(found("files"), "0=/dev/null 1=/dev/null 2=/dev/null");
  for (const int descriptor : {open, high, quiet}) ::close(descriptor);
}

TEST_F(ProcessLauncherTest, GivesTheProgramASessionOfItsOwn) {
  EXPECT_TRUE(launch());
  EXPECT_EQ(found("leads"), "True");
  EXPECT_NE(found("session"), std::to_string(::getsid(0)));
  EXPECT_EQ(found("folder"), "/");
  EXPECT_EQ(found("arguments"), "[]");
}

TEST_F(ProcessLauncherTest, GivesTheProgramNoBlockedSignal) {
  sigset_t all, before;
  sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, &before);
  EXPECT_TRUE(launch());
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(found("blocked"), "0");
}

TEST_F(ProcessLauncherTest, StartsAProgramThatOutlivesThisProcess) {
  const pid_t starter = ::fork();
  ASSERT_GE(starter, 0);
  if (starter == 0) {
    ::setenv("DELAY", "0.5", 1);
    const bool started = launch().ok();
    ::_exit(started && !folder_.exists("found") ? 0 : 1);
  }
  int status = 1;
  EXPECT_EQ(::waitpid(starter, &status, 0), starter);
  EXPECT_EQ(status, 0) << "the starter ended before the program";
  EXPECT_FALSE(folder_.exists("found"));
  EXPECT_NE(found("parent"), std::to_string(starter));
}

TEST_F(ProcessLauncherTest, LeavesNoChildBehindToWaitFor) {
  EXPECT_TRUE(launch());
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(ProcessLauncherTest, WorksInAProcessWithoutStandardFiles) {
  const pid_t bare = ::fork();
  ASSERT_GE(bare, 0);
  if (bare == 0) {
    for (int descriptor = 0; descriptor < 64; ++descriptor) ::close(descriptor);
    ::_exit(launch().ok() ? 0 : 1);
  }
  int status = 1;
  ::waitpid(bare, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(found("files"), "0=/dev/null 1=/dev/null 2=/dev/null");
}

TEST_F(ProcessLauncherTest, ReportsAProgramThatIsNotThere) {
  const auto launched = ProcessLauncher().launch(folder_.path("missing"), {});
  ASSERT_FALSE(launched);
  EXPECT_EQ(launched.error().kind, Error::Kind::absent);
  EXPECT_NE(launched.error().description.find(folder_.path("missing")), std::string::npos);
}

TEST_F(ProcessLauncherTest, ReportsAFileThatIsNoProgram) {
  folder_.writeFile("text", "hello");
  EXPECT_FALSE(ProcessLauncher().launch(folder_.path("text"), {})) << "no permission";
  ::chmod(folder_.path("text").c_str(), 0755);
  EXPECT_FALSE(ProcessLauncher().launch(folder_.path("text"), {})) << "no program";
  EXPECT_FALSE(ProcessLauncher().launch(folder_.path(), {})) << "a folder";
}

}  // namespace
}  // namespace annivo
