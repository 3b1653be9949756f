// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Date.h"
#include "base/NSCalendarDate.h"
#include "codecs/icalendar/CalEvent.h"

namespace annivo {

/// The text of an event file: how events are read from it, and how it is edited without touching
/// any line that does not concern the change. An event is the VEVENT with its UID that has no
/// RECURRENCE-ID; those with one are its exceptions.
class EventFile {
 public:
  /// A larger file is nobody's single event; it is neither read nor changed.
  static constexpr std::size_t kLimit = std::size_t{1024} * 1024;

  /// Every event of the text; nothing when it is not well formed.
  static std::optional<std::vector<std::shared_ptr<CalEvent>>> events(std::string_view text,
                                                                      const NSTimeZone& zone);
  /// The text of a new file for that event.
  static std::string newText(const CalEvent& event, Date now, const NSTimeZone& zone);
  /// The text with what was changed in `event` since it was read; nothing when it is not well
  /// formed or does not hold the event.
  static std::optional<std::string> edited(std::string_view text, const CalEvent& event, Date now,
                                           const NSTimeZone& zone);
  /// The text without the event and its exceptions, "" when nothing but time zones is left; nothing
  /// when it is not well formed or does not hold the event.
  static std::optional<std::string> without(std::string_view text, const std::string& uid);
  /// Whether this is the beginning only of a file, as a power loss may leave it: components that
  /// are not closed, zeros at the end, or a text that isHardlyBegun.
  static bool isBrokenOff(std::string_view text);
  /// Whether this is nothing but zeros behind no more than our header, or less of it.
  static bool isHardlyBegun(std::string_view text);
  /// Whether what is left of a file says that every event in it is ours: by its identity, which
  /// names the event's own UID, by a UID that freshEventUID made, or by our header.
  static bool isOurs(std::string_view text);

 private:
  class Reader;
  class Editor;
};

}  // namespace annivo
