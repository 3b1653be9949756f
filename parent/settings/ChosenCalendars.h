// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "parent/settings/DateKind.h"
#include "parent/settings/Session.h"
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

/// Stores the choice for a kind of date. The calendar is found by
/// its UID, else by its title, else by its title in any case; throws Refusal where there is none,
/// more than one, or one that cannot be written.
std::shared_ptr<CalCalendar> chooseCalendar(Session& session, DateKind kind,
                                            const std::string& calendar);
void chooseNoCalendar(Session& session, DateKind kind);

}  // namespace annivo
