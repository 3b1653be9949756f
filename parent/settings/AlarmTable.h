// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/AlarmKind.h"
#include "platform/Platform.h"

namespace annivo {

/// The word for a kind of alarm, "message" for one, and back; nothing for another word.
[[nodiscard]] const char* alarmWord(AlarmKind kind);
[[nodiscard]] std::optional<AlarmKind> alarmKindOfWord(std::string_view word);
/// The words for all kinds that an alarm can have.
[[nodiscard]] std::vector<std::string> alarmWords();

/// One row of the alarm table in words.
struct ListedAlarm {
  int number = 0;    ///< its place in the table, from 1
  std::string kind;  ///< the kind's word; another program's kind as it stands
  std::int32_t days = 0;
  std::string time;  ///< "08:00"
  bool birthdays = false;
  bool anniversaries = false;
};

/// The rows that are in use.
[[nodiscard]] std::vector<ListedAlarm> listedAlarms(const PropertyList& table,
                                                    const NSTimeZone& zone);
/// The table with an alarm in its first free row. Refused when none of the five is free, and for
/// an unknown kind, a time that is none, or days below 0 or above 3650.
[[nodiscard]] Result<PropertyList> withAlarm(const PropertyList& table, const ListedAlarm& alarm,
                                             Date now, const NSTimeZone& zone);
/// The table with the row of that number free.
[[nodiscard]] Result<PropertyList> withoutAlarm(const PropertyList& table, int number);
/// "2 days before at 08:00"; negative days are after the date.
[[nodiscard]] std::string alarmTime(std::int64_t daysBefore, const std::string& time);
/// "email 2 days before at 08:00, for birthdays".
[[nodiscard]] std::string alarmText(const ListedAlarm& alarm);
/// The alarms for programs: a list of dictionaries.
[[nodiscard]] PropertyList alarmsFact(const std::vector<ListedAlarm>& alarms);

}  // namespace annivo
