// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>

#include "base/UUID.h"

namespace annivo {
namespace {

TEST(FreshUUID, IsRandomAndOfVersionFour) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string uuid = freshUUID();
    EXPECT_EQ(uuid.size(), 36U);
    EXPECT_EQ(uuid.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << uuid;
    EXPECT_EQ(uuid[14], '4') << uuid;
    EXPECT_TRUE(seen.insert(uuid).second) << uuid;
  }
}

// The first is the example of RFC 9562, appendix A.4; the others were made with Python's
// uuid.uuid5.
TEST(NameBasedUUID, IsThatOfTheStandard) {
  const char* kDNS = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
  EXPECT_EQ(nameBasedUUID(kDNS, "www.example.com"), "2ED6657D-E927-568B-95E1-2665A8AEA6A2");
  EXPECT_EQ(nameBasedUUID(kDNS, ""), "4EBD0208-8328-5D69-8C44-EC50939C0967");
  EXPECT_EQ(nameBasedUUID(kDNS, std::string_view("a\0b", 3)),
            "0A63F66B-E02F-5D2D-9FD4-AAD819CF5352");
}

}  // namespace
}  // namespace annivo
