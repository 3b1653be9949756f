// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "platform/calendarstore/CalCalendarStore.h"

namespace annivo {

/// What an alarm does; `none` is a free row of the alarm table.
enum class AlarmKind { none, message, email, sound, openFile };
/// Those that a row in use can have.
inline constexpr AlarmKind kAlarmKinds[] = {AlarmKind::message, AlarmKind::email, AlarmKind::sound,
                                            AlarmKind::openFile};

/// The text of a kind in the alarm table, "Message" for one.
[[nodiscard]] const char* storedText(AlarmKind kind);
/// The kind that a text of the alarm table stands for: any text that ends with "Sound" is a sound;
/// nothing for a text of no kind.
[[nodiscard]] std::optional<AlarmKind> alarmKindOf(std::string_view stored);
/// The kind of an alarm as a calendar holds it.
[[nodiscard]] AlarmKind alarmKindOf(const CalAlarm& alarm);

}  // namespace annivo
