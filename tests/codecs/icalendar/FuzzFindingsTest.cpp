// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/fuzz/event_file_checks.h"
#include "tests/platform/calendarstore/CalendarHome.h"

namespace annivo {
namespace {

/// Samples, and every text that once broke a check of the fuzzer.
TEST(EventFile, HoldsItsPromisesOnEveryKnownText) {
  int count = 0;
  const std::string folder = std::string(ANNIVO_SOURCE_DIR) + "/tests/fuzz/seeds/event_file";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    SCOPED_TRACE(entry.path().string());
    fuzz::checkEventText(CalendarHome::read(entry.path().string()));
    ++count;
  }
  EXPECT_GE(count, 5);
}

}  // namespace
}  // namespace annivo
