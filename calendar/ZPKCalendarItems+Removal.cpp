// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string_view>

#include "calendar/ZPKCalendarItems.h"
#include "run/LoggingSwitch.h"

namespace annivo {

Date ZPKCalendarItems::currentDateOffsetByYears(std::int32_t years) const {
  return NSCalendarDate(platform_.clock().now(), platform_.defaultTimeZone())
      .dateByAddingYears(years);
}

void ZPKCalendarItems::removeOtherEvents() {
  static const auto after = NSPredicateFormat::parse("(date > %@)");
  static const auto atOrBefore = NSPredicateFormat::parse("(date <= %@)");
  const Date horizon = currentDateOffsetByYears(-1);
  std::vector<std::string_view> retained(theRetainedEventUIDs.begin(), theRetainedEventUIDs.end());
  std::sort(retained.begin(), retained.end());

  logOptionally(platform_, "Deleting old events 1");
  if (const auto records = dataFetchedWithPredicate(after.with({horizon}))) {
    for (NSManagedObject* record : *records) {
      const auto* eventUID = record->valueForKey("iCalUID").string();
      if (eventUID && std::binary_search(retained.begin(), retained.end(), *eventUID)) {
        continue;
      }
      removeRecordAndEvent(*record, "Removing current event: ");
    }
  }
  logOptionally(platform_, "Deleting old events 2");
  if (const auto records = dataFetchedWithPredicate(atOrBefore.with({horizon}))) {
    for (NSManagedObject* record : *records) removeRecordAndEvent(*record, "Removing old event: ");
  }
  logOptionally(platform_, "Deleted old events");
}

void ZPKCalendarItems::removeRecordAndEvent(NSManagedObject& record, const char* logPrefix) {
  beginChanges();
  const auto* eventUID = record.valueForKey("iCalUID").string();
  const auto event = eventUID ? myStore.eventWithUID(*eventUID) : nullptr;
  if (event) {
    logOptionally(platform_, logPrefix, event->title().value_or("(null)"));
    if (const auto removed = myStore.removeEvent(*event, CalSpan::thisEvent); !removed) {
      platform_.log().write(removed.error().text());
      noteFailure(removed.error());
    }
  }
  moc->deleteObject(record);
}

void ZPKCalendarItems::logEventsThisYear(Platform& platform) {
  const NSTimeZone& zone = platform.defaultTimeZone();
  const std::int64_t year = zone.civil(platform.clock().now()).year;
  const Date start = zone.date({.year = year, .month = 1, .day = 1});
  const Date end =
      zone.date({.year = year, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59});
  CalCalendarStore& store = platform.defaultCalendarStore();
  const auto events = store.events(start, end, store.calendars());
  platform.log().write("Events this year: " + std::to_string(events.size()));
}

}  // namespace annivo
