// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/ZPKCalendarItems.h"
#include "contacts/ContactDateRecord.h"
#include "platform/Platform.h"

namespace annivo {

/// Turns contact date records into calendar events: titles from a template, three yearly
/// occurrences, alarms. Made for one calendar type of one run; keeps nothing between records.
class ZPKAnvCCalendarItemsFormat {
 public:
  /// `initWithTarget:andTitleFormat:`. The writer is not owned and outlives the formatter.
  ZPKAnvCCalendarItemsFormat(Platform& platform, ZPKCalendarItems& target,
                             std::vector<std::string> titleFormat);

  /// The nine token names in their order.
  [[nodiscard]] static const std::vector<std::string>& usedTokens();
  /// `setAlarmsWithData:forType:`. Fills the writer's alarm list from the alarm table; `type` is
  /// "birth" or "anni".
  void setAlarmsWithDataForType(const PropertyList& preferences, const std::string& type);
  /// `setEventsWithOriginal:`. Hands up to three events to the writer. A record without a date
  /// yields none.
  void setEventsWithOriginal(const ContactDateRecord& record);

 private:
  Platform& platform_;
  ZPKCalendarItems& thisInstance;
  std::vector<std::string> titleFormat;
  std::string mainTitleString;
};

}  // namespace annivo
