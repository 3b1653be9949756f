// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "run/UpdateSchedule.h"

namespace annivo {
namespace {

struct Row {
  const char* name;
  std::int64_t interval;
  double elapsed;
  bool due;
};

class UpdateSchedule : public testing::TestWithParam<Row> {};

TEST_P(UpdateSchedule, IsDueWhenTheIntervalHasPassedInWholeSeconds) {
  const auto& [name, interval, elapsed, due] = GetParam();
  EXPECT_EQ(updateCheckIsDue(interval, elapsed, true), due);
  EXPECT_FALSE(updateCheckIsDue(interval, elapsed, false));
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Rows, UpdateSchedule,
    testing::Values(
        Row{"OneSecondLess", 604800, 604799.0, false},
        Row{"AFractionLess", 604800, 604799.999, false}, Row{"Equal", 604800, 604800.0, true},
        Row{"AFractionMore", 604800, 604800.9, true}, Row{"OneSecondMore", 604800, 604801.0, true},
        Row{"NothingElapsed", 604800, 0.0, false}, Row{"IntervalZero", 0, 0.0, true},
        Row{"IntervalZeroElapsedJustNegative", 0, -0.9, true},
        Row{"IntervalZeroLastCheckInTheFuture", 0, -1.0, false},
        Row{"IntervalNegative", -5, 0.0, true},
        Row{"IntervalNegativeFurtherInTheFuture", -5, -5.0, true},
        Row{"IntervalNegativeStillFurtherInTheFuture", -5, -6.0, false},
        Row{"LastCheckFarInTheFuture", 604800, -1e18, false},
        Row{"LastCheckForEverInTheFuture", 604800, -kInfinity, false},
        Row{"LastCheckFarInThePast", 604800, 1e18, true},
        Row{"LargestInterval", 2147483647, 2147483646.0, false},
        Row{"LargestIntervalReached", 2147483647, 2147483647.0, true},
        Row{"IntervalOfExactly32BitsIsZero", 4294967296, 0.0, true},
        Row{"IntervalBeyond32BitsKeepsItsLowBits", 4294967296 + 604800, 604799.0, false},
        Row{"IntervalBeyond32BitsReached", 4294967296 + 604800, 604800.0, true},
        Row{"IntervalThatTurnsNegativeIn32Bits", 2147483648, 0.0, true},
        Row{"LargestIntervalOf64BitsIsMinusOne", std::numeric_limits<std::int64_t>::max(), -1.0,
            true},
        Row{"LargestIntervalOf64BitsLastCheckInTheFuture", std::numeric_limits<std::int64_t>::max(),
            -2.0, false},
        Row{"SmallestIntervalOf64BitsIsZero", std::numeric_limits<std::int64_t>::min(), 0.0, true},
        Row{"LowestIntervalLastCheckBeyond32BitsInTheFutureIsHeld",
            std::numeric_limits<std::int32_t>::min(), -1e18, true},
        Row{"ElapsedBeyond32BitsIsHeld", 2147483647, 2147483648.0, true}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace annivo
