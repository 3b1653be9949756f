// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/appkit/SystemAlerts.h"
#include "platform/appkit/TerminalAlert.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

const NSAlert kQuestion{.messageText = "Annivo 2",
                        .defaultButton = "Quit",
                        .alternateButton = "Continue",
                        .informativeText = "It is old.\n\nVery old."};

/// A process on a pseudo-terminal that shows one alert by way of the system's alerts and exits with
/// the answer plus 10.
class Person {
 public:
  explicit Person(const NSAlert& alert) {
    process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
      RecordingLog log;
      const auto alerts = makeSystemAlerts(log, [](const char*) { return std::string(); });
      const int answer = 10 + static_cast<int>(alerts->runModal(alert));
      ::_exit(log.lines().empty() ? answer : 99);
    }
  }
  ~Person() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    ::close(terminal_);
  }
  Person(const Person&) = delete;
  Person& operator=(const Person&) = delete;

  /// Reads the screen until it holds `text`; all that was read so far.
  const std::string& readUntil(const std::string& text) {
    char buffer[512];
    while (screen_.find(text) == std::string::npos) {
      const ssize_t size = ::read(terminal_, buffer, sizeof buffer);
      if (size <= 0) break;
      screen_.append(buffer, static_cast<std::size_t>(size));
    }
    return screen_;
  }
  const std::string& readPrompt() { return readUntil("(Return for 1): "); }
  void forget() { screen_.clear(); }
  void type(const std::string& keys) const {
    EXPECT_EQ(::write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  AlertAnswer answer() {
    char buffer[512];
    while (::read(terminal_, buffer, sizeof buffer) > 0) {
    }
    int status = 0;
    EXPECT_EQ(::waitpid(process_, &status, 0), process_);
    EXPECT_TRUE(WIFEXITED(status));
    return static_cast<AlertAnswer>(WEXITSTATUS(status) - 10);
  }

 private:
  pid_t process_ = -1;
  int terminal_ = -1;
  std::string screen_;
};

TEST(TerminalAlert, ShowsItsTextsAndNumberedButtons) {
  Person person(kQuestion);
  EXPECT_EQ(person.readPrompt(),
            "\r\nAnnivo 2\r\n\r\nIt is old.\r\n\r\nVery old.\r\n\r\n"
            "[1] Quit  [2] Continue  (Return for 1): ");
  person.type("1\n");
  EXPECT_EQ(person.answer(), AlertAnswer::defaultButton);
}

struct Keys {
  const char* typed;
  AlertAnswer answer;
};
struct TerminalAnswer : testing::TestWithParam<Keys> {};

TEST_P(TerminalAnswer, IsTheButtonThatTheLineNames) {
  NSAlert alert = kQuestion;
  alert.otherButton = "Later";
  Person person(alert);
  person.readPrompt();
  person.type(GetParam().typed);
  EXPECT_EQ(person.answer(), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    TerminalAlert, TerminalAnswer,
    testing::Values(Keys{"1\n", AlertAnswer::defaultButton}, Keys{"2\n", AlertAnswer::alternate},
                    Keys{"3\n", AlertAnswer::other}, Keys{"\n", AlertAnswer::defaultButton},
                    Keys{"  2 \n", AlertAnswer::alternate},
                    Keys{"Continue\n", AlertAnswer::alternate}, Keys{"LATER\n", AlertAnswer::other},
                    // Control-D: the end of input.
                    Keys{"\x04", AlertAnswer::other},
                    Keys{"4\n0\n-1\nno\n2\n", AlertAnswer::alternate},
                    Keys{"nonsense\n\x04", AlertAnswer::other}));

TEST(TerminalAlert, AsksAgainAfterALineThatNamesNoButton) {
  Person person(kQuestion);
  person.readPrompt();
  person.forget();
  person.type("maybe\n");
  EXPECT_NE(person.readPrompt().find("[2] Continue"), std::string::npos);
  person.type("2\n");
  EXPECT_EQ(person.answer(), AlertAnswer::alternate);
}

TEST(TerminalAlert, WritesNoControlCharactersOfItsTexts) {
  Person person({.messageText = "a\x1B]0;title\x07z\x1B[2J", .defaultButton = "O\x1B[31mK\n"});
  const std::string screen = person.readPrompt();
  EXPECT_EQ(screen.find('\x1B'), std::string::npos);
  EXPECT_EQ(screen.find('\x07'), std::string::npos);
  EXPECT_NE(screen.find("[1] O [31mK "), std::string::npos) << screen;
  person.type("\n");
  EXPECT_EQ(person.answer(), AlertAnswer::defaultButton);
}

TEST(TerminalAlert, TakesNoTerminalFromTheBackgroundOfAShell) {
  int terminal = -1;
  const pid_t shell = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(shell, 0);
  if (shell == 0) {
    const bool inFront = isUsableTerminal(0, 2);
    const pid_t background = ::fork();
    if (background == 0) {
      ::setpgid(0, 0);
      ::_exit(isUsableTerminal(0, 2) ? 1 : 0);
    }
    int status = 1;
    ::waitpid(background, &status, 0);
    ::_exit(inFront && status == 0 ? 0 : 1);
  }
  int status = 1;
  EXPECT_EQ(::waitpid(shell, &status, 0), shell);
  ::close(terminal);
  EXPECT_EQ(status, 0);
}

TEST(TerminalAlert, AsksNobodyWhereOneSideIsNoTerminal) {
  const int nowhere = ::open("/dev/null", O_RDWR);
  EXPECT_FALSE(isUsableTerminal(nowhere, nowhere));
  ::close(nowhere);
}

}  // namespace
}  // namespace annivo
