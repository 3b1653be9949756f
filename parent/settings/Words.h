// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/NSCalendarDate.h"
#include "base/Translation.h"

namespace annivo {

/// `text` with control characters made visible, so that no name can steer a terminal or add a
/// line.
[[nodiscard]] std::string printable(std::string_view text);
/// The items one after the other, as the person's language writes a list: "Ann, Bob, Carl".
[[nodiscard]] std::string listed(const std::vector<std::string>& items);
/// The same for items that hold commas: "message 2 days before, for birthdays; email on the day".
[[nodiscard]] std::string listedPhrases(const std::vector<std::string>& items);
/// As listed, with the last one bound by "and" or "or": "message, email or sound".
[[nodiscard]] std::string listedAll(const std::vector<std::string>& items);
[[nodiscard]] std::string listedAlternatives(const std::vector<std::string>& items);

// Days and moments in the person's zone; a date without a year has the year 1604.

/// For people, as their language writes a day: "2026-06-10", without a year "--06-10".
[[nodiscard]] std::string shownDay(Date date, const NSTimeZone& zone);
/// For people: "2026-06-10 08:00".
[[nodiscard]] std::string shownMoment(Date date, const NSTimeZone& zone);
/// For programs, the same in every language: "2026-06-10", "--06-10".
[[nodiscard]] std::string isoDay(Date date, const NSTimeZone& zone);

}  // namespace annivo
