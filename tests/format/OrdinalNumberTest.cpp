// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "format/OrdinalNumber.h"

namespace annivo {
namespace {

struct Row {
  std::int64_t number;
  const char* language;
  const char* text;
};

void expectRows(std::initializer_list<Row> rows) {
  for (const auto& [number, language, text] : rows) {
    EXPECT_EQ(ordinalNumberFormat(number, language), text) << number << " in " << language;
  }
}

TEST(OrdinalNumber, ZeroIsEmptyInEveryLanguage) {
  for (const char* language : {"en", "es", "it", "pt", "de", "fr", "ja", "pt-BR", ""}) {
    EXPECT_EQ(ordinalNumberFormat(0, language), "") << language;
  }
}

TEST(OrdinalNumber, EnglishRule) {
  expectRows(
      {{1, "en", "1st"},     {2, "en", "2nd"},      {3, "en", "3rd"},     {4, "en", "4th"},
       {5, "en", "5th"},     {9, "en", "9th"},      {10, "en", "10th"},   {11, "en", "11th"},
       {12, "en", "12th"},   {13, "en", "13th"},    {14, "en", "14th"},   {19, "en", "19th"},
       {20, "en", "20th"},   {21, "en", "21st"},    {22, "en", "22nd"},   {23, "en", "23rd"},
       {30, "en", "30th"},   {101, "en", "101st"},  {110, "en", "110th"}, {111, "en", "111th"},
       {112, "en", "112th"}, {113, "en", "113th"},  {119, "en", "119th"}, {121, "en", "121st"},
       {422, "en", "422nd"}, {1011, "en", "1011th"}});
}

TEST(OrdinalNumber, TheTensDigitOneAlwaysEndsInTh) {
  for (std::int64_t hundreds = 0; hundreds < 3000; hundreds += 100) {
    for (std::int64_t n = hundreds + 10; n < hundreds + 20; ++n) {
      EXPECT_EQ(ordinalNumberFormat(n, "en"), std::to_string(n) + "th");
    }
  }
}

TEST(OrdinalNumber, OtherLanguagesOfTheTable) {
  expectRows({{1, "fr", "1er"},
              {2, "fr", "2e"},
              {11, "fr", "11e"},
              {21, "fr", "21e"},
              {101, "fr", "101e"},
              {1, "de", "1."},
              {21, "de", "21."},
              {21, "es", "21\xC2\xB0"},
              {21, "it", "21\xC2\xB0"},
              {21, "pt", "21\xC2\xB0"},
              {1, "es", "1\xC2\xB0"}});
}

TEST(OrdinalNumber, CodesThatAreNotTheBareLanguageTakeTheEnglishRule) {
  expectRows({{21, "pt-BR", "21st"},
              {21, "pt_BR", "21st"},
              {1, "fr-CA", "1st"},
              {2, "de-AT", "2nd"},
              {3, "es-419", "3rd"},
              {1, "FR", "1st"},
              {1, "De", "1st"},
              {1, "fra", "1st"},
              {1, "f", "1st"},
              {1, " fr", "1st"},
              {1, "nl", "1st"},
              {1, "zh-Hans", "1st"},
              {11, "sv", "11th"},
              {1, "", "1st"}});
}

TEST(OrdinalNumber, NumbersAtTheLimits) {
  expectRows({{std::numeric_limits<std::int64_t>::max(), "en", "9223372036854775807th"},
              {std::numeric_limits<std::int64_t>::min(), "en", "-9223372036854775808th"},
              {-1, "en", "-1th"},
              {-11, "fr", "-11e"}});
}

}  // namespace
}  // namespace annivo
