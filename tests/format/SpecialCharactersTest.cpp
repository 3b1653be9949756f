// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "format/ReplacingText.h"
#include "format/SpecialCharacters.h"

namespace annivo {
namespace {

struct Row {
  const char* name;
  std::string text;
  std::string expected;
};

void expectRows(const std::vector<Row>& rows) {
  for (const auto& [name, text, expected] : rows) {
    EXPECT_EQ(replaceSpecialCharactersIn(text), expected) << name;
  }
}

TEST(SpecialCharacters, EachPair) {
  expectRows({{"possessive", "Ann 's birthday", "Ann's birthday"},
              {"full stop", "a .b", "a.b"},
              {"comma", "a ,b", "a,b"},
              {"colon", "a :b", "a:b"},
              {"semicolon", "a ;b", "a;b"},
              {"exclamation mark", "a !b", "a!b"},
              {"question mark", "a ?b", "a?b"},
              {"opening parenthesis", "a( b", "a(b"},
              {"closing parenthesis", "a )b", "a)b"},
              {"opening bracket", "a[ b", "a[b"},
              {"closing bracket", "a ]b", "a]b"},
              {"opening brace", "a{ b", "a{b"},
              {"closing brace", "a }b", "a}b"},
              {"less than", "a< b", "a<b"},
              {"greater than", "a >b", "a>b"},
              {"hyphen", "Ann - Bob", "Ann-Bob"},
              {"slash", "Ann / Bob", "Ann/Bob"}});
}

TEST(SpecialCharacters, ThePossessiveNeedsASpaceOnBothSides) {
  expectRows({{"no space before", "Ann's birthday", "Ann's birthday"},
              {"at the end", "Ann 's", "Ann 's"},
              {"another letter", "Ann 't is", "Ann 't is"},
              {"typographic apostrophe", "Ann \u2019s birthday", "Ann \u2019s birthday"},
              {"twice in a row", "a 's 's b", "a's 's b"}});
}

TEST(SpecialCharacters, HyphenAndSlashNeedASpaceOnBothSides) {
  expectRows({{"only before", "Ann -Bob", "Ann -Bob"},
              {"only after", "Ann- Bob", "Ann- Bob"},
              {"slash only before", "Ann /Bob", "Ann /Bob"},
              {"slash only after", "Ann/ Bob", "Ann/ Bob"},
              {"shared space", "a - - b", "a-- b"},
              {"dash that is no hyphen", "a \u2013 b", "a \u2013 b"}});
}

TEST(SpecialCharacters, OnePassTakesOneSpace) {
  expectRows({{"two before a full stop", "a  .", "a ."},
              {"two after a parenthesis", "(  a", "( a"},
              {"two before a parenthesis", "a  )", "a )"},
              {"two around a hyphen", "a  -  b", "a - b"}});
}

TEST(SpecialCharacters, LaterPairsActOnTheResultOfEarlierOnes) {
  expectRows({{"stop then comma", "a . ,b", "a.,b"},
              {"comma then stop", "a , .b", "a,.b"},
              {"parentheses", "( Ann )", "(Ann)"},
              {"empty parentheses keep nothing", "( )", "()"},
              {"brackets in brackets", "[ { < x > } ]", "[{<x>}]"},
              {"hyphen made lonely by the bracket", "( - a", "(- a"},
              {"hyphen before slash", "a - / b", "a-/ b"},
              {"possessive before stop", "a 's .b", "a's.b"}});
}

TEST(SpecialCharacters, WhatHoldsNoPairIsUnchanged) {
  expectRows({{"empty", "", ""},
              {"one space", " ", " "},
              {"only punctuation", ".,:;!?()[]{}<>-/", ".,:;!?()[]{}<>-/"},
              {"no-break space", "a\u00A0.", "a\u00A0."},
              {"tab and line break", "a\t.\n,", "a\t.\n,"},
              {"opening bracket keeps the space before it", "a (b", "a (b"},
              {"closing bracket keeps the space after it", "a) b", "a) b"}});
}

TEST(SpecialCharacters, AMarkAtAnEndCountsToo) {
  expectRows({{"at the start", " .", "."}, {"opening at the end", "a ( ", "a ("}});
}

TEST(ReplacingText, TakesMatchesLeftToRightWithoutOverlap) {
  ReplacingText text("aaaaa");
  text.replace("aa", "b");
  EXPECT_EQ(text.text(), "bba");
}

TEST(ReplacingText, DoesNotLookAgainAtWhatItPutIn) {
  ReplacingText text("xabyab");
  text.replace("ab", "aab");
  EXPECT_EQ(text.text(), "xaabyaab");
}

TEST(ReplacingText, StopsBeforeItTakesAllMemory) {
  const std::string value(std::size_t{1} << 20, 'x');
  ReplacingText text(std::string(1'000'000, 'a'));
  text.replace("a", value);
  EXPECT_EQ(text.text().size(), ReplacingText::kEnough + 1'000'000 - 64);
  EXPECT_TRUE(text.text().ends_with("x" + std::string(1'000'000 - 64, 'a')));
}

TEST(ReplacingText, ReplacementsFollowOneAnother) {
  ReplacingText text("one two");
  text.replace("one", "two");
  text.replace("two", "three");
  text.replace("four", "five");
  EXPECT_EQ(std::move(text).text(), "three three");
}

}  // namespace
}  // namespace annivo
