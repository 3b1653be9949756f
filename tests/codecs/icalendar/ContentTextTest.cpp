// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/Unicode.h"
#include "codecs/icalendar/ContentLine.h"
#include "codecs/icalendar/ContentText.h"

namespace annivo {
namespace {

TEST(EscapedText, EscapesWhatHasAMeaningInAValue) {
  EXPECT_EQ(escapedText("a\\b;c,d\ne"), "a\\\\b\\;c\\,d\\ne");
  EXPECT_EQ(unescapedText("a\\\\b\\;c\\,d\\ne\\Nf"), "a\\b;c,d\ne\nf");
}

TEST(EscapedText, HoldsNothingThatAnyReaderTakesForALineEnd) {
  const std::string text =
      "1\r\n2\r3\n4\v5\f6\x1C"
      "7\x1D"
      "8\x1E"
      "9\xC2\x85"
      "A\xE2\x80\xA8"
      "B\xE2\x80\xA9"
      "C";
  EXPECT_EQ(escapedText(text), "1\\n2\\n3\\n4\\n5\\n6789\\nA\\nB\\nC");
}

TEST(EscapedText, DropsControlCharactersAndReplacesWhatIsNoUTF8) {
  EXPECT_EQ(escapedText(std::string("a\0b\x01\x7F\tc\xC2\x9F", 9)), "ab\tc");
  EXPECT_EQ(escapedText("a\xFF"
                        "b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(escapedText("\xC3\xA4\xF0\x9F\x8E\x82"), "\xC3\xA4\xF0\x9F\x8E\x82");
}

TEST(UnescapedText, TakesAnUnknownEscapeForItsCharacter) {
  EXPECT_EQ(unescapedText("a\\\"b\\:c"), "a\"b:c");
  EXPECT_EQ(unescapedText("end\\"), "end\\");
}

TEST(EscapedURI, KeepsAValidURIAndEncodesTheRest) {
  const std::string valid = "file:///a%20b/c?d=e#f[1]@!$&'()*+,;=~";
  EXPECT_EQ(escapedURI(valid), valid);
  EXPECT_EQ(escapedURI("a b\r\n\xC3\xA4\"%zz%4"), "a%20b%0D%0A%C3%A4%22%25zz%254");
}

TEST(PercentEncoding, GivesBackEveryByte) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  EXPECT_EQ(percentDecoded(percentEncoded(bytes, "-._~")), bytes);
  EXPECT_EQ(percentDecoded("100%, 5%2"), "100%, 5%2");
  const std::string plain = underscoreEncoded(bytes);
  EXPECT_EQ(underscoreDecoded(plain), bytes);
  EXPECT_EQ(plain.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                    "-._"),
            plain.npos);
  EXPECT_EQ(underscoreDecoded("a_b_4"), "a_b_4");
}

TEST(AppendContentLine, FoldsAt75OctetsOnCharacterBorders) {
  for (const std::string& unit : {std::string("x"), std::string("\xC3\xA4"),
                                  std::string("\xE2\x82\xAC"), std::string("\xF0\x9F\x8E\x82")}) {
    for (std::size_t shift = 0; shift < 5; ++shift) {
      std::string value(shift, 'y');
      while (value.size() < 400) value += unit;
      std::string out;
      appendContentLine(out, "SUMMARY", value, "\r\n");
      for (std::size_t start = 0; start < out.size();) {
        const std::size_t end = out.find("\r\n", start);
        ASSERT_NE(end, out.npos);
        EXPECT_LE(end - start, 75U);
        EXPECT_GT(end - start + unit.size(), end + 2 == out.size() ? 0U : 75U);
        EXPECT_TRUE(isValidUTF8(std::string_view(out).substr(start, end - start)));
        start = end + 2;
      }
      ContentLines lines(out);
      ContentLine line;
      ASSERT_TRUE(lines.next(line));
      EXPECT_EQ(line.value(), value);
      EXPECT_FALSE(lines.next(line));
    }
  }
}

TEST(AppendContentLine, FoldsNothingThatFits) {
  for (const std::size_t length : {66U, 67U, 68U}) {
    std::string out;
    appendContentLine(out, "SUMMARY", std::string(length, 'x'), "\n");
    EXPECT_EQ(out.find("\n ") != out.npos, length > 67) << length;
  }
}

TEST(ContentText, UndoesOnlyTheEscapesItIsTold) {
  EXPECT_EQ(unescapedText("a\\,b\\;c\\N\\x\\\\n\\"), "a,b;c\nx\\n\\");
  EXPECT_EQ(unescapedText("a\\,b\\;c\\N\\x\\\\n\\", ",\\"), "a,b\\;c\n\\x\\n\\");
  EXPECT_EQ(unescapedText("\\x\\,", ","), "\\x,");
}

TEST(ContentText, RandomTextsSurviveTheWayThroughALine) {
  std::mt19937 random(20261120);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (std::size_t i = random() % 200; i > 0; --i) {
      constexpr std::string_view common = "ab ,;\\n\n\":=\t";
      text += random() % 4 == 0 ? static_cast<char>(0x20 + random() % 0x5F)
                                : common[random() % common.size()];
    }
    std::string out;
    appendContentLine(out, "SUMMARY", escapedText(text), "\r\n");
    ContentLines lines(out);
    ContentLine line;
    ASSERT_TRUE(lines.next(line));
    EXPECT_EQ(unescapedText(line.value()), text) << "seed 20261120, round " << round;
    EXPECT_FALSE(lines.next(line));
  }
}

}  // namespace
}  // namespace annivo
