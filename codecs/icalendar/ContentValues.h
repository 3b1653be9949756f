// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Date.h"
#include "base/NSCalendarDate.h"
#include "codecs/icalendar/CalEvent.h"
#include "codecs/icalendar/ContentLine.h"

namespace annivo {

/// "-P1DT15H", "PT0S": the shortest duration of that many seconds.
[[nodiscard]] std::string durationText(std::int64_t seconds);
/// Seconds of a duration, nothing for another text. Values beyond 64 bits are held at 10^15.
[[nodiscard]] std::optional<std::int64_t> durationFromText(std::string_view text);

/// "20261120T184600Z"
[[nodiscard]] std::string utcText(Date date);
/// The day on which a moment falls.
[[nodiscard]] std::chrono::sys_days dayOf(Date date, const NSTimeZone& zone);
/// "20261120"; nothing where the day lies outside the years 1 to 9999.
[[nodiscard]] std::optional<std::string> dayText(std::chrono::sys_days day);

/// The value of DTSTART or DTEND: a day (its midnight in `defaultZone`), a moment in UTC, in a zone
/// of the system's database, or in `defaultZone` (no TZID, or one that cannot name a zone). Nothing
/// for another text.
[[nodiscard]] std::optional<EventTime> dateValue(const ContentLine& line,
                                                 const NSTimeZone& defaultZone);

/// The property that holds an event's ledger identity.
inline constexpr std::string_view kIdentityProperty = "X-ANNIVO-IDENTITY";
/// What it says: the identity, and the event that it was given to. In an event of another UID,
/// which is a copy that somebody made, it says nothing about that event.
struct IdentityValue {
  LedgerIdentity identity;
  std::string eventUID;
};
/// "<microseconds since 1970>/<calendarUID>/<myUID>/<eventUID>", the UIDs underscore-encoded, so
/// that no server finds anything in it to reformat.
[[nodiscard]] std::string identityText(const LedgerIdentity& identity, const std::string& eventUID);
[[nodiscard]] std::optional<IdentityValue> identityFromText(std::string_view text);

}  // namespace annivo
