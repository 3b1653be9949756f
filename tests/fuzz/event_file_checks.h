// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/icalendar/ContentLine.h"
#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventLines.h"
#include "tests/fuzz/require.h"

namespace annivo::fuzz {

/// The raw lines of a text without those that a change of title replaces.
inline std::vector<std::string> otherLines(std::string_view text) {
  std::vector<std::string> raw;
  ContentLines lines(text);
  ContentLine line;
  while (lines.next(line)) {
    if (!line.named("SUMMARY") && !line.named("DTSTAMP") && !line.named("LAST-MODIFIED") &&
        !line.named("SEQUENCE")) {
      raw.emplace_back(line.raw());
    }
  }
  return raw;
}

inline const CalEvent* find(const std::vector<std::shared_ptr<CalEvent>>& events,
                            const std::string& uid) {
  for (const auto& event : events) {
    if (event->uid() == uid) return event.get();
  }
  return nullptr;
}

/// What holds for every text, whoever wrote it; aborts where it does not.
inline void checkEventText(std::string_view text) {
  std::string joined;
  ContentLines lines(text);
  ContentLine line;
  while (lines.next(line)) {
    require(!line.raw().empty(), "each step goes on");
    joined += line.raw();
  }
  require(joined == text, "the raw lines are the text");

  const NSTimeZone zone;
  const auto events = EventFile::events(text, zone);
  EventFile::isBrokenOff(text);
  EventFile::isOurs(text);
  if (!events) return;
  for (std::size_t i = 0; i < std::min<std::size_t>(events->size(), 3); ++i) {
    const auto& event = events->at(i);
    if (find(*events, event->uid()) != event.get()) continue;
    const std::string title = "a;b,\\\n" + std::string(100, 'x') + std::string(text.substr(0, 40));
    event->setTitle(title);
    const auto edited = EventFile::edited(text, *event, kReferenceDate, zone);
    require(edited.has_value(), "what was read can be edited");
    const auto again = EventFile::events(*edited, zone);
    require(again && again->size() == events->size(), "an edit keeps the events");
    require(find(*again, event->uid())->title() == title, "a title reads back");
    require(otherLines(*edited) == otherLines(text), "all other lines stay");

    const std::vector<CalAlarm> alarms = {
        {.relativeTrigger = -1.5, .url = std::string(text.substr(0, 60))}};
    event->setAlarms(alarms);
    const auto alarmed = EventFile::edited(text, *event, kReferenceDate, zone);
    require(alarmed.has_value(), "alarms can be set");
    require(find(EventFile::events(*alarmed, zone).value(), event->uid())->alarms() == alarms,
            "alarms read back");

    const auto rest = EventFile::without(text, event->uid());
    require(rest.has_value(), "what was read can be removed");
    if (rest->empty()) continue;
    const auto others = EventFile::events(*rest, zone);
    require(others && !find(*others, event->uid()), "a removed event is gone");
  }
}

}  // namespace annivo::fuzz
