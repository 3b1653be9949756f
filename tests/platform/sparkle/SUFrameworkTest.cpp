// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>

#include "platform/sparkle/SUUpdater.h"
#include "tests/support/FeedServer.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const std::string kBuiltFramework =
    std::string(ANNIVO_PRODUCT) + "/Contents/Frameworks/Sparkle.framework";

/// Keeps what it is told.
class RecordingDelegate final : public SUUpdaterDelegate {
 public:
  void updaterDidFindValidUpdate(const SUAppcastItem& item) override {
    ++answers;
    found = item;
  }
  void updaterDidNotFindUpdate() override { ++answers; }
  int answers = 0;
  std::optional<SUAppcastItem> found;
};

/// The module as built, checking the product of a test home, whose version is 2.0.0.
class SUFrameworkTest : public testing::Test {
 protected:
  void SetUp() override { load(); }
  void load() {
    auto loaded = SUFramework::load(NSBundle(files_, kBuiltFramework));
    ASSERT_TRUE(loaded) << loaded.error().text();
    framework_ = std::move(*loaded);
  }

  /// As if in another process; the updater goes before the host that it uses.
  void startOver() {
    delegate_ = {};
    framework_.reset();
    home_.endRun();
    load();
  }

  SUUpdater& updater() {
    SUUpdater& made = framework_->updaterForBundle(NSBundle(files_, home_.productPath()),
                                                   home_.platform().updateHost());
    made.setDelegate(&delegate_);
    return made;
  }

  void check(const std::string& feed, PropertyList::Dictionary preferences = {}) {
    preferences["SUFeedURL"] = feed;
    home_.parentPreferences(preferences);
    check();
  }
  void check() {
    updater().checkForUpdateInformation();
    EXPECT_EQ(delegate_.answers, 0) << "answered at once";
    while (delegate_.answers == 0) {
      ASSERT_TRUE(home_.platform().runLoop().runModeForInterval(100ms));
    }
    EXPECT_FALSE(home_.platform().runLoop().runModeForInterval(0ms));
    EXPECT_EQ(delegate_.answers, 1);
  }
  /// The version found, "" for none.
  [[nodiscard]] std::string found() const {
    return delegate_.found ? delegate_.found->version : "";
  }

  TestHome home_;
  PosixFileManager files_;
  RecordingDelegate delegate_;
  std::unique_ptr<SUFramework> framework_;
  FeedServer server_;
};

TEST_F(SUFrameworkTest, FindsANewerVersion) {
  check(server_.url("/version/2.0.1"));
  EXPECT_EQ(found(), "2.0.1");
  EXPECT_EQ(delegate_.found->displayVersion, "2.0.1");
  EXPECT_EQ(delegate_.found->url, "https://host.example/Annivo.zip");
  EXPECT_TRUE(home_.log.lines().empty());
}

TEST_F(SUFrameworkTest, FindsNothingQuietlyWhereNothingIsNewer) {
  for (const char* path : {"/version/2.0.0", "/version/2.0", "/version/1.9", "/none"}) {
    startOver();
    check(server_.url(path));
    EXPECT_EQ(found(), "") << path;
  }
  EXPECT_TRUE(home_.log.lines().empty());
}

TEST_F(SUFrameworkTest, FindsNothingWithALineInTheLogWhereSomethingFails) {
  for (const char* path : {"/broken", "/empty", "/status/404", "/size/50000000", "/endless",
                           "/loop", "/short", "/redirect?to=file:///etc/passwd"}) {
    startOver();
    home_.log.clear();
    check(server_.url(path));
    EXPECT_EQ(found(), "") << path;
    EXPECT_EQ(home_.log.count(path), 1u) << path;
  }
}

TEST_F(SUFrameworkTest, RefusesFeedsOnTheDiskOrNowhere) {
  home_.writeFile("feed.xml", "<rss><channel/></rss>");
  check("file://" + home_.path("feed.xml"));
  EXPECT_EQ(found(), "");
  EXPECT_EQ(home_.log.lines().size(), 1u);
}

TEST_F(SUFrameworkTest, TakesTheFeedOfTheInfoPropertyListWithoutAPreference) {
  const fs::path info = home_.productPath() + "/Contents/Info.plist";
  const PropertyList::Dictionary values{{"CFBundleIdentifier", kParentDomain},
                                        {"CFBundleVersion", "2.0.0"},
                                        {"SUFeedURL", server_.url("/version/3")}};
  fs::remove(info);  // it may be a link to a resource
  ASSERT_TRUE(files_.writeAtomically(info, xmlPropertyList(values)));
  check();
  EXPECT_EQ(found(), "3");

  startOver();
  check(server_.url("/version/4"));
  EXPECT_EQ(found(), "4") << "the preference comes first";
}

TEST_F(SUFrameworkTest, PassesOverTheSkippedVersion) {
  check(server_.url("/version/2.5"), {{"SUSkippedVersion", "2.5"}});
  EXPECT_EQ(found(), "");
}

TEST_F(SUFrameworkTest, WritesNothingWhereItFindsAnUpdate) {
  home_.parentPreferences({{"SUFeedURL", server_.url("/version/2.0.1")}});
  const auto before = home_.folder().fingerprint();
  check();
  EXPECT_EQ(home_.folder().fingerprint(), before);
}

TEST_F(SUFrameworkTest, RecordsTheTimeOfACheckThatFindsNothingAndWritesNothingElse) {
  const Date now = home_.clock.now();
  check(server_.url("/none"), {{"SULastCheckTime", now - std::chrono::days{8}}, {"other", 1}});
  EXPECT_EQ(home_.storedPreferences(kParentDomain),
            PropertyList(PropertyList::Dictionary{
                {"SULastCheckTime", now}, {"SUFeedURL", server_.url("/none")}, {"other", 1}}));
}

TEST_F(SUFrameworkTest, LetsTheCheckAfterOneThatFailedBeDueWithinADay) {
  const Date now = home_.clock.now();
  const struct {
    PropertyList interval;
    std::chrono::seconds recordedAgo;
  } rows[] = {{{}, 6 * 86400s},  // a week
              {86400 * 30, 29 * 86400s},
              {86401, 1s},
              {86400, 0s},
              {3600, 0s},
              {0, 0s},
              {-5, 0s},
              {"172800", 86400s},
              {PropertyList::Array{1}, 6 * 86400s}};
  for (const char* path : {"/broken", "/status/500"}) {
    for (const auto& [interval, recordedAgo] : rows) {
      startOver();
      check(server_.url(path), {{"SULastCheckTime", now - std::chrono::days{60}},
                                {"SUScheduledCheckInterval", interval}});
      const PropertyList stored = home_.storedPreferences(kParentDomain);
      EXPECT_EQ(stored["SULastCheckTime"], PropertyList(now - recordedAgo)) << path;
    }
  }
  startOver();
  check("http://127.0.0.1:1/nobody-listens");
  EXPECT_EQ(home_.storedPreferences(kParentDomain)["SULastCheckTime"],
            PropertyList(now - 6 * 86400s));
}

TEST_F(SUFrameworkTest, KeepsNamesAndPasswordsOutOfTheLog) {
  std::string url = server_.url("/status/404");
  url.insert(url.find("127"), "ann:geheim@");
  check(url);
  EXPECT_EQ(home_.log.count("geheim"), 0u);
  EXPECT_EQ(home_.log.count("/status/404"), 1u);
}

TEST_F(SUFrameworkTest, AnswersOnceForChecksStartedTogether) {
  home_.parentPreferences({{"SUFeedURL", server_.url("/version/3")}});
  SUUpdater& both = updater();
  both.checkForUpdateInformation();
  both.checkForUpdateInformation();
  while (home_.platform().runLoop().runModeForInterval(100ms)) {
  }
  EXPECT_EQ(delegate_.answers, 1);
  EXPECT_EQ(server_.requests().size(), 1u);
}

TEST_F(SUFrameworkTest, LetsATerminationOutOfTheAnswer) {
  struct Terminating final : SUUpdaterDelegate {
    void updaterDidFindValidUpdate(const SUAppcastItem&) override { throw Termination{}; }
    void updaterDidNotFindUpdate() override {}
  } terminating;
  home_.parentPreferences({{"SUFeedURL", server_.url("/version/3")}});
  SUUpdater& made = updater();
  made.setDelegate(&terminating);
  made.checkForUpdateInformation();
  EXPECT_THROW(
      {
        while (home_.platform().runLoop().runModeForInterval(100ms)) {
        }
      },
      Termination);
}

/// A framework folder of the test's own making.
class SUFrameworkBroken : public testing::Test {
 protected:
  void writeInfo(const std::string& principalClass) {
    folder_.writeFile("S.framework/Versions/A/Resources/Info.plist",
                      xmlPropertyList(PropertyList::Dictionary{
                          {"CFBundleExecutable", "S"}, {"NSPrincipalClass", principalClass}}));
  }
  void linkUp() const {
    fs::create_directory_symlink("A", folder_.path("S.framework/Versions/Current"));
    fs::create_symlink("Versions/Current/S", folder_.path("S.framework/S"));
    fs::create_directory_symlink("Versions/Current/Resources",
                                 folder_.path("S.framework/Resources"));
  }
  void copyExecutable(const std::string& from) const {
    folder_.makeFolder("S.framework/Versions/A");
    fs::copy_file(from, folder_.path("S.framework/Versions/A/S"));
  }
  [[nodiscard]] Error failure() const {
    const auto loaded = SUFramework::load(NSBundle(files_, folder_.path("S.framework")));
    EXPECT_FALSE(loaded);
    return loaded ? Error{} : loaded.error();
  }

  TemporaryFolder folder_;
  PosixFileManager files_;
};

TEST_F(SUFrameworkBroken, IsAbsentWhenMissing) { EXPECT_EQ(failure().kind, Error::Kind::absent); }

TEST_F(SUFrameworkBroken, IsAbsentWithoutItsExecutable) {
  writeInfo("SUUpdater");
  linkUp();
  EXPECT_EQ(failure().kind, Error::Kind::absent);
}

TEST_F(SUFrameworkBroken, IsMalformedWhenItsExecutableIsNoSharedObject) {
  writeInfo("SUUpdater");
  folder_.writeFile("S.framework/Versions/A/S", "#!/bin/sh\necho no\n");
  linkUp();
  EXPECT_EQ(failure().kind, Error::Kind::malformed);
  folder_.writeFile("S.framework/Versions/A/S", "");
  EXPECT_EQ(failure().kind, Error::Kind::malformed);
}

TEST_F(SUFrameworkBroken, IsMalformedWhenItsExecutableCannotBeRead) {
  writeInfo("SUUpdater");
  folder_.makeFolder("S.framework/Versions/A/S");
  linkUp();
  EXPECT_EQ(failure().kind, Error::Kind::malformed);
}

TEST_F(SUFrameworkBroken, IsMalformedWhenItsExecutableIsCutShort) {
  writeInfo("SUUpdater");
  copyExecutable(kBuiltFramework + "/Versions/A/Sparkle");
  linkUp();
  const fs::path executable = folder_.path("S.framework/Versions/A/S");
  for (const std::uintmax_t size : {100'000u, 4096u, 100u, 63u, 1u, 0u}) {
    ASSERT_LT(size, fs::file_size(executable));
    fs::resize_file(executable, size);
    EXPECT_EQ(failure().kind, Error::Kind::malformed) << size;
  }
}

TEST_F(SUFrameworkBroken, IsMalformedWhenItsExecutableIsAPipe) {
  writeInfo("SUUpdater");
  ASSERT_EQ(::mkfifo(folder_.path("S.framework/Versions/A/S").c_str(), 0600), 0);
  linkUp();
  EXPECT_EQ(failure().kind, Error::Kind::malformed) << "and nobody waits for its other end";
}

TEST_F(SUFrameworkBroken, IsMalformedWithoutItsPrincipalClass) {
  copyExecutable(kBuiltFramework + "/Versions/A/Sparkle");
  linkUp();
  EXPECT_EQ(failure().kind, Error::Kind::malformed) << "no Info.plist";
  writeInfo("SomethingElse");
  EXPECT_EQ(failure().kind, Error::Kind::malformed);
}

TEST_F(SUFrameworkBroken, IsMalformedWithoutTheSymbolOfItsPrincipalClass) {
  writeInfo("SUUpdater");
  Dl_info library{};
  ASSERT_NE(::dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&::cbrt)), &library),
            0);
  copyExecutable(library.dli_fname);
  linkUp();
  const Error error = failure();
  EXPECT_EQ(error.kind, Error::Kind::malformed);
  EXPECT_NE(error.failureReason.find(kSUUpdaterForBundleSymbol), std::string::npos);
}

TEST_F(SUFrameworkBroken, ThatAnswersTwiceIsHeardOnceAndLeavesNoTimer) {
  writeInfo("SUUpdater");
  copyExecutable(ANNIVO_STUB_UPDATER);
  linkUp();
  ::setenv("STUB_UPDATER", "finds, and then finds nothing", 1);
  TestHome home;
  NSRunLoop& runLoop = home.platform().runLoop();
  RecordingDelegate delegate;
  for (const bool served : {false, true}) {
    auto framework = SUFramework::load(NSBundle(files_, folder_.path("S.framework")));
    ASSERT_TRUE(framework) << framework.error().text();
    SUUpdater& updater =
        (*framework)
            ->updaterForBundle(NSBundle(files_, home.productPath()), home.platform().updateHost());
    updater.setDelegate(&delegate);
    updater.checkForUpdateInformation();
    if (served) {
      while (runLoop.runModeForInterval(100ms)) {
      }
      EXPECT_EQ(delegate.answers, 1);
      EXPECT_TRUE(delegate.found);
    }
  }
  EXPECT_FALSE(runLoop.runModeForInterval(0ms)) << "a timer is left of an updater that is gone";
  ::unsetenv("STUB_UPDATER");
}

TEST_F(SUFrameworkBroken, LoadsOnceItIsWhole) {
  writeInfo("SUUpdater");
  copyExecutable(kBuiltFramework + "/Versions/A/Sparkle");
  linkUp();
  EXPECT_TRUE(SUFramework::load(NSBundle(files_, folder_.path("S.framework"))));
}

}  // namespace
}  // namespace annivo
