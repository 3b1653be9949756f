// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codecs/icalendar/CalAlarm.h"
#include "codecs/icalendar/ContentLine.h"

namespace annivo {

/// The lines of a VALARM for that alarm, with a fresh UID. What is written reads back equal.
void appendAlarm(std::string& out, const CalAlarm& alarm, std::string_view lineEnd);

/// Collects the alarm of one VALARM from its property lines.
class AlarmReader {
 public:
  void read(const ContentLine& line);
  /// Nothing for ACTION:NONE, by which other programs mark that there is no alarm.
  [[nodiscard]] std::optional<CalAlarm> alarm() &&;

 private:
  enum class Action { display, audio, email, procedure, none };
  void readTrigger(const ContentLine& line);

  Action action_ = Action::display;
  bool hasTrigger_ = false;
  CalAlarm alarm_;
  std::optional<std::string> attachment_;
  std::optional<std::string> attendee_;
};

}  // namespace annivo
