// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "platform/Platform.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

struct ChosenCalendar {
  std::string uid;
  std::string title;
  friend bool operator==(const ChosenCalendar&, const ChosenCalendar&) = default;
};

/// Which calendars are written; none where nothing is.
struct ChosenCalendars {
  std::optional<ChosenCalendar> birthdays;
  std::optional<ChosenCalendar> anniversaries;
};

[[nodiscard]] ChosenCalendars chosenCalendars(AnvCalPrefs& prefs);

/// The preferences that say so to the agent. To it two equal titles mean one shared calendar, so
/// the titles are stored equal exactly when one calendar is chosen for both.
[[nodiscard]] PropertyList::Dictionary calendarPreferences(const ChosenCalendars& chosen);

}  // namespace annivo
