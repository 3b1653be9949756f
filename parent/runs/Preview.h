// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calendar/CalendarType.h"
#include "parent/runs/EventChanges.h"
#include "parent/settings/Session.h"
#include "parent/sources/ImportedSource.h"

namespace annivo {

/// A contact date that yields no event.
struct DateWithoutEvent {
  enum class Reason {
    notInGroup,  ///< the person is not in the chosen group
    labelExcluded,
    noCalendar,  ///< none is chosen for its kind
    calendarMissing,
    calendarLocked,  ///< it cannot be written
    noDay,           ///< the store holds none
    tooFarAhead,
  };
  std::string person;
  std::string label;  ///< in the person's language
  std::optional<Date> date;
  CalendarType kind = CalendarType::birthdays;
  Reason reason = Reason::noDay;
};

/// What a run that is started now would do.
struct Preview {
  EventChanges changes;
  std::vector<std::string> newCalendars;  ///< titles of calendars that it would create
  std::vector<DateWithoutEvent> leftOut;
  std::vector<std::string> messages;  ///< what it would tell the person
  bool presentedFailure = false;      ///< one of the messages is of a failure
  bool switchedOff = false;           ///< it would only take its events out
};

/// Lets the agent's own controller run over files whose changes stay in memory. Nothing is written.
[[nodiscard]] Preview previewRun(Session& session);

}  // namespace annivo
