// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/NSCalendarDate.h"

namespace annivo {

/// `text` with control characters made visible, so that no name can steer a terminal or add a
/// line.
[[nodiscard]] std::string printable(std::string_view text);
/// "1 person", "3 people".
[[nodiscard]] std::string counted(std::size_t count, std::string_view one, std::string_view many);
/// "a, b or c" with the conjunction "or".
[[nodiscard]] std::string listed(const std::vector<std::string>& words,
                                 std::string_view conjunction);
/// "2026-06-10" of a moment in the person's zone, "--06-10" for a date without a year.
[[nodiscard]] std::string shownDay(Date date, const NSTimeZone& zone);
/// "2026-06-10 08:00".
[[nodiscard]] std::string shownMoment(Date date, const NSTimeZone& zone);

}  // namespace annivo
