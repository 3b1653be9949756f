// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/Date.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

using std::chrono::microseconds;

TEST(Date, CountsSecondsFromTheReferenceDate) {
  EXPECT_EQ(dateFromReferenceSeconds(0), kReferenceDate);
  EXPECT_EQ(dateFromReferenceSeconds(0), utc(2001, 1, 1));
  EXPECT_EQ(dateFromReferenceSeconds(-978307200), kUnixEpoch);
  EXPECT_EQ(dateFromReferenceSeconds(-12523032000), utc(1604, 2, 29, 12));
  EXPECT_EQ(dateFromReferenceSeconds(-0.5), utc(2001, 1, 1) - microseconds{500000});
  EXPECT_EQ(referenceSeconds(utc(1604, 2, 29, 12)), -12523032000.0);
}

TEST(Date, GivesBackTheSecondsItWasMadeOf) {
  for (const double seconds : {0.0, 0.25, -0.25, 445103622.25, 445103622.123456, -12523032000.0,
                               -1.000001, 817930000.999999, 252423993599.0}) {
    const auto date = dateFromReferenceSeconds(seconds);
    ASSERT_TRUE(date) << seconds;
    EXPECT_EQ(referenceSeconds(*date), seconds);
  }
}

TEST(Date, ExistsInTheYearsOneToNineThousandNineHundredNinetyNineOnly) {
  EXPECT_EQ(dateFromReferenceSeconds(referenceSeconds(kEarliestDate)), utc(1, 1, 1));
  EXPECT_EQ(dateFromReferenceSeconds(referenceSeconds(utc(9999, 12, 31, 23, 59, 59))),
            utc(9999, 12, 31, 23, 59, 59));
  EXPECT_EQ(kLatestDate + microseconds{1}, utc(10000, 1, 1));
  for (const double seconds :
       {referenceSeconds(kEarliestDate) - 1, referenceSeconds(kLatestDate) + 1, 1e300, -1e300,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::nan("")}) {
    EXPECT_EQ(dateFromReferenceSeconds(seconds), std::nullopt) << seconds;
  }
}

TEST(Date, MeasuresIntervalsInBothDirections) {
  EXPECT_EQ(timeInterval(utc(2026, 1, 1), utc(2026, 1, 2)), 86400.0);
  EXPECT_EQ(timeInterval(utc(2026, 1, 2), utc(2026, 1, 1)), -86400.0);
  EXPECT_EQ(timeInterval(kUnixEpoch, kUnixEpoch + microseconds{1}), 1e-6);
}

TEST(Date, DescribesItselfInUTC) {
  EXPECT_EQ(describe(utc(2026, 11, 20, 18, 46)), "2026-11-20 18:46:00 +0000");
  EXPECT_EQ(describe(kUnixEpoch - microseconds{1}), "1969-12-31 23:59:59 +0000");
  EXPECT_EQ(describe(utc(987, 1, 2, 3, 4, 5)), "0987-01-02 03:04:05 +0000");
  EXPECT_EQ(describe(std::nullopt), "(null)");
}

}  // namespace
}  // namespace annivo
