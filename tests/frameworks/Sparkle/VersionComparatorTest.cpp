// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "frameworks/Sparkle/VersionComparator.h"

namespace annivo {
namespace {

/// -1, 0 or 1.
int order(std::string_view a, std::string_view b) {
  const auto result = compareVersions(a, b);
  return result < 0 ? -1 : result > 0 ? 1 : 0;
}

struct Pair {
  const char* lower;
  const char* higher;
};
struct VersionComparatorLower : testing::TestWithParam<Pair> {};

TEST_P(VersionComparatorLower, IsLowerAndTheOtherHigher) {
  EXPECT_EQ(order(GetParam().lower, GetParam().higher), -1);
  EXPECT_EQ(order(GetParam().higher, GetParam().lower), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, VersionComparatorLower,
    testing::Values(Pair{"0.9", "1.0a1"}, Pair{"1.0a1", "1.0b1"}, Pair{"1.0b1", "1.0b2"},
                    Pair{"1.0b2", "1.0b10"}, Pair{"1.0b10", "1.0rc"}, Pair{"1.0rc", "1.0"},
                    Pair{"1.0b", "1.0b2"}, Pair{"1.5.5", "1.5.6a1"},
                    Pair{"3.3 (5847)", "3.3.1b1 (5902)"}, Pair{"1.0b1", "1.0.0"},
                    Pair{"1.0", "1.0.1"}, Pair{"1.9", "1.10"}, Pair{"1.0", "1.0 1"}, Pair{"1", "2"},
                    Pair{"9", "10"}, Pair{"1.0B1", "1.0b1"}, Pair{"1.0-a", "1.1-a"},
                    Pair{"20091231", "20100101"}, Pair{"", "0"}, Pair{"a", ""}, Pair{"a", "0"},
                    Pair{"(1)", "1"}, Pair{"1.a", "1.0"}, Pair{"1 5", "1.0.1"}, Pair{"1..2", "1.0"},
                    Pair{"4294967295", "4294967296"}, Pair{"1.0\xC3\xA4", "1.0"},
                    Pair{"1.0+1", "1.0 1"}, Pair{"9223372036854775806", "9223372036854775807"}));

struct VersionComparatorEqual : testing::TestWithParam<Pair> {};

TEST_P(VersionComparatorEqual, IsNeitherLowerNorHigher) {
  EXPECT_EQ(order(GetParam().lower, GetParam().higher), 0);
  EXPECT_EQ(order(GetParam().higher, GetParam().lower), 0);
}

INSTANTIATE_TEST_SUITE_P(Pairs, VersionComparatorEqual,
                         testing::Values(Pair{"", ""}, Pair{"1.0", "1.0"}, Pair{"1.0", "1.0.0"},
                                         Pair{"1", "1.0.0"}, Pair{"1.0pre1", "1.0.0pre1"},
                                         Pair{"1.", "1.0"}, Pair{"01.002", "1.2"},
                                         Pair{"1.5.5-abc", "1.5.5-def"}, Pair{"1.5.5", "1.5.5-9"},
                                         Pair{"1.0b (3)", "1.0b.(3)"}, Pair{"1b,2", "1b_2"},
                                         Pair{"-1", "(1"},
                                         // Numbers are held at 64 bits.
                                         Pair{"9223372036854775807", "99999999999999999999"}));

TEST(VersionComparator, KnowsThePunctuationAndSpacesBeyondAscii) {
  EXPECT_EQ(order("1.0b\u00A01", "1.0b 1"), 0);
  EXPECT_EQ(order("1.0b\u20131", "1.0b 1"), 0);
  EXPECT_EQ(order("1.0b\u30011", "1.0b 1"), 0);
  EXPECT_NE(order("1.0b\u20AC1", "1.0b 1"), 0) << "a currency sign is no punctuation";
  EXPECT_NE(order("1.0b\u20441", "1.0b 1"), 0) << "nor is the fraction slash";
}

TEST(VersionComparator, ReadsBytesThatAreNoUtf8AsWords) {
  EXPECT_EQ(order("1.0\xE2", "1.0"), -1);
  EXPECT_EQ(order("1.0\xFF\xFE", "1.0\xFF\xFE"), 0);
}

TEST(VersionComparator, TakesTimeInProportionToLength) {
  std::string longest = "1";
  for (int i = 0; i < 200000; ++i) longest += ".0";
  EXPECT_EQ(order("1 " + longest, longest), 1);
  EXPECT_EQ(order("1", longest), 0);
}

/// Versions as people and mistakes make them: few symbols, so that many are nearly alike.
class RandomVersions {
 public:
  std::string next() {
    static const std::vector<std::string> kPieces{"0", "0", "1", "2",  "10", ".", ".", ".",
                                                  ".", "a", "b", "rc", " ",  "(", "-", "\u00E9"};
    std::string text;
    const auto length = std::uniform_int_distribution<>(0, 7)(random_);
    for (int i = 0; i < length; ++i) {
      text += kPieces[std::uniform_int_distribution<std::size_t>(0, kPieces.size() - 1)(random_)];
    }
    return text;
  }
  [[nodiscard]] std::mt19937& random() { return random_; }

 private:
  std::mt19937 random_{20261120};
};

TEST(VersionComparator, IsATotalOrderOfTenThousandRandomVersions) {
  RandomVersions source;
  std::vector<std::string> versions(10000);
  std::generate(versions.begin(), versions.end(), [&] { return source.next(); });

  for (std::size_t i = 0; i < versions.size(); ++i) {
    const std::string& a = versions[i];
    const std::string& b = versions[(i * 7919 + 1) % versions.size()];
    const std::string& c = versions[(i * 104729 + 2) % versions.size()];
    ASSERT_EQ(order(a, a), 0) << a;
    ASSERT_EQ(order(a, b), -order(b, a)) << a << " | " << b;
    if (order(a, b) <= 0 && order(b, c) <= 0) {
      ASSERT_LE(order(a, c), 0) << a << " | " << b << " | " << c;
      if (order(a, b) < 0 || order(b, c) < 0) {
        ASSERT_LT(order(a, c), 0) << a << " | " << b << " | " << c;
      }
    }
  }

  // Sorted by such an order, each version stands right with every other, not with its neighbour
  // alone.
  std::sort(versions.begin(), versions.end(),
            [](const auto& a, const auto& b) { return order(a, b) < 0; });
  std::uniform_int_distribution<std::size_t> index(0, versions.size() - 1);
  for (int i = 0; i < 300000; ++i) {
    const auto [low, high] = std::minmax({index(source.random()), index(source.random())});
    ASSERT_LE(order(versions[low], versions[high]), 0) << versions[low] << " | " << versions[high];
  }
}

}  // namespace
}  // namespace annivo
