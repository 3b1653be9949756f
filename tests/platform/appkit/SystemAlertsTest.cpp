// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <future>
#include <map>

#include "platform/appkit/SystemAlerts.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDisplay.h"

namespace annivo {
namespace {

const NSAlert kQuestion{.messageText = "Annivo 2",
                        .defaultButton = "Quit",
                        .alternateButton = "Continue",
                        .informativeText = "It is old."};

/// Alerts over an environment of the test's own, with no terminal.
class SystemAlertsTest : public testing::Test {
 protected:
  SystemAlertsTest() : input_(::dup(0)) {
    const int nowhere = ::open("/dev/null", O_RDONLY);
    ::dup2(nowhere, 0);
    ::close(nowhere);
  }
  ~SystemAlertsTest() override {
    ::dup2(input_, 0);
    ::close(input_);
  }

  AlertAnswer show(const NSAlert& alert) {
    return makeSystemAlerts(log_, [this](const char* name) { return variables_[name]; })
        ->runModal(alert);
  }

  /// Puts a program in the only folder of PATH.
  void install(const std::string& name, const std::string& script) {
    folder_.writeFile(name, "#!/bin/sh\n" + script);
    ::chmod(folder_.path(name).c_str(), 0755);
    variables_["PATH"] = folder_.path();
  }

  std::map<std::string, std::string> variables_;
  RecordingLog log_;
  TemporaryFolder folder_;

 private:
  int input_;
};

TEST_F(SystemAlertsTest, GoToTheLogAndTheLastButtonWithNobodyThere) {
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  ASSERT_EQ(log_.lines().size(), 1u);
  EXPECT_EQ(log_.lines()[0], "Nobody to ask, taken as \"Continue\": Annivo 2\n\nIt is old.");
  EXPECT_EQ(show({.messageText = "Broken"}), AlertAnswer::defaultButton);
  EXPECT_EQ(show({.messageText = "Three", .alternateButton = "B", .otherButton = "C"}),
            AlertAnswer::other);
}

TEST_F(SystemAlertsTest, StartNoProgramWithoutADisplay) {
  install("zenity", "touch " + folder_.path("started"));
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_FALSE(folder_.exists("started"));
}

TEST_F(SystemAlertsTest, GoToTheLogWhereThereIsADisplayButNoProgram) {
  variables_ = {{"DISPLAY", ":0"}, {"PATH", folder_.path()}};
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_EQ(log_.lines().size(), 1u);
}

TEST_F(SystemAlertsTest, AreShownByZenityUnderEitherKindOfDisplay) {
  install("zenity", "exit 0");
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    variables_[variable] = "0";
    EXPECT_EQ(show(kQuestion), AlertAnswer::defaultButton) << variable;
    variables_.erase(variable);
  }
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SystemAlertsTest, AreShownByKdialogWhereZenityIsMissing) {
  variables_["DISPLAY"] = ":0";
  install("kdialog", "printf '%s|' \"$@\" > " + folder_.path("arguments") + "; exit 1");
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_EQ(folder_.readFile("arguments"),
            "--title=Annivo 2|--yesno=<qt>Annivo 2<br/><br/>It is old.</qt>|--yes-label=Quit|"
            "--no-label=Continue|");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SystemAlertsTest, FallBackWhenZenityCannotOpenTheDisplay) {
  variables_["DISPLAY"] = ":0";
  install("zenity", "echo 'Gtk-WARNING **: cannot open display: :0' >&2; exit 1");
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_EQ(log_.lines().size(), 1u) << "to the log";
  install("kdialog", "exit 0");
  EXPECT_EQ(show(kQuestion), AlertAnswer::defaultButton) << "to kdialog";
}

TEST_F(SystemAlertsTest, FallBackWhenTheProgramCannotBeStarted) {
  variables_["DISPLAY"] = ":0";
  install("zenity", "");
  folder_.writeFile("zenity",
                    "\x7F"
                    "ELF but not really");
  install("kdialog", "exit 0");
  EXPECT_EQ(show(kQuestion), AlertAnswer::defaultButton);
}

TEST_F(SystemAlertsTest, FallBackWhenTheProgramCrashes) {
  variables_["DISPLAY"] = ":0";
  install("zenity", "kill -SEGV $$");
  install("kdialog", "kill -ABRT $$");
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_EQ(log_.lines().size(), 1u);
}

TEST_F(SystemAlertsTest, DoNotWaitForWhatTheProgramLeavesBehind) {
  variables_["DISPLAY"] = ":0";
  install("zenity", "/bin/sleep 60 & exit 0");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(show(kQuestion), AlertAnswer::defaultButton);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(SystemAlertsTest, AskTheProgramInALanguageThatCanBeTold) {
  variables_["DISPLAY"] = ":0";
  install("zenity", "echo \"$LC_ALL/$LANGUAGE\" > " + folder_.path("locale"));
  ::setenv("LANGUAGE", "de", 1);
  ::setenv("LC_ALL", "de_DE.UTF-8", 1);
  show(kQuestion);
  ::unsetenv("LANGUAGE");
  ::unsetenv("LC_ALL");
  EXPECT_EQ(folder_.readFile("locale"), "C.UTF-8/\n");
}

TEST_F(SystemAlertsTest, FindNoProgramInRelativeFolders) {
  install("zenity", "exit 0");
  variables_ = {{"DISPLAY", ":0"}, {"PATH", ".::bin"}};
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
}

/// With a real display and the real program.
class SystemAlertsShown : public SystemAlertsTest {
 protected:
  SystemAlertsShown() {
    variables_ = {{"DISPLAY", display_.name()}, {"PATH", "/usr/bin:/bin"}};
    ::setenv("NO_AT_BRIDGE", "1", 1);
  }
  /// Shows an alert beside the test, which presses its buttons; its window.
  std::string waitFor(const NSAlert& alert) {
    answer_ = std::async(std::launch::async, [this, alert] { return show(alert); });
    return display_.waitForWindow(alert.messageText);
  }
  AlertAnswer press(const std::string& window, const std::string& keys) {
    return display_.pressFor(answer_, window, keys);
  }

 private:
  std::future<AlertAnswer> answer_;  // outlives the display, whose end ends the alert

 protected:
  VirtualDisplay display_;
};

TEST_F(SystemAlertsShown, ShowTheirTextAndAreDismissed) {
  const std::string window = waitFor(kQuestion);
  ASSERT_NE(window, "");
  const std::string text = "Annivo 2\n\nIt is old.";
  EXPECT_EQ(display_.waitForMessage(window, text), text);
  EXPECT_EQ(press(window, "Escape"), AlertAnswer::alternate);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SystemAlertsShown, TakeTheButtonThatIsPressed) {
  const struct {
    const char* keys;
    AlertAnswer answer;
  } rows[] = {{"Return", AlertAnswer::defaultButton},
              {"space", AlertAnswer::defaultButton},
              {"Left space", AlertAnswer::alternate},
              {"Right space", AlertAnswer::defaultButton}};
  for (const auto& [keys, answer] : rows) {
    const std::string window = waitFor(kQuestion);
    ASSERT_NE(window, "");
    EXPECT_EQ(press(window, keys), answer) << keys;
  }
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SystemAlertsShown, ShowMarkupAndOptionsAsTheyStand) {
  const std::string text = "--error <b>bold</b> &amp; %s \\n _x \u00E9\nsecond line";
  const std::string window = waitFor({.messageText = "Title", .informativeText = text});
  ASSERT_NE(window, "");
  EXPECT_EQ(display_.waitForMessage(window, "Title\n\n" + text), "Title\n\n" + text);
  EXPECT_EQ(press(window, "Escape"), AlertAnswer::defaultButton);
}

TEST_F(SystemAlertsShown, FallBackToTheLogWhenTheDisplayIsNotThere) {
  ::setenv("DISPLAY", ":9999", 1);
  variables_["DISPLAY"] = ":9999";
  EXPECT_EQ(show(kQuestion), AlertAnswer::alternate);
  EXPECT_EQ(log_.lines().size(), 1u);
}

}  // namespace
}  // namespace annivo
