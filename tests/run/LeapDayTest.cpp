// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/run/ControllerHome.h"

namespace annivo {
namespace {

/// A moment of a leap year's 28 or 29 February in a zone, and how many events a person born on a
/// 29 February has then: the last of three is a year old or more from the time of day on that the
/// birthday's own has, until the next day begins.
struct Moment {
  const char* name;
  const char* zone;
  Date now;
  std::size_t events;
};

class LeapDay : public ControllerHome, public testing::WithParamInterface<Moment> {
 protected:
  LeapDay() : ControllerHome({.timeZone = GetParam().zone, .now = GetParam().now}) {}
  [[nodiscard]] bool anythingWasWrittenToTheCalendars() const {
    for (const char* operation : {"write", "remove", "rename"}) {
      for (const char* part : {"/Calendars/", "/Annivo 2/"}) {
        if (files.firstOf(operation, part) >= 0) return true;
      }
    }
    return false;
  }
};

TEST_P(LeapDay, AnEventThatTheSameRunWouldRemoveIsNotWrittenFirst) {
  setPeople({born("Leap", {1980, 2, 29})});
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(titles("B").size(), GetParam().events);
  EXPECT_EQ(ledgerRecords(), GetParam().events);
  EXPECT_EQ(files.firstOf("remove", ".ics"), -1);

  // A pass over the same contacts.
  home.touch(kMetadata, home.clock.now() + std::chrono::seconds{1});
  home.clock.advance(std::chrono::seconds{2});
  files.forget();
  EXPECT_EQ(run(), 0);
  EXPECT_GE(files.firstOf("read", ".ics"), 0);
  EXPECT_FALSE(anythingWasWrittenToTheCalendars());
  EXPECT_EQ(titles("B").size(), GetParam().events);
}

TEST_P(LeapDay, OneThatWasWrittenBeforeTheWindowIsTakenOutInIt) {
  home.clock.set(GetParam().now - std::chrono::hours{24 * 30});
  setPeople({born("Leap", {1980, 2, 29})});
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(titles("B").size(), 3U);
  home.clock.set(GetParam().now);
  home.touch(kMetadata, home.clock.now() - std::chrono::seconds{1});
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(titles("B").size(), GetParam().events);
  EXPECT_EQ(ledgerRecords(), GetParam().events);
}

INSTANTIATE_TEST_SUITE_P(
    Zones, LeapDay,
    testing::Values(Moment{"UtcBefore", "UTC", utc(2028, 2, 28, 11, 59, 50), 3},
                    Moment{"UtcAtNoon", "UTC", utc(2028, 2, 28, 12), 2},
                    Moment{"UtcInTheEvening", "UTC", utc(2028, 2, 28, 20), 2},
                    Moment{"UtcAtTheEndOfTheDay", "UTC", utc(2028, 2, 28, 23, 59, 50), 2},
                    Moment{"UtcOnTheDay", "UTC", utc(2028, 2, 29), 3},
                    Moment{"UtcAfter", "UTC", utc(2028, 2, 29, 12), 3},
                    Moment{"UtcInACommonYear", "UTC", utc(2027, 2, 28, 20), 3},
                    Moment{"NewYork", "America/New_York", utc(2028, 2, 28, 20), 2},
                    Moment{"NewYorkOnTheDay", "America/New_York", utc(2028, 2, 29, 5), 3},
                    Moment{"Berlin", "Europe/Berlin", utc(2028, 2, 28, 20), 2},
                    Moment{"BerlinOnTheDay", "Europe/Berlin", utc(2028, 2, 28, 23), 3},
                    Moment{"Honolulu", "Pacific/Honolulu", utc(2028, 2, 29, 2), 2},
                    Moment{"Auckland", "Pacific/Auckland", utc(2028, 2, 28, 5), 2},
                    Moment{"Kolkata", "Asia/Kolkata", utc(2028, 2, 28, 15), 2}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace annivo
