// SPDX-License-Identifier: MIT
// The parent application as the agent launches it: without arguments and without a terminal.
#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "tests/parent/ProgramHome.h"
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

}  // namespace
}  // namespace annivo
