// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "base/Base64.h"

namespace annivo {
namespace {

TEST(Base64, WritesEveryRemainder) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("A"), "QQ==");
  EXPECT_EQ(base64("AB"), "QUI=");
  EXPECT_EQ(base64("ABC"), "QUJD");
  EXPECT_EQ(base64(std::string("\0\x01\xFF\xFE", 4)), "AAH//g==");
}

TEST(Base64, ReadsBackWhatItWrites) {
  std::mt19937 random(20261121);
  for (std::size_t length = 0; length < 200; ++length) {
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) bytes += static_cast<char>(random());
    EXPECT_EQ(fromBase64(base64(bytes)), bytes);
    EXPECT_EQ(fromBase64AsFarAsItGoes(base64(bytes)), bytes);
  }
}

TEST(Base64, PassesOverWhiteSpace) {
  EXPECT_EQ(fromBase64("\n\tQU\r\n JD\n"), "ABC");
  EXPECT_EQ(fromBase64AsFarAsItGoes("\n\tQU\r\n JD\n"), "ABC");
}

TEST(Base64, RefusesWhatIsNoBase64OrEndsThere) {
  for (const char* text : {"QU*D", "QQ==QQ==", "QQ=x", "caf\xC3\xA9", "Q-_D"}) {
    EXPECT_EQ(fromBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(fromBase64AsFarAsItGoes("QUJD*QUJD"), "ABC");
  EXPECT_EQ(fromBase64AsFarAsItGoes("QQ==QQ=="), "A");
}

TEST(Base64, DecodesEveryRemainder) {
  EXPECT_EQ(fromBase64AsFarAsItGoes(""), "");
  EXPECT_EQ(fromBase64AsFarAsItGoes("QQ=="), "A");
  EXPECT_EQ(fromBase64AsFarAsItGoes("QUI="), "AB");
  EXPECT_EQ(fromBase64AsFarAsItGoes("QUJD"), "ABC");
  EXPECT_EQ(fromBase64AsFarAsItGoes("QUJD RA"), "ABCD");
}

}  // namespace
}  // namespace annivo
