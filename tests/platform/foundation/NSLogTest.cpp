// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/foundation/NSLog.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

/// What is written to standard error while `work` runs.
template <typename Work>
std::string standardError(Work work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

TEST(SystemLog, WritesTheLocalTimeTheProcessAndTheText) {
  const ManualClock clock(utc(2026, 11, 20, 18, 46) + std::chrono::microseconds{123999});
  const std::string pid = std::to_string(::getpid());
  EXPECT_EQ(standardError([&] {
              SystemLog log(clock, NSTimeZone("UTC"), "AnnivoAgent");
              log.write("Annivo starting");
            }),
            "2026-11-20 18:46:00.123 AnnivoAgent[" + pid + "] Annivo starting\n");
  EXPECT_EQ(standardError([&] {
              SystemLog log(clock, NSTimeZone("Asia/Kolkata"), "annivo");
              log.write("");
            }),
            "2026-11-21 00:16:00.123 annivo[" + pid + "] \n");
}

TEST(SystemLog, WritesOneLineACall) {
  const ManualClock clock(utc(2026, 11, 20));
  const std::string written = standardError([&] {
    SystemLog log(clock, NSTimeZone(), "AnnivoAgent");
    log.write("one\ntwo %s %n \x1B[31m");
    log.write("three");
  });
  EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 2);
  EXPECT_NE(written.find("one\\ntwo %s %n \\x1B[31m\n"), std::string::npos);
}

TEST(EscapedLine, WritesControlCharactersAsText) {
  const struct {
    std::string text;
    const char* line;
  } rows[] = {{"plain é \U0001F382", "plain é \U0001F382"},
              {"a\nb\tc\rd", "a\\nb\\tc\\x0Dd"},
              {std::string("\0\x7F\x1B", 3), "\\x00\\x7F\\x1B"},
              {"\xC2\x85\xC2\x9B\xC2\xA0", "\\x85\\x9B\xC2\xA0"},
              {"bad\xFF\xC2", "bad\uFFFD\uFFFD"}};
  for (const auto& row : rows) EXPECT_EQ(escapedLine(row.text), row.line);
}

}  // namespace
}  // namespace annivo
