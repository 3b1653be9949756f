// SPDX-License-Identifier: MIT
#include "base/Date.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace annivo {

namespace {

using std::chrono::floor;
using std::chrono::microseconds;

}  // namespace

std::optional<Date> dateFromReferenceSeconds(double seconds) {
  // Also false for a value that is not a number.
  const bool inRange = seconds >= referenceSeconds(kEarliestDate) &&
                       seconds < referenceSeconds(kLatestDate + microseconds{1});
  if (!inRange) return std::nullopt;
  const double whole = std::floor(seconds);
  const microseconds fraction{std::llround((seconds - whole) * 1e6)};
  return kReferenceDate + std::chrono::seconds{static_cast<std::int64_t>(whole)} + fraction;
}

double referenceSeconds(Date date) { return timeInterval(kReferenceDate, date); }

double timeInterval(Date from, Date to) {
  // An extended intermediate, so that the result is the double nearest to the exact quotient.
  return static_cast<double>(static_cast<long double>((to - from).count()) / 1e6L);
}

std::string describe(std::optional<Date> date) {
  if (!date) return "(null)";
  const auto day = floor<std::chrono::days>(*date);
  const std::chrono::year_month_day civil{day};
  const std::chrono::hh_mm_ss time{floor<std::chrono::seconds>(*date - day)};
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d +0000",
                static_cast<int>(civil.year()), static_cast<unsigned>(civil.month()),
                static_cast<unsigned>(civil.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

}  // namespace annivo
