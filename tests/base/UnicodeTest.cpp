// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>

#include "base/UUID.h"
#include "base/Unicode.h"

namespace annivo {
namespace {

TEST(Capitalized, PutsEachWordsFirstLetterInUpperCaseAndTheRestInLower) {
  const struct {
    const char* language;
    const char* text;
    const char* expected;
  } rows[] = {
      {"en", "anniversary", "Anniversary"},
      {"en", "ANNIVERSARY", "Anniversary"},
      {"en", "wedding day", "Wedding Day"},
      {"en", "mother's day", "Mother's Day"},
      {"en", "mother\u2019s day", "Mother\u2019s Day"},
      {"en", "'quoted'", "'Quoted'"},
      {"en", "half-time/other", "Half-Time/Other"},
      {"en", "", ""},
      {"en", "  two  spaces ", "  Two  Spaces "},
      {"de", "jahrestag", "Jahrestag"},
      {"de", "ÜBUNG öl", "Übung Öl"},
      {"fr", "éloi ÉTÉ", "Éloi Été"},
      {"ru", "годовщина", "Годовщина"},
      {"el", "ΕΠΕΤΕΙΟΣ ΓΑΜΟΣ", "Επετειος Γαμος"},
      {"tr", "istanbul IRMAK", "İstanbul Irmak"},
      {"tr", "ILIK", "Ilık"},
      {"az", "il", "İl"},
      {"tr-TR", "iyi", "İyi"},
      {"en", "istanbul", "Istanbul"},
      {"lt", "jubiliejus", "Jubiliejus"},
      {"hr", "ǆ", "ǅ"},
      {"ja", "記念日", "記念日"},
      {"ar", "ذكرى سنوية", "ذكرى سنوية"},
      {"hi", "वर्षगांठ", "वर्षगांठ"},
      {"en", "e\u0301toile", "E\u0301toile"},
      {"en", "bad\xFFutf", "Bad\uFFFDUtf"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(capitalized(row.text, row.language), row.expected) << row.text;
  }
}

TEST(CaseFolded, MakesTextsEqualThatDifferInCaseOnly) {
  const struct {
    const char* one;
    const char* other;
  } same[] = {{"ABC xyz", "abc XYZ"},
              {"STRASSE", "straße"},
              {"ΣΊΣΥΦΟΣ", "σίσυφος"},
              {"É", "e\u0301"},
              {"ДЕНЬ", "день"},
              {"a\xFF", "A\xFE"},
              {"273 \u212A", "273 k"},
              {"", ""},
              {"AN-ADDRESS:BOOK", "an-address:book"}};
  for (const auto& row : same) {
    EXPECT_EQ(caseFolded(row.one), caseFolded(row.other)) << row.one;
    EXPECT_EQ(caseFoldedHash(row.one), caseFoldedHash(row.other)) << row.one;
  }
  EXPECT_NE(caseFolded("é"), caseFolded("e"));
  EXPECT_EQ(caseFolded(""), "");
  EXPECT_EQ(caseFolded(std::string_view("A\0B", 3)), std::string("a\0b", 3));
  EXPECT_EQ(caseFolded(std::string_view("É\0B", 4)), std::string("é\0b", 4));
}

TEST(UTF8, IsValidOnlyInItsShortestFormsWithoutSurrogates) {
  for (const char* good : {"", "abc", "é", "€", "\U0001F382", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isValidUTF8(good)) << good;
    EXPECT_EQ(repairedUTF8(good), good);
  }
  const struct {
    const char* bad;
    const char* repaired;
  } rows[] = {{"\xFF", "\uFFFD"},
              {"a\x80z", "a\uFFFDz"},
              {"\xC3", "\uFFFD"},
              {"\xC3z", "\uFFFDz"},
              {"\xC0\x80", "\uFFFD\uFFFD"},
              {"\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD"},
              {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
              {"\xF0\x80\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
              {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
              {"\xE2\x82", "\uFFFD\uFFFD"},
              {"é\xE9é", "é\uFFFDé"}};
  for (const auto& row : rows) {
    EXPECT_FALSE(isValidUTF8(row.bad));
    EXPECT_EQ(repairedUTF8(row.bad), row.repaired);
  }
}

TEST(UTF8, IsWrittenForEveryCodePointAndForWhatIsNone) {
  const std::pair<char32_t, const char*> rows[] = {{U'A', "A"},
                                                   {0x7FF, "\xDF\xBF"},
                                                   {0x800, "\xE0\xA0\x80"},
                                                   {0xD800, "\uFFFD"},
                                                   {0xDFFF, "\uFFFD"},
                                                   {0xE000, "\xEE\x80\x80"},
                                                   {0xFFFF, "\xEF\xBF\xBF"},
                                                   {0x10FFFF, "\xF4\x8F\xBF\xBF"},
                                                   {0x110000, "\uFFFD"}};
  for (const auto& [point, expected] : rows) {
    std::string text = "<";
    appendUTF8(text, point);
    EXPECT_EQ(text, std::string("<") + expected);
  }
}

TEST(UTF16, IsReadInBothByteOrders) {
  using namespace std::string_view_literals;
  EXPECT_EQ(fromUTF16("\0A\0\xE9\xD8\x3C\xDF\x82"sv, ByteOrder::bigEndian), "Aé\U0001F382");
  EXPECT_EQ(fromUTF16("A\0\xE9\0\x3C\xD8\x82\xDF"sv, ByteOrder::littleEndian), "Aé\U0001F382");
  EXPECT_EQ(fromUTF16("\xD8\0\0A"sv, ByteOrder::bigEndian), "\uFFFDA");
  EXPECT_EQ(fromUTF16("\xDC\0\0A"sv, ByteOrder::bigEndian), "\uFFFDA");
  EXPECT_EQ(fromUTF16("\0A\xD8"sv, ByteOrder::bigEndian), "A");
  EXPECT_EQ(fromUTF16("\0A\xD8\x3C"sv, ByteOrder::bigEndian), "A\uFFFD");
}

TEST(Columns, AreThoseOfATerminal) {
  const std::pair<const char*, std::size_t> rows[] = {
      {"", 0}, {"Ann", 3}, {"J\u00F6rg", 4}, {"Zoe\u0308", 3}, {"\u5C71\u7530", 4}, {"\xFF", 1}};
  for (const auto& [text, columns] : rows) EXPECT_EQ(columnsOf(text), columns) << text;
}

TEST(UUID, IsFreshAndOfTheFourthVersion) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string uuid = freshUUID();
    ASSERT_EQ(uuid.size(), 36u);
    for (std::size_t at = 0; at < uuid.size(); ++at) {
      const bool dash = at == 8 || at == 13 || at == 18 || at == 23;
      EXPECT_EQ(uuid[at] == '-', dash);
      EXPECT_NE(std::string_view("0123456789ABCDEF-").find(uuid[at]), std::string_view::npos);
    }
    EXPECT_EQ(uuid[14], '4');
    EXPECT_NE(std::string_view("89AB").find(uuid[19]), std::string_view::npos);
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

}  // namespace
}  // namespace annivo
