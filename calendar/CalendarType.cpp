// SPDX-License-Identifier: MIT
#include "calendar/CalendarType.h"

#include "platform/foundation/PreferenceKeys.h"

namespace annivo {

const CalendarTypeTexts& textsOf(CalendarType type) {
  static constexpr CalendarTypeTexts kBirthdays{keys::kRowBirth, keys::kBirthCalUID,
                                                keys::kBirthCalTitle, keys::kTitleBirthdays};
  static constexpr CalendarTypeTexts kAnniversaries{keys::kRowAnni, keys::kAneeCalUID,
                                                    keys::kAneeCalTitle, keys::kTitleAnniversaries};
  switch (type) {
    case CalendarType::birthdays:
      return kBirthdays;
    case CalendarType::anniversaries:
      break;
  }
  return kAnniversaries;
}

std::optional<CalendarType> calendarTypeOfUIDKey(std::string_view key) {
  for (const CalendarType type : kCalendarTypes) {
    if (key == textsOf(type).uidKey) return type;
  }
  return std::nullopt;
}

}  // namespace annivo
