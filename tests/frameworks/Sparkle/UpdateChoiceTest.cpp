// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "frameworks/Sparkle/UpdateChoice.h"

namespace annivo {
namespace {

AppcastItem item(const std::string& version, const std::string& url = "https://host/a.zip") {
  return {.version = version,
          .displayVersion = version,
          .url = url,
          .channel = "",
          .minimumSystemVersion = "",
          .maximumSystemVersion = ""};
}

const UpdateHost kHost{.version = "2.0.0", .systemVersion = "10.7.5", .skippedVersion = ""};

/// The version chosen, "" for none.
std::string chosen(const std::vector<AppcastItem>& items, const UpdateHost& host = kHost) {
  const auto choice = chooseUpdate(items, host);
  return choice ? choice->version : "";
}

TEST(UpdateChoice, FindsNothingInAnEmptyFeed) { EXPECT_EQ(chosen({}), ""); }

TEST(UpdateChoice, FindsANewerVersionOnly) {
  EXPECT_EQ(chosen({item("2.0.1")}), "2.0.1");
  EXPECT_EQ(chosen({item("2.0.0")}), "");
  EXPECT_EQ(chosen({item("2.0")}), "") << "equal in other words";
  EXPECT_EQ(chosen({item("1.9")}), "");
  EXPECT_EQ(chosen({item("2.0.0b1")}), "") << "a beta of the installed version";
}

TEST(UpdateChoice, TakesTheHighestVersionWhereverItStands) {
  EXPECT_EQ(chosen({item("2.1"), item("2.10"), item("2.9")}), "2.10");
}

TEST(UpdateChoice, TakesTheFirstOfEqualVersions) {
  const auto choice = chooseUpdate(
      {item("2.1", "https://host/first.zip"), item("2.1.0", "https://host/second.zip")}, kHost);
  ASSERT_TRUE(choice);
  EXPECT_EQ(choice->url, "https://host/first.zip");
}

TEST(UpdateChoice, SeesTheDefaultChannelOnly) {
  AppcastItem beta = item("3.0");
  beta.channel = "beta";
  EXPECT_EQ(chosen({beta}), "");
  EXPECT_EQ(chosen({beta, item("2.1")}), "2.1");
}

struct SystemCase {
  const char* minimum;
  const char* maximum;
  const char* system;
  bool fits;
};
struct UpdateChoiceSystem : testing::TestWithParam<SystemCase> {};

TEST_P(UpdateChoiceSystem, HoldsItemsToTheirSystemVersions) {
  AppcastItem newer = item("2.1");
  newer.minimumSystemVersion = GetParam().minimum;
  newer.maximumSystemVersion = GetParam().maximum;
  UpdateHost host = kHost;
  host.systemVersion = GetParam().system;
  EXPECT_EQ(chosen({newer}, host), GetParam().fits ? "2.1" : "");
}

INSTANTIATE_TEST_SUITE_P(
    Systems, UpdateChoiceSystem,
    testing::Values(
        SystemCase{"", "", "10.7.5", true}, SystemCase{"10.7.4", "", "10.7.5", true},
        SystemCase{"10.7.5", "", "10.7.5", true}, SystemCase{"10.7.6", "", "10.7.5", false},
        SystemCase{"10.7", "", "10.7.5", true}, SystemCase{"10.10", "", "10.7.5", false},
        SystemCase{"", "10.7.4", "10.7.5", false}, SystemCase{"", "10.7.5", "10.7.5", true},
        SystemCase{"", "10.7.6", "10.7.5", true}, SystemCase{"", "10.7", "10.7.5", false},
        SystemCase{"10.7.0", "", "10.7", true}, SystemCase{"", "", "", true},
        SystemCase{"10.4", "", "", false}, SystemCase{"", "10.9", "", false}));

TEST(UpdateChoice, TakesALowerItemThatFitsTheSystem) {
  AppcastItem tooNew = item("3.0");
  tooNew.minimumSystemVersion = "10.9";
  EXPECT_EQ(chosen({tooNew, item("2.1")}), "2.1");
}

TEST(UpdateChoice, PassesOverWhatThePersonSkipped) {
  UpdateHost host = kHost;
  host.skippedVersion = "2.1";
  EXPECT_EQ(chosen({item("2.1")}, host), "");
  EXPECT_EQ(chosen({item("2.0.5")}, host), "") << "older than the skipped one";
  EXPECT_EQ(chosen({item("2.1"), item("2.2")}, host), "2.2");
}

}  // namespace
}  // namespace annivo
