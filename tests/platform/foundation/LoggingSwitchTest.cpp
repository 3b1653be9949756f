// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/LoggingSwitch.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

constexpr std::int64_t kBeyond32Bits = std::int64_t{1} << 32;

struct Row {
  const char* name;
  PropertyList stored;
  bool isOn;
};
void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class LoggingSwitch : public testing::TestWithParam<Row> {};

TEST_P(LoggingSwitch, IsOnWhereTheIntegerOf32BitsIsOne) {
  TestHome home;
  home.ownPreferences({{"doLog", GetParam().stored}});
  EXPECT_EQ(loggingIsOn(home.platform()), GetParam().isOn);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LoggingSwitch,
    testing::Values(Row{"Absent", {}, false}, Row{"One", 1, true}, Row{"Zero", 0, false},
                    Row{"Two", 2, false}, Row{"MinusOne", -1, false}, Row{"True", true, true},
                    Row{"False", false, false}, Row{"OneAndAHalf", 1.5, true},
                    Row{"JustBelowTwo", 1.999, true}, Row{"JustBelowOne", 0.999, false},
                    Row{"TextOne", "1", true}, Row{"TextTwo", "2", false},
                    Row{"TextZero", "0", false}, Row{"Word", "yes", false},
                    Row{"TextThatBeginsWithOne", " 1 or so", true}, Row{"TextTwelve", "12", false},
                    // A number keeps its low 32 bits, a text is held at the limits.
                    Row{"NumberWhoseLowBitsAreOne", kBeyond32Bits + 1, true},
                    Row{"NegativeNumberWhoseLowBitsAreOne", -kBeyond32Bits + 1, true},
                    Row{"NumberWhoseLowBitsAreZero", kBeyond32Bits, false},
                    Row{"TextBeyond32Bits", "4294967297", false},
                    Row{"List", PropertyList::Array{1}, false}, Row{"Date", kUnixEpoch, false}),
    [](const auto& row) { return row.param.name; });

TEST(LoggingSwitchLine, IsReadAnewForEachLine) {
  TestHome home;
  NSUserDefaults& defaults = home.platform().standardUserDefaults();
  for (const int value : {1, 0, 1, 2}) {
    defaults.setObjectForKey(value, "doLog");
    logOptionally(home.platform(), "line ", "of two parts");
  }
  EXPECT_EQ(home.log.count("line of two parts"), 2U);
}

}  // namespace
}  // namespace annivo
