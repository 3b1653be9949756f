// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace annivo {

/// A moment in UTC, to the microsecond (NSDate). An absent moment is std::optional<Date>.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

inline constexpr Date kUnixEpoch{};
/// 2001-01-01 00:00:00 UTC, from which stores and property lists count their seconds.
inline constexpr Date kReferenceDate{std::chrono::seconds{978307200}};

/// The range of dates that this system works with: the years 1 to 9999.
inline constexpr Date kEarliestDate{std::chrono::sys_days{std::chrono::year{1} / 1 / 1}};
inline constexpr Date kLatestDate{Date{std::chrono::sys_days{std::chrono::year{10000} / 1 / 1}} -
                                  std::chrono::microseconds{1}};

/// The moment `seconds` after the reference date, rounded to the nearest microsecond; nothing for
/// a value that is not finite or lies outside the years 1 to 9999.
[[nodiscard]] std::optional<Date> dateFromReferenceSeconds(double seconds);
/// Seconds after the reference date; gives back what dateFromReferenceSeconds was given.
[[nodiscard]] double referenceSeconds(Date date);
/// Seconds from `from` to `to`, negative when `to` is earlier.
[[nodiscard]] double timeInterval(Date from, Date to);

/// "2026-11-20 18:46:00 +0000"; an absent date is "(null)".
[[nodiscard]] std::string describe(std::optional<Date> date);

}  // namespace annivo
