// SPDX-License-Identifier: MIT
// The parent application as the agent launches it: without arguments and without a terminal.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "platform/Platform.h"
#include "tests/parent/support/ProgramHome.h"
#include "tests/support/FeedServer.h"

namespace annivo {
namespace {

const std::string kPreferences = std::string("Library/Preferences/") + kParentDomain + ".plist";

class Launched : public testing::Test {
 protected:
  void prefer(const PropertyList::Dictionary& values) const {
    home.folder.writeFile(kPreferences, binaryPropertyList(values));
  }
  [[nodiscard]] PropertyList stored(const std::string& key) const {
    const auto all = parsePropertyList(home.folder.readFile(kPreferences), kPreferences);
    return all ? (*all)[key] : PropertyList();
  }

  ProgramHome home;
  FeedServer server;
  Date before = SystemClock().now();
};

TEST_F(Launched, TellsWhichVersionIsOutAndWhere) {
  prefer({{"SUFeedURL", server.url("/version/99.0")}, {"other", "kept"}});
  const CommandOutcome outcome = home.inPipe({}, "Annivo 2");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("99.0 is out"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("https://host.example/Annivo.zip"), std::string::npos) << outcome.err;
  EXPECT_EQ(server.requests(), (std::vector<std::string>{"/version/99.0"}));
  EXPECT_TRUE(stored("other").isEqualToString("kept"));
}

TEST_F(Launched, RecordsTheLaunchAndTheCheck) {
  prefer(
      {{"SUFeedURL", server.url("/none")}, {"SULastCheckTime", before - std::chrono::days(365)}});
  const CommandOutcome outcome = home.inPipe({}, "Annivo 2");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  for (const char* key : {"lastLaunched", "SULastCheckTime"}) {
    ASSERT_NE(stored(key).date(), nullptr) << key;
    EXPECT_GE(*stored(key).date(), before) << key;
  }
}

TEST_F(Launched, RecordsTheLaunchWhereTheFeedCannotBeReached) {
  prefer({{"SUFeedURL", "http://127.0.0.1:1/feed"}});
  EXPECT_EQ(home.inPipe({}, "Annivo 2").status, 0);
  EXPECT_NE(stored("lastLaunched").date(), nullptr);
}

TEST_F(Launched, SaysWhatIsMissingWhereTheUpdateModuleCannotBeLoaded) {
  const TemporaryFolder product;
  std::filesystem::copy(
      ANNIVO_PRODUCT, product.path("A.app"),
      std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
  product.remove("A.app/Contents/Frameworks");
  const std::string command = "HOME=" + home.folder.path() + " '" +
                              product.path("A.app/Contents/Linux/Annivo 2") + "' > " +
                              home.folder.path("said") + " 2>&1";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  const std::string said = home.folder.readFile("said");
  EXPECT_TRUE(said.starts_with("annivo: ")) << said;
  EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
  EXPECT_NE(stored("lastLaunched").date(), nullptr);
}

// A command that starts the agent while an update check is due.

class RunWithUpdate : public Launched {
 protected:
  void SetUp() override {
    home.folder.writeFile("a.vcf", vCard("FN:Ann\nBDAY:--0610\nUID:u1\n"));
    (void)home.done({"import", home.folder.path("a.vcf")});
    (void)home.done({"calendars", "create", "Dates", "--for", "both"});
    (void)home.done({"settings", "update-checks", "on"});
    newVersionIsOut();
  }
  void TearDown() override { home.waitForAll(); }
  /// And a check is due.
  void newVersionIsOut() const {
    auto all = parsePropertyList(home.folder.readFile(kPreferences), kPreferences);
    PropertyList::Dictionary values = *all->dictionary();
    values["SUFeedURL"] = server.url("/version/99.0");
    values["SULastCheckTime"] = before - std::chrono::days(8);
    prefer(values);
  }
};

TEST_F(RunWithUpdate, DoesItsWorkAllTheSame) {
  const CommandOutcome outcome = home.inPipe({"run"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("Added (3)"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.err, "A new version of Annivo 2 is out; the application tells where.\n");
  home.waitForAll();
  EXPECT_EQ(server.requests().size(), 2U) << "the agent asks, then the application";
  EXPECT_GE(*stored("SULastCheckTime").date(), before);
}

TEST_F(RunWithUpdate, TakesTheEventsOutAllTheSame) {
  (void)home.inPipe({"run"});
  home.waitForAll();
  newVersionIsOut();
  EXPECT_EQ(home.inPipe({"off"}).out,
            "The agent is off; 3 events were taken out of the calendars.\n");
}

TEST_F(RunWithUpdate, SaysWhatToDoWhereEveryRunChecks) {
  auto values = *parsePropertyList(home.folder.readFile(kPreferences), kPreferences)->dictionary();
  values["SUScheduledCheckInterval"] = 0;
  prefer(values);
  const CommandOutcome outcome = home.inPipe({"run"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("\"annivo settings update-interval daily\""), std::string::npos)
      << outcome.err;
}

}  // namespace
}  // namespace annivo
