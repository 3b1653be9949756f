// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <sstream>

#include "parent/command/ProgressBar.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

class ProgressBarTest : public testing::Test {
 protected:
  /// What was shown since the last call.
  std::string shown() {
    std::string text = err.str();
    err.str("");
    return text;
  }

  std::ostringstream out, err;
  Console console{.out = out, .err = err, .errTerminal = true};
  std::chrono::steady_clock::time_point now{};
  ProgressBar bar{console, [this] { return now; }};
};

TEST_F(ProgressBarTest, AppearsOnceTheWorkHasTakenASecond) {
  now += 999ms;
  bar.show(1, 4);
  EXPECT_EQ(shown(), "");
  now += 1ms;
  bar.show(2, 4);
  EXPECT_EQ(shown(), "\r[############             ] 50% ");
  EXPECT_EQ(out.str(), "");
}

TEST_F(ProgressBarTest, IsDrawnAgainOnlyWhereThePercentageChanged) {
  now += 2s;
  bar.show(500, 1000);
  (void)shown();
  bar.show(509, 1000);
  EXPECT_EQ(shown(), "");
  bar.show(1000, 1000);
  EXPECT_EQ(shown(), "\r[#########################] 100% ");
}

TEST_F(ProgressBarTest, IsTakenAwayWhereItWasShown) {
  bar.clear();
  EXPECT_EQ(shown(), "");
  now += 2s;
  bar.show(1, 1);
  (void)shown();
  bar.clear();
  EXPECT_EQ(shown(), '\r' + std::string(40, ' ') + '\r');
}

TEST_F(ProgressBarTest, IsNotShownBesideATerminalNorForEmptyFiles) {
  now += 2s;
  bar.show(0, 0);
  console.errTerminal = false;
  bar.show(1, 2);
  EXPECT_EQ(shown(), "");
}

}  // namespace
}  // namespace annivo
