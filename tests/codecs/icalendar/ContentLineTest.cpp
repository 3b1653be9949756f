// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codecs/icalendar/ContentLine.h"

namespace annivo {
namespace {

struct Parsed {
  std::string raw, name, parameters, value;
  friend bool operator==(const Parsed&, const Parsed&) = default;
};

std::vector<Parsed> linesOf(std::string_view text) {
  std::vector<Parsed> found;
  ContentLines lines(text);
  ContentLine line;
  while (lines.next(line)) {
    found.push_back({std::string(line.raw()), std::string(line.name()),
                     std::string(line.parameters()), std::string(line.value())});
  }
  return found;
}

TEST(ContentLines, SplitsNameParametersAndValue) {
  const auto lines = linesOf("DTSTART;VALUE=DATE;X-A=\"b:c;d\":20261120\r\nSUMMARY:a:b;c\r\n");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].name, "DTSTART");
  EXPECT_EQ(lines[0].parameters, "VALUE=DATE;X-A=\"b:c;d\"");
  EXPECT_EQ(lines[0].value, "20261120");
  EXPECT_EQ(lines[1].value, "a:b;c");
}

TEST(ContentLines, ReadsEachKindOfLineEnd) {
  const auto lines = linesOf("A:1\r\nB:2\nC:3");
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], (Parsed{"A:1\r\n", "A", "", "1"}));
  EXPECT_EQ(lines[1], (Parsed{"B:2\n", "B", "", "2"}));
  EXPECT_EQ(lines[2], (Parsed{"C:3", "C", "", "3"}));
}

TEST(ContentLines, UnfoldsLinesWhereverTheyAreFolded) {
  const auto lines = linesOf("SUM\r\n MARY;LANG\n\tUAGE=d\r\n e:\xC3\r\n \xA4\r\n  b\r\nX:1\r\n");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].name, "SUMMARY");
  EXPECT_EQ(lines[0].parameters, "LANGUAGE=de");
  EXPECT_EQ(lines[0].value, "\xC3\xA4 b");
  EXPECT_EQ(lines[0].raw, "SUM\r\n MARY;LANG\n\tUAGE=d\r\n e:\xC3\r\n \xA4\r\n  b\r\n");
}

TEST(ContentLine, GivesUpItsParametersOneByOne) {
  const ContentLine line("N;A=1;B=\"x;y:z\";C;;D=e\"f;g\"h:value");
  std::string_view rest = line.parameters();
  for (const char* expected : {"A=1", "B=\"x;y:z\"", "C", "", "D=e\"f;g\"h"}) {
    EXPECT_EQ(takeParameter(rest), expected);
  }
  EXPECT_EQ(rest, "");
  EXPECT_EQ(line.name(), "N");
  EXPECT_EQ(line.value(), "value");
}

TEST(ContentLines, ALineWithoutColonHasNoName) {
  for (const char* text : {"nothing\r\n", "\r\n", ";\r\n", "A;B=\"x:y\r\n", "A;B\r\n"}) {
    const auto lines = linesOf(text);
    ASSERT_EQ(lines.size(), 1U) << text;
    EXPECT_EQ(lines[0].name, "") << text;
    EXPECT_EQ(lines[0].raw, text);
  }
}

TEST(ContentLines, LeavesAByteOrderMarkToTheRawBytes) {
  const auto lines = linesOf(
      "\xEF\xBB\xBF"
      "BEGIN:VCALENDAR\r\n");
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].name, "BEGIN");
  EXPECT_EQ(lines[0].raw,
            "\xEF\xBB\xBF"
            "BEGIN:VCALENDAR\r\n");
}

TEST(ContentLines, TheRawBytesOfAllLinesAreTheText) {
  for (const std::string& text :
       {std::string(" leading\r\nA:1\r\n\r\n\r\nB\n \n \nC:\r"),
        std::string(3, '\0') + "\n " + '\0' + "x:y", std::string("\n"), std::string()}) {
    std::string joined;
    for (const Parsed& line : linesOf(text)) joined += line.raw;
    EXPECT_EQ(joined, text);
  }
}

TEST(ContentLine, FindsParametersWithoutCaseAndWithoutQuotes) {
  ContentLines lines("TRIGGER;x=1;Related=\"EN;D\";RELATED=START;EMPTY=;FLAG:-PT1H\r\n");
  ContentLine line;
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(line.parameter("RELATED"), "EN;D");
  EXPECT_EQ(line.parameter("X"), "1");
  EXPECT_EQ(line.parameter("EMPTY"), "");
  EXPECT_EQ(line.parameter("FLAG"), std::nullopt);
  EXPECT_EQ(line.parameter("RELATE"), std::nullopt);
  EXPECT_TRUE(line.named("TRIGGER"));
  EXPECT_FALSE(line.named("TRIGGERS"));
}

}  // namespace
}  // namespace annivo
