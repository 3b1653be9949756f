// SPDX-License-Identifier: MIT
#include "calendar/AlarmKind.h"

namespace annivo {

const char* storedText(AlarmKind kind) {
  switch (kind) {
    case AlarmKind::message:
      return "Message";
    case AlarmKind::email:
      return "Email";
    case AlarmKind::sound:
      return "Sound";
    case AlarmKind::openFile:
      return "Open File";
    case AlarmKind::none:
      break;
  }
  return "None";
}

std::optional<AlarmKind> alarmKindOf(std::string_view stored) {
  if (stored == storedText(AlarmKind::none)) return AlarmKind::none;
  for (const AlarmKind kind : kAlarmKinds) {
    if (stored == storedText(kind)) return kind;
  }
  if (stored.ends_with(storedText(AlarmKind::sound))) return AlarmKind::sound;
  return std::nullopt;
}

AlarmKind alarmKindOf(const CalAlarm& alarm) {
  if (alarm.emailAddress) return AlarmKind::email;
  if (alarm.url) return AlarmKind::openFile;
  return alarm.sound ? AlarmKind::sound : AlarmKind::message;
}

}  // namespace annivo
