// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "calendar/ZPKCalendarItems.h"
#include "contacts/ContactDateRecord.h"
#include "format/TitleTemplate.h"
#include "platform/Platform.h"

namespace annivo {

/// Turns contact date records into calendar events: titles from a template, three yearly
/// occurrences, alarms. Made for one calendar type of one run; keeps nothing between records.
class ZPKAnvCCalendarItemsFormat {
 public:
  using Records = std::span<const std::reference_wrapper<const ContactDateRecord>>;

  /// `initWithTarget:andTitleFormat:`. The writer is not owned and outlives the formatter.
  ZPKAnvCCalendarItemsFormat(Platform& platform, ZPKCalendarItems& target,
                             const std::vector<std::string>& titleFormat);

  /// `usedTokens`, `setUsedTokens`. The nine token names in their order.
  [[nodiscard]] static constexpr const auto& usedTokens() { return kTokens; }
  /// `setAlarmsWithData:forType:`. Fills the writer's alarm list, emptied first, from the alarm
  /// table. A row counts when its value under the type's word is the boolean true and its kind is
  /// not none; what is missing in it or of another type counts as empty.
  void setAlarmsWithDataForType(const PropertyList& preferences, CalendarType type);
  /// `setEventsWithOriginal:`. Hands up to three events to the writer. A record without a date
  /// yields none.
  void setEventsWithOriginal(const ContactDateRecord& record);
  /// Tells of all records to come. Where several are of one date (of people kept in two stores),
  /// each of them then yields the titles that the last would leave, so that an event is written
  /// once and not changed to and fro by every run.
  void settleTitles(Records records);
  /// Calls setEventsWithOriginal for each record, and announces the following events to the writer
  /// in advance.
  void setEventsWithOriginals(Records records);
  /// The events that setEventsWithOriginal gives to the writer.
  [[nodiscard]] std::vector<ZPKCalendarItems::BasicEvent> eventsForOriginal(
      const ContactDateRecord& record) const;

 private:
  using Events = std::vector<ZPKCalendarItems::BasicEvent>;
  /// By the identifier of a date, its case folded, and day.
  using Titles = std::map<std::pair<std::string, Date>, std::string>;

  void addEvents(const ContactDateRecord& record, const Events& events);

  Platform& platform_;
  ZPKCalendarItems& thisInstance;
  std::string mainTitleString;
  Titles settledTitles_;  ///< of dates that several records are of
};

}  // namespace annivo
