// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace annivo {

/// What a calendar is written for: birthdays, or anniversaries and all other labelled dates.
enum class CalendarType { birthdays, anniversaries };
inline constexpr CalendarType kCalendarTypes[] = {CalendarType::birthdays,
                                                  CalendarType::anniversaries};

/// The texts by which preferences and log know a type.
struct CalendarTypeTexts {
  const char* word;      ///< in the log, and the key of its switch in a row of the alarm table
  const char* uidKey;    ///< of the preference with its calendar's UID
  const char* titleKey;  ///< of the preference with its calendar's title
  const char* titleTemplateKey;
};
[[nodiscard]] const CalendarTypeTexts& textsOf(CalendarType type);

/// The type whose calendar's UID stands under that key; nothing for another key.
[[nodiscard]] std::optional<CalendarType> calendarTypeOfUIDKey(std::string_view key);

}  // namespace annivo
