// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "codecs/plist/PropertyList.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {
namespace {

TEST(PropertyListFile, HandlesWhatAFuzzerFound) {
  const PosixFileManager files;
  std::size_t count = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(ANNIVO_SOURCE_DIR "/tests/fuzz/seeds/property_list")) {
    SCOPED_TRACE(entry.path());
    ++count;
    const auto bytes = files.contentsAtPath(entry.path(), 1 << 20);
    ASSERT_TRUE(bytes);
    const auto list = parsePropertyList(*bytes, entry.path());
    if (!list) continue;
    const auto again = parsePropertyList(binaryPropertyList(*list), "again.plist");
    ASSERT_TRUE(again) << again.error().text();
    EXPECT_EQ(*again, *list);
    const auto xml = parsePropertyList(xmlPropertyList(PropertyList::Array{*list}), "xml.plist");
    EXPECT_TRUE(xml) << xml.error().text();
  }
  EXPECT_GE(count, 6u);
}

}  // namespace
}  // namespace annivo
