// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/foundation/NSFileManager.h"
#include "tests/fuzz/vcard_checks.h"

namespace annivo {
namespace {

/// Samples, and every text that once broke a check of the fuzzer.
TEST(VCard, HoldsItsPromisesOnEveryKnownText) {
  const PosixFileManager files;
  int count = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(ANNIVO_SOURCE_DIR "/tests/fuzz/seeds/vcard")) {
    SCOPED_TRACE(entry.path());
    const auto bytes = files.contentsAtPath(entry.path(), 1 << 20);
    ASSERT_TRUE(bytes);
    fuzz::checkCards(*bytes);
    ++count;
  }
  EXPECT_GE(count, 3);
}

}  // namespace
}  // namespace annivo
