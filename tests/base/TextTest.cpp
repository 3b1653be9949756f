// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "base/Digits.h"
#include "base/Text.h"

namespace annivo {
namespace {

TEST(Text, ChangesTheCaseOfASCIILettersOnly) {
  EXPECT_EQ(upperCased("azAZ@[`{09 é"), "AZAZ@[`{09 é");
  EXPECT_EQ(lowerCased("azAZ@[`{09 É"), "azaz@[`{09 É");
}

TEST(Text, ComparesWithoutCase) {
  EXPECT_TRUE(equalsIgnoringCase("begin", "BEGIN"));
  EXPECT_TRUE(equalsIgnoringCase("x-Foo", "X-FOO"));
  EXPECT_TRUE(equalsIgnoringCase("", ""));
  EXPECT_FALSE(equalsIgnoringCase("begin", "BEGI"));
  EXPECT_FALSE(equalsIgnoringCase("beg`n", "BEG@N"));
  EXPECT_FALSE(equalsIgnoringCase("{", "["));
}

TEST(Text, TrimsItsEnds) {
  EXPECT_EQ(trimmed("\t\r\n\v\f a b \n"), "a b");
  EXPECT_EQ(trimmed(" \n"), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("\n a\n", isSpaceOrTab), "\n a\n");
  EXPECT_EQ(trimmedEnd(" a \t"), " a");
  EXPECT_EQ(trimmedEnd(" \t"), "");
  EXPECT_EQ(trimmedEnd("a\n ", isSpaceOrTab), "a\n");
}

TEST(Text, EscapesAByteAndUndoesIt) {
  std::string all;
  std::string escaped;
  for (int byte = 0; byte < 256; ++byte) {
    all += static_cast<char>(byte);
    appendHexEscape(escaped, '%', static_cast<char>(byte));
  }
  EXPECT_TRUE(escaped.starts_with("%00%01")) << escaped;
  EXPECT_TRUE(escaped.ends_with("%FE%FF")) << escaped;
  EXPECT_EQ(hexUnescaped(escaped, '%'), all);
}

TEST(Text, LeavesAMarkWithoutTwoDigits) {
  EXPECT_EQ(hexUnescaped("100%", '%'), "100%");
  EXPECT_EQ(hexUnescaped("%4", '%'), "%4");
  EXPECT_EQ(hexUnescaped("%4g%g4%%41", '%'), "%4g%g4%A");
  EXPECT_EQ(hexUnescaped("=c3=BC%41", '='), "\xC3\xBC%41");
}

TEST(Digits, KnowsHexadecimalDigits) {
  int known = 0;
  for (int c = 0; c < 256; ++c) known += hexDigitValue(static_cast<char>(c)) >= 0 ? 1 : 0;
  EXPECT_EQ(known, 22);
  for (int value = 0; value < 16; ++value) {
    EXPECT_EQ(hexDigitValue(kHexDigits[static_cast<std::size_t>(value)]), value);
    EXPECT_EQ(hexDigitValue(kUpperHexDigits[static_cast<std::size_t>(value)]), value);
  }
}

TEST(Digits, WritesTheLastDigitsWithZerosInFront) {
  std::string text = "x";
  appendDigits(text, 123, 5);
  appendDigits(text, 123, 2);
  EXPECT_EQ(text, "x0012323");
  EXPECT_EQ(hexDigits(0xBEEF, 6), "00beef");
  EXPECT_EQ(hexDigits(0xBEEF, 2), "ef");
}

TEST(Digits, ReadsATextThatIsANumberAndNothingElse) {
  EXPECT_EQ(numberFromText<int>("-12"), -12);
  EXPECT_EQ(numberFromText<unsigned>("12"), 12U);
  EXPECT_EQ(numberFromText<double>("1.5"), 1.5);
  EXPECT_EQ(numberFromText<std::int64_t>("9223372036854775807"), INT64_MAX);
  for (const char* text : {"", " 1", "1 ", "+1", "1x", "0x1", "9223372036854775808"}) {
    EXPECT_EQ(numberFromText<std::int64_t>(text), std::nullopt) << text;
  }
  EXPECT_EQ(numberFromText<unsigned>("-1"), std::nullopt);
}

}  // namespace
}  // namespace annivo
