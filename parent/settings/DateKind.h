// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/CalendarType.h"

namespace annivo {

/// The dates that a person's choice is for.
enum class DateKind { birthdays, anniversaries, both };

/// "birthdays", "anniversaries" or "both", and back; nothing for another word.
[[nodiscard]] const char* dateKindWord(DateKind kind);
[[nodiscard]] std::optional<DateKind> dateKindOfWord(std::string_view word);
[[nodiscard]] std::vector<std::string> dateKindWords();
/// Of three texts the one for that kind: a sentence about birthdays, one about anniversaries, one
/// about both.
[[nodiscard]] const char* textFor(DateKind kind, const char* birthdays, const char* anniversaries,
                                  const char* both);

[[nodiscard]] DateKind dateKindOf(CalendarType type);
[[nodiscard]] bool includes(DateKind kind, CalendarType type);

}  // namespace annivo
