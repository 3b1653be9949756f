// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "platform/foundation/NSFileManager.h"
#include "tests/e2e/AgentHome.h"

namespace annivo {
namespace {

constexpr const char* kUID = "C1C1C1C1-0000-4000-8000-000000000001";
constexpr const char* kRunLock = "Library/Caches/org.annivo.Annivo2.Agent/run.lock";

struct Ended {
  int status;  ///< exit status, or minus the signal that ended it
  std::string out;
  std::string errors;
};

std::string contentsOf(int file) {
  std::string text;
  char bytes[4096];
  ::lseek(file, 0, SEEK_SET);
  for (ssize_t count = 0; (count = ::read(file, bytes, sizeof bytes)) > 0;) {
    text.append(bytes, static_cast<std::size_t>(count));
  }
  return text;
}

/// The agent as a process, started in conditions of the test's own.
class AgentProcess : public testing::Test {
 protected:
  void SetUp() override {
    home.addCalendar(kUID, "Days");
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    home.setParent({{"birthCalUID", kUID},
                    {"birthCalTitle", "B"},
                    {"aneeCalTitle", "A"},
                    {"titleBirthdays", PropertyList::Array{"First name"}}});
    home.setOwn({{"doLog", 1}});
  }

  /// `prepare` runs in the new process, whose standard input is empty, just before the agent.
  Ended run(
      std::vector<std::string> arguments, const std::function<void()>& prepare = [] {}) {
    const int out = ::memfd_create("out", MFD_CLOEXEC);
    const int errors = ::memfd_create("errors", MFD_CLOEXEC);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) {
      ::dup2(::open("/dev/null", O_RDWR), 0);
      ::dup2(out, 1);
      ::dup2(errors, 2);
      ::close_range(3, ~0U, 0);
      ::setenv("HOME", home.folder.path().c_str(), 1);
      ::setenv("TZ", "UTC", 1);
      std::string executable = AgentHome::agentExecutable();
      std::vector<char*> words{executable.data()};
      for (std::string& argument : arguments) words.push_back(argument.data());
      words.push_back(nullptr);
      prepare();
      ::execv(executable.c_str(), words.data());
      ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    Ended ended{.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
                .out = contentsOf(out),
                .errors = contentsOf(errors)};
    ::close(out);
    ::close(errors);
    return ended;
  }
  void expectAFullRun(const Ended& ended) const {
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(home.titles(kUID).size(), 3U);
    EXPECT_TRUE(home.own()["lastUpdate"].date());
    EXPECT_EQ(home.folder.readFile(kRunLock), "");
  }

  AgentHome home;
};

TEST_F(AgentProcess, TellsHowItIsUsedWithoutARun) {
  const auto before = home.folder.fingerprint();
  const Ended ended = run({"--help"});
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.out.substr(0, 19), "Usage: AnnivoAgent\n");
  EXPECT_NE(ended.out.find("--version"), std::string::npos);
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(home.folder.fingerprint(), before);
}

TEST_F(AgentProcess, TellsItsVersionWithoutARun) {
  const auto before = home.folder.fingerprint();
  const std::string info =
      std::string(ANNIVO_PRODUCT) + "/Contents/Helpers/AnnivoAgent.app/Contents/Info.plist";
  PosixFileManager disk;
  const NSFileManager& files = disk;
  const auto list = parsePropertyList(*files.contentsAtPath(info), info);
  ASSERT_TRUE(list);
  const Ended ended = run({"--version"});
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.out, "AnnivoAgent " + (*list)["CFBundleVersion"].stringOr("?") + "\n");
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(home.folder.fingerprint(), before);
}

TEST_F(AgentProcess, AnswersWithoutAHome) {
  EXPECT_EQ(run({"--version"}, [] { ::unsetenv("HOME"); }).status, 0);
}

TEST_F(AgentProcess, SaysThatItsAnswerWasNotWritten) {
  EXPECT_EQ(run({"--help"}, [] { ::dup2(::open("/dev/full", O_WRONLY), 1); }).status, 1);
}

TEST_F(AgentProcess, IgnoresEveryOtherArgument) {
  expectAFullRun(run({"-psn_0_12345", "help", "-v", "--", ""}));
}

TEST_F(AgentProcess, RunsWithoutStandardFiles) {
  for (const std::vector<int>& closed :
       {std::vector<int>{0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}}) {
    home.setOwn({{"doLog", 1}});  // No "lastUpdate": there is something to do and to log.
    expectAFullRun(run({}, [&] {
      for (const int number : closed) ::close(number);
    }));
  }
}

TEST_F(AgentProcess, LogsNothingIntoAFileOfItsOwnWithoutStandardError) {
  (void)run({}, [] { ::close(2); });
  for (const auto& [name, content] : home.folder.snapshot()) {
    EXPECT_EQ(content.find("Annivo starting"), std::string::npos) << name;
  }
}

TEST_F(AgentProcess, GoesOnWhenNobodyReadsItsLog) {
  expectAFullRun(run({}, [] {
    int ends[2];
    if (::pipe(ends) != 0) ::_exit(2);
    ::dup2(ends[1], 2);
    ::close(ends[0]);
    ::close(ends[1]);
  }));
}

TEST_F(AgentProcess, GoesOnWhenItsLogCannotBeWritten) {
  expectAFullRun(run({}, [] { ::dup2(::open("/dev/full", O_WRONLY), 2); }));
}

TEST_F(AgentProcess, EndsByItselfUnderALimitOfFileSizesAndTheNextRunMakesItGood) {
  for (const rlim_t bytes : {0U, 300U, 1000U, 2000U}) {
    home.folder.remove("Library/Preferences/org.annivo.Annivo2.Agent.plist");
    home.setContacts({personBorn("Ann" + std::to_string(bytes), "Smith", {1980, 6, 10})});
    const Ended ended = run({}, [&] {
      const rlimit limit{.rlim_cur = bytes, .rlim_max = RLIM_INFINITY};
      if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(2);
      ::dup2(::open("/dev/null", O_WRONLY), 2);
    });
    EXPECT_GE(ended.status, 0) << "ended by a signal under " << bytes;
    expectAFullRun(run({}));
    const std::string title = "Ann" + std::to_string(bytes);
    EXPECT_EQ(home.titles(kUID), (std::vector<std::string>{title, title, title}));
  }
}

}  // namespace
}  // namespace annivo
