// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "codecs/plist/PropertyList.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

TEST(PropertyList, KeepsTrueOneAndTheTextOneApart) {
  EXPECT_NE(PropertyList(true), PropertyList(1));
  EXPECT_NE(PropertyList(1), PropertyList("1"));
  EXPECT_NE(PropertyList(1), PropertyList(1.0));
  EXPECT_TRUE(PropertyList(true).isTheTrueObject());
  EXPECT_FALSE(PropertyList(1).isTheTrueObject());
  EXPECT_FALSE(PropertyList("1").isTheTrueObject());
  EXPECT_FALSE(PropertyList(false).isTheTrueObject());
  EXPECT_TRUE(PropertyList("1").isEqualToString("1"));
  EXPECT_FALSE(PropertyList(1).isEqualToString("1"));
}

TEST(PropertyList, GivesNilForAKeyItLacksAndForEveryKeyOfNoDictionary) {
  const PropertyList dictionary = PropertyList::Dictionary{{"a", 1}};
  EXPECT_EQ(dictionary["a"], PropertyList(1));
  EXPECT_TRUE(dictionary["b"].isNil());
  EXPECT_TRUE(PropertyList("text")["a"].isNil());
  EXPECT_TRUE(PropertyList()["a"].isNil());
}

TEST(PropertyList, TakesWholeNumbersFromNumbersAndTexts) {
  const struct {
    PropertyList value;
    std::int64_t integer;
    std::int32_t number;
  } rows[] = {
      {1, 1, 1},
      {-5, -5, -5},
      {true, 1, 1},
      {false, 0, 0},
      {2.9, 2, 2},
      {-2.9, -2, -2},
      {"1", 1, 1},
      {" \t\n12 days", 12, 12},
      {"-7", -7, -7},
      {"+7", 7, 7},
      {"--7", 0, 0},
      {"yes", 0, 0},
      {"", 0, 0},
      {"1.9", 1, 1},
      {"0x10", 0, 0},
      {"2147483648", 2147483648, 2147483647},
      {"-2147483649", -2147483649, -2147483647 - 1},
      {"9223372036854775807", kLargest, 2147483647},
      {"9223372036854775808", kLargest, 2147483647},
      {"-9223372036854775808", kSmallest, -2147483647 - 1},
      {"-99999999999999999999999", kSmallest, -2147483647 - 1},
      {std::int64_t{4294967297}, 4294967297, 1},
      {1e300, kLargest, -1},
      {-1e300, kSmallest, 0},
      {std::nan(""), 0, 0},
      {utc(2026, 1, 1), 0, 0},
      {PropertyList::Array{1}, 0, 0},
      {PropertyList(), 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.value.integerValue(), row.integer);
    EXPECT_EQ(row.value.intValue(), row.number);
  }
}

TEST(PropertyList, TakesTruthFromNumbersAndTexts) {
  for (const PropertyList& yes :
       {PropertyList(true), PropertyList(2), PropertyList(-1), PropertyList(0.5),
        PropertyList("YES"), PropertyList("true"), PropertyList(" +01"), PropertyList("-9"),
        PropertyList("y"), PropertyList("Tea")}) {
    EXPECT_TRUE(yes.boolValue()) << xmlPropertyList(yes);
  }
  for (const PropertyList& no :
       {PropertyList(false), PropertyList(0), PropertyList(0.0), PropertyList("NO"),
        PropertyList("0"), PropertyList(""), PropertyList("a yes"), PropertyList("000"),
        PropertyList(PropertyList::Array{true})}) {
    EXPECT_FALSE(no.boolValue()) << xmlPropertyList(no);
  }
}

}  // namespace
}  // namespace annivo
