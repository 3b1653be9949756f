// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/coredata/NSPredicate.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

using Values = PropertyList::Dictionary;

bool evaluate(const NSPredicate& predicate, const Values& values) {
  const PropertyList object(values);
  return predicate.evaluate(
      [&](std::string_view key) -> const PropertyList& { return object[key]; });
}

bool holds(const char* format, std::vector<PropertyList> arguments, const Values& values) {
  return evaluate(NSPredicateFormat::parse(format).with(std::move(arguments)), values);
}

TEST(NSPredicate, ComparesByTheRulesOfEachOperator) {
  const Date day = utc(2026, 3, 1);
  const Date later = utc(2026, 3, 2);
  const struct {
    const char* format;
    PropertyList attribute;
    std::vector<PropertyList> arguments;
    bool expected;
  } rows[] = {
      {"a == %@", 1, {1}, true},
      {"a == %@", 1, {2}, false},
      {"a == %@", 1, {1.0}, true},
      {"a == %@", 1, {"1"}, false},
      {"a == %@", 1, {true}, false},
      {"a != %@", 1, {"1"}, true},
      {"a == %@", day, {day}, true},
      {"a == %@", day, {day + std::chrono::microseconds{1}}, false},
      {"a > %@", later, {day}, true},
      {"a > %@", day, {day}, false},
      {"a >= %@", day, {day}, true},
      {"a < %@", day, {later}, true},
      {"a < %@", day, {day}, false},
      {"a <= %@", day, {day}, true},
      {"a <= %@", later, {day}, false},
      {"a > %@", "b", {"a"}, true},
      {"a > %@", "b", {1}, false},
      {"a <= %@", "b", {1}, false},
      {"a >= 2.5", 3, {}, true},
      {"a < -1", -2, {}, true},
      {"a == 9007199254740993", std::int64_t{9007199254740993}, {}, true},
      {"a > 9007199254740992", std::int64_t{9007199254740993}, {}, true},
      {"a == \"x y\"", "x y", {}, true},
      {"a == 'it'", "it", {}, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(holds(row.format, row.arguments, {{"a", row.attribute}}), row.expected) << row.format;
  }
}

TEST(NSPredicate, ANilAttributeEqualsNilOnlyAndHasNoOrder) {
  const Date day = utc(2026, 3, 1);
  EXPECT_FALSE(holds("((birthday != nil))", {}, {}));
  EXPECT_TRUE(holds("((birthday != nil))", {}, {{"birthday", day}}));
  EXPECT_TRUE(holds("a == nil", {}, {}));
  EXPECT_FALSE(holds("a == nil", {}, {{"a", 0}}));
  EXPECT_TRUE(holds("a == %@", {PropertyList()}, {}));
  EXPECT_FALSE(holds("a == %@", {day}, {}));
  EXPECT_TRUE(holds("a != %@", {day}, {}));
  for (const char* format : {"a > %@", "a >= %@", "a < %@", "a <= %@"}) {
    EXPECT_FALSE(holds(format, {day}, {})) << format;
    EXPECT_FALSE(holds(format, {PropertyList()}, {{"a", day}})) << format;
    EXPECT_FALSE(holds(format, {PropertyList()}, {})) << format;
  }
  EXPECT_FALSE(holds("a LIKE %@", {"*"}, {}));
  EXPECT_FALSE(holds("a LIKE[c] %@", {PropertyList()}, {{"a", "x"}}));
}

TEST(NSPredicate, LikeMatchesTheWholeTextWithWildcards) {
  const struct {
    const char* text;
    const char* pattern;
    bool expected;
  } rows[] = {
      {"abc", "abc", true},
      {"abc", "ABC", false},
      {"abc", "ab", false},
      {"abc", "bc", false},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "*b*", true},
      {"abc", "a?c", true},
      {"abc", "a?", false},
      {"abc", "???", true},
      {"abc", "????", false},
      {"abc", "*", true},
      {"", "*", true},
      {"", "?", false},
      {"", "", true},
      {"abc", "", false},
      {"abc", "**", true},
      {"aXbXc", "a*X?", true},
      {"mississippi", "m*iss*p*i", true},
      {"mississippi", "m*iss*x*i", false},
      {"a.c", "a.c", true},
      {"abc", "a.c", false},
      {"[c]", "[c]", true},
      {"grün", "gr?n", true},
      {"日本", "??", true},
      {"日本", "???", false},
      {"a\nb", "a*b", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(holds("a LIKE %@", {row.pattern}, {{"a", row.text}}), row.expected)
        << row.text << " LIKE " << row.pattern;
  }
  EXPECT_FALSE(holds("a LIKE %@", {"1"}, {{"a", 1}}));
}

TEST(NSPredicate, LikeWithCFoldsCase) {
  const struct {
    const char* text;
    const char* pattern;
    bool expected;
  } rows[] = {
      {"AB12-cd", "ab12-CD", true}, {"Straße", "STRASSE", true}, {"ΣΊΣΥΦΟΣ", "σίσυφος", true},
      {"Éa", "é*", true},           {"abc", "ABD", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(holds("a LIKE[c] %@", {row.pattern}, {{"a", row.text}}), row.expected)
        << row.text << " LIKE[c] " << row.pattern;
  }
}

TEST(NSPredicate, MatchesManyWildcardsWithoutTryingAllWays) {
  const std::string text(20000, 'a');
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "a*";
  EXPECT_FALSE(holds("a LIKE %@", {pattern + "b"}, {{"a", text}}));
}

TEST(NSPredicate, AndBindsCloserThanOr) {
  const char* format = "a == 1 OR b == 1 AND c == 1";
  EXPECT_TRUE(holds(format, {}, {{"a", 1}}));
  EXPECT_TRUE(holds(format, {}, {{"b", 1}, {"c", 1}}));
  EXPECT_FALSE(holds(format, {}, {{"b", 1}}));
  EXPECT_FALSE(holds("(a == 1 OR b == 1) AND c == 1", {}, {{"a", 1}}));
  EXPECT_TRUE(holds("NOT a == 1 AND b == 1", {}, {{"b", 1}}));
  EXPECT_FALSE(holds("NOT (a == 1 OR b == 1)", {}, {{"b", 1}}));
  EXPECT_TRUE(holds("NOT NOT a == 1", {}, {{"a", 1}}));
}

TEST(NSPredicate, TakesNamesThatBeginLikeItsWords) {
  EXPECT_TRUE(holds("NOTE == 1 AND nilly == 2", {}, {{"NOTE", 1}, {"nilly", 2}}));
}

TEST(NSPredicate, OneFormatServesManyArguments) {
  static const auto format =
      NSPredicateFormat::parse("(myUID LIKE[c] %@) AND (calendarUID LIKE[c] %@) AND (date == %@)");
  const Date day = utc(2026, 3, 1);
  const Values object{{"myUID", "A:ABPerson"}, {"calendarUID", "C"}, {"date", day}};
  EXPECT_TRUE(evaluate(format.with({"a:abperson", "c", day}), object));
  EXPECT_FALSE(evaluate(format.with({"b:abperson", "c", day}), object));
  EXPECT_FALSE(evaluate(format.with({"a:abperson", "c", utc(2026, 3, 2)}), object));
}

TEST(NSPredicate, GivesTheComparisonsOfAConjunction) {
  const auto predicate =
      NSPredicateFormat::parse("((a LIKE[c] %@) AND (b == nil)) AND c > 3").with({"x"});
  const auto comparisons = predicate.conjunction();
  ASSERT_TRUE(comparisons.has_value());
  ASSERT_EQ(comparisons->size(), 3U);
  using Operator = NSPredicate::Comparison::Operator;
  EXPECT_EQ((*comparisons)[0].attribute, "a");
  EXPECT_EQ((*comparisons)[0].op, Operator::likeC);
  EXPECT_TRUE((*comparisons)[0].value->isEqualToString("x"));
  EXPECT_TRUE((*comparisons)[1].value->isNil());
  EXPECT_EQ((*comparisons)[2].op, Operator::greater);
  EXPECT_EQ(*(*comparisons)[2].value, PropertyList(3));

  EXPECT_FALSE(NSPredicateFormat::parse("a == 1 OR b == 1").with({}).conjunction().has_value());
  EXPECT_FALSE(NSPredicateFormat::parse("NOT a == 1").with({}).conjunction().has_value());
}

TEST(NSPredicate, KnowsWhetherALikeValueHoldsAWildcard) {
  EXPECT_TRUE(hasWildcard("a*"));
  EXPECT_TRUE(hasWildcard("?"));
  EXPECT_FALSE(hasWildcard("A:ABPerson"));
  EXPECT_FALSE(hasWildcard(""));
}

TEST(NSPredicateDeathTest, AFormatOutsideTheGrammarIsOurOwnFault) {
  for (const char* format : {"", "a", "a ==", "a == %@ b", "(a == 1", "a = 1", "== 1", "a == 'x",
                             "a BETWEEN 1", "a == 1 AND", "a == nilly"}) {
    EXPECT_DEATH((void)NSPredicateFormat::parse(format), "Predicate format") << format;
  }
  EXPECT_DEATH((void)NSPredicateFormat::parse("a == %@").with({}), "takes 1 arguments, not 0");
}

}  // namespace
}  // namespace annivo
