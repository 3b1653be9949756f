// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/Platform.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

/// Sets an environment variable of this process for as long as it lives; null unsets it.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    set(value);
  }
  ~EnvironmentVariable() { set(old_ ? old_->c_str() : nullptr); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  void set(const char* value) const {
    if (value) {
      ::setenv(name_, value, 1);
    } else {
      ::unsetenv(name_);
    }
  }
  const char* name_;
  std::optional<std::string> old_;
};

std::string complaintAboutHome(const char* home) {
  const EnvironmentVariable variable("HOME", home);
  const auto platform = Platform::system("AnnivoAgent");
  return platform ? "none" : platform.error().text();
}

TEST(Platform, SaysWhichHomeIsMissing) {
  const TemporaryFolder folder;
  folder.writeFile("file", "");
  EXPECT_NE(complaintAboutHome(nullptr).find("HOME is not set"), std::string::npos);
  EXPECT_NE(complaintAboutHome("").find("HOME is not set"), std::string::npos);
  EXPECT_NE(complaintAboutHome("relative/home").find("relative/home"), std::string::npos);
  for (const std::string& home :
       {folder.path("none"), folder.path("file"), folder.path("file/x")}) {
    EXPECT_NE(complaintAboutHome(home.c_str()).find(home), std::string::npos) << home;
  }
}

TEST(Platform, OfTheMachineStandsOnHomeAndTheRunningExecutable) {
  const TemporaryFolder folder;
  const EnvironmentVariable home("HOME", (folder.path() + "/").c_str());
  const EnvironmentVariable zone("TZ", "Asia/Kolkata");
  const auto platform = Platform::system("AnnivoAgent");
  ASSERT_TRUE(platform);
  EXPECT_EQ((*platform)->homeDirectory(), folder.path());
  EXPECT_EQ((*platform)->mainBundle().bundlePath(),
            std::filesystem::read_symlink("/proc/self/exe").parent_path());
  EXPECT_EQ((*platform)->defaultTimeZone().offset(utc(2026, 1, 1)), std::chrono::minutes{330});
  EXPECT_TRUE(folder.snapshot().empty());
}

TEST(Platform, TouchesNoFileWhenItIsMade) {
  const ManualClock clock(utc(2026, 11, 20));
  MemoryFileManager files(clock);
  TestHome home;
  home.useFileManager(&files);
  (void)home.platform();
  EXPECT_EQ(files.counts().reads + files.counts().attributes + files.counts().listings, 0u);
  EXPECT_EQ(files.counts().changes(), 0u);
}

TEST(Platform, FindsTheSystemFolderInTheParentsBundle) {
  TestHome home;
  const std::string contents = home.productPath() + "/Contents";
  EXPECT_EQ(home.platform().resolvedPath("/System/Library/X"),
            contents + "/SharedSupport/System/Library/X");
  EXPECT_EQ(home.platform().resolvedPath("/Systems/X"), "/Systems/X");
  EXPECT_EQ(home.platform().resolvedPath("/home/System/X"), "/home/System/X");

  PlatformParts parts;
  parts.home = home.path();
  parts.executable = contents + "/Linux/annivo";
  parts.environment = [](const char*) { return std::string(); };
  parts.clock = std::make_unique<SystemClock>();
  parts.files = std::make_unique<PosixFileManager>();
  EXPECT_EQ(Platform(std::move(parts)).resolvedPath("/System/Library/X"),
            contents + "/SharedSupport/System/Library/X");
}

TEST(Platform, AnswersFromTheProductsOwnResources) {
  TestHome home;
  EXPECT_EQ(home.platform().mainBundle().bundleIdentifier(), kAgentDomain);
  EXPECT_EQ(home.platform().updateHost().systemVersion, "10.7.5");
  EXPECT_EQ(home.platform().gestalt().query(kGestaltSystemVersion), 0x1075);
  EXPECT_EQ(home.platform().localizedString("Anniversary", ""), "anniversary");
  EXPECT_EQ(home.platform().localizedString("No such key", ""), "No such key");
}

TEST(Platform, TakesTheLanguagesFromTheGlobalDomainThenTheEnvironment) {
  TestHome german({.languages = {"de-AT", "fr"}});
  EXPECT_EQ(german.platform().preferredLanguages(), (std::vector<std::string>{"de-AT", "fr"}));
  TestHome french({.environment = {{"LANG", "fr_FR.UTF-8"}}});
  EXPECT_EQ(french.platform().preferredLanguages(), std::vector<std::string>{"fr"});
  TestHome neither;
  EXPECT_EQ(neither.platform().preferredLanguages(), std::vector<std::string>{"en"});
}

TEST(Platform, KeepsTheDomainsOfAgentAndParentApart) {
  TestHome home;
  home.parentPreferences({{"appRunning", true}});
  home.ownPreferences({{"doLog", 1}});
  NSUserDefaults& defaults = home.platform().standardUserDefaults();
  EXPECT_EQ(defaults.objectForKey("doLog"), PropertyList(1));
  EXPECT_TRUE(defaults.objectForKey("appRunning").isNil());
  EXPECT_EQ((*defaults.persistentDomainForName(kParentDomain)).at("appRunning"),
            PropertyList(true));
  home.platform().appPreferences().setAppValue("appRunning", false, kParentDomain);
  ASSERT_TRUE(home.platform().appPreferences().appSynchronize(kParentDomain));
  EXPECT_EQ(home.storedPreferences(kParentDomain)["appRunning"], PropertyList(false));
}

TEST(Platform, MakesTheApplicationSupportFolderWhenAsked) {
  TestHome home;
  const auto folder = home.platform().applicationSupportDirectory();
  EXPECT_EQ(folder, home.path("Library/Application Support"));
  EXPECT_TRUE(home.exists("Library/Application Support"));
}

TEST(Platform, HasNoApplicationSupportFolderWhereItCannotBeMade) {
  TestHome home;
  home.writeFile("Library", "a file");
  EXPECT_EQ(home.platform().applicationSupportDirectory(), std::nullopt);
  EXPECT_EQ(home.log.count(home.path("Library")), 1u);
}

TEST(Platform, TakesTheTemporaryFolderFromTheEnvironment) {
  EXPECT_EQ(TestHome().platform().temporaryDirectory(), "/tmp");
  EXPECT_EQ(TestHome({.environment = {{"TMPDIR", "/var/tmp/"}}}).platform().temporaryDirectory(),
            "/var/tmp");
  EXPECT_EQ(TestHome({.environment = {{"TMPDIR", "tmp"}}}).platform().temporaryDirectory(), "/tmp");
}

TEST(Platform, LetsOneRunWaitForTheOther) {
  TestHome home;
  int go[2];
  int got[2];
  ASSERT_EQ(::pipe(go), 0);
  ASSERT_EQ(::pipe(got), 0);
  const pid_t child = ::fork();  // before the first run, whose lock it would share
  if (child == 0) {
    char byte = 0;
    bool good = ::read(go[0], &byte, 1) == 1 && home.platform().becomeTheOnlyRun().ok();
    good = good && ::write(got[1], "y", 1) == 1;
    ::_exit(good ? 0 : 1);
  }
  ASSERT_TRUE(home.platform().becomeTheOnlyRun());
  EXPECT_TRUE(home.exists("Library/Caches/org.annivo.Annivo2.Agent/run.lock"));
  ASSERT_EQ(::write(go[1], "g", 1), 1);
  pollfd waiting{.fd = got[0], .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&waiting, 1, 200), 0) << "two runs at a time";
  home.endRun();
  EXPECT_EQ(::poll(&waiting, 1, 10000), 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  for (const int end : {go[0], go[1], got[0], got[1]}) ::close(end);
}

TEST(Platform, DoesNotRunWithoutItsLock) {
  TestHome home;
  home.writeFile("Library/Caches", "a file");
  const auto alone = home.platform().becomeTheOnlyRun();
  ASSERT_FALSE(alone);
  EXPECT_NE(alone.error().text().find(home.path("Library/Caches")), std::string::npos);
}

// The test home itself.

TEST(TestHome, GivesEachRunTheSameHomeAndDoubles) {
  TestHome home({.timeZone = "Asia/Kolkata", .now = utc(2026, 1, 2)});
  home.platform().log().write("first");
  home.platform().standardUserDefaults().setObjectForKey(1, "a");
  ASSERT_TRUE(home.platform().standardUserDefaults().synchronize());
  home.endRun();
  home.clock.advance(std::chrono::hours{24});
  home.platform().log().write("second");
  EXPECT_EQ(home.log.lines(), (std::vector<std::string>{"first", "second"}));
  EXPECT_EQ(home.platform().clock().now(), utc(2026, 1, 3));
  EXPECT_EQ(home.platform().standardUserDefaults().objectForKey("a"), PropertyList(1));
  EXPECT_EQ(home.platform().defaultTimeZone().offset(utc(2026, 1, 1)), std::chrono::minutes{330});
}

TEST(TestHome, AnswersAlertsAsTheirLastButtonUnlessTold) {
  TestHome home;
  const auto ask = [&](const char* alternate, const char* other) {
    NSAlert alert;
    alert.messageText = "?";
    alert.alternateButton = alternate;
    alert.otherButton = other;
    return home.platform().alerts().runModal(alert);
  };
  EXPECT_EQ(ask("", ""), AlertAnswer::defaultButton);
  EXPECT_EQ(ask("No", ""), AlertAnswer::alternate);
  EXPECT_EQ(ask("No", "Cancel"), AlertAnswer::other);
  home.alerts.answerNext(AlertAnswer::defaultButton);
  EXPECT_EQ(ask("No", "Cancel"), AlertAnswer::defaultButton);
  EXPECT_EQ(home.alerts.shown().size(), 4u);
}

TEST(TestHome, GoesToAnotherFileManagerWhereToldTo) {
  TestHome home;
  PosixFileManager disk;
  FailingFileManager files(disk);
  home.useFileManager(&files);
  files.failChangesFrom(1);
  EXPECT_EQ(home.platform().applicationSupportDirectory(), std::nullopt);
  EXPECT_FALSE(files.changes().empty());
}

}  // namespace
}  // namespace annivo
