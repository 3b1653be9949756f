// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "codecs/xml/XMLText.h"

namespace annivo {
namespace {

TEST(XMLText, SaysAndRepairsWhatXMLCannotHold) {
  using namespace std::string_literals;
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"plain <&> text", "plain <&> text"},
      {"\t\r\n", "\t\r\n"},
      {"é\uFFFD\uFFFC\U0001F382\x7F", "é\uFFFD\uFFFC\U0001F382\x7F"},
      {"a\0b\x1F"s, "a\uFFFDb\uFFFD"},
      {"\uFFFE\uFFFFx", "\uFFFD\uFFFDx"},
      {"a\xFFz\x01", "a\uFFFDz\uFFFD"},
  };
  for (const auto& [text, repaired] : rows) {
    EXPECT_EQ(repairedXMLText(text), repaired);
    EXPECT_EQ(isXMLText(text), text == repaired);
    EXPECT_TRUE(isXMLText(repaired));
  }
}

TEST(XMLText, EscapesMarkupAndCarriageReturns) {
  std::string out = "<a>";
  appendEscaped(out, "x & <y>\r\n\"'");
  EXPECT_EQ(out, "<a>x &amp; &lt;y&gt;&#13;\n\"'");
}

}  // namespace
}  // namespace annivo
