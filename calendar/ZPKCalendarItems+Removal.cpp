// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string_view>

#include "base/Unicode.h"
#include "calendar/ZPKCalendarItems.h"
#include "platform/LoggingSwitch.h"

namespace annivo {

namespace {

/// Answers whether a UID is in a list. UIDs asked for roughly in the list's order, as the ledger
/// gives them, are found without a search.
class RetainedUIDs {
 public:
  explicit RetainedUIDs(const std::vector<std::string>& list) : list_(list), next_(list.begin()) {}

  bool contains(const std::string& uid) {
    constexpr std::ptrdiff_t kNear = 4;
    const auto near = next_ + std::min(kNear, list_.end() - next_);
    if (const auto found = std::find(next_, near, uid); found != near) {
      next_ = found + 1;
      return true;
    }
    if (sorted_.empty()) {
      sorted_.assign(list_.begin(), list_.end());
      std::sort(sorted_.begin(), sorted_.end());
    }
    return std::binary_search(sorted_.begin(), sorted_.end(), uid);
  }

 private:
  const std::vector<std::string>& list_;
  std::vector<std::string>::const_iterator next_;
  std::vector<std::string_view> sorted_;
};

}  // namespace

Date ZPKCalendarItems::currentDateOffsetByYears(std::int32_t years) const {
  return NSCalendarDate(platform_.clock().now(), platform_.defaultTimeZone())
      .dateByAddingYears(years);
}

void ZPKCalendarItems::confirmEventsOfDatesNotIn(const std::unordered_set<std::string>& dateUIDs) {
  mark_.noteFailure();
  const auto records = dataFetchedWithPredicate(std::nullopt);
  if (!records) return;
  std::unordered_set<std::string> read;  // In the form in which the ledger compares them.
  for (const std::string& uid : dateUIDs) read.insert(caseFolded(uid));
  for (const NSManagedObject* record : *records) {
    const auto* eventUID = EventRecords::eventUID(*record);
    if (!eventUID || read.contains(caseFolded(record->valueForKey("myUID").stringOr("")))) continue;
    theRetainedEventUIDs.push_back(*eventUID);
  }
}

void ZPKCalendarItems::removeOtherEvents() {
  static const auto after = NSPredicateFormat::parse("(date > %@)");
  static const auto atOrBefore = NSPredicateFormat::parse("(date <= %@)");
  // Not before the one by which events were left out: at the end of a 28 February a year ago is
  // later than at the beginning of a 29th.
  const Date horizon = std::max(currentDateOffsetByYears(-1), horizon_.value_or(kEarliestDate));
  RetainedUIDs retained(theRetainedEventUIDs);

  logOptionally(platform_, "Deleting old events 1");
  if (const auto records = dataFetchedWithPredicate(after.with({horizon}))) {
    for (NSManagedObject* record : *records) {
      const auto* eventUID = EventRecords::eventUID(*record);
      if (eventUID && retained.contains(*eventUID)) continue;
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
  if (const auto* eventUID = EventRecords::eventUID(record)) {
    const auto event = recovery_.eventOf(*eventUID, EventRecords::identity(record));
    // What may be there and cannot be read stays, and its record with it.
    if (!event && event.error().kind != Error::Kind::absent) return mark_.noteFailure();
    if (!mark_.beginChanges()) return;
    if (event) {
      logOptionally(platform_, logPrefix, (*event)->title().value_or("(null)"));
      if (!removeEvent(**event)) return;
    }
  }
  if (!mark_.beginChanges()) return;
  records_.remove(record);
}

/// Whether the event's record may go: also where the event stays, if its file says whose it is.
bool ZPKCalendarItems::removeEvent(CalEvent& event) {
  const auto removed = myStore.removeEvent(event, CalSpan::thisEvent);
  if (removed) return true;
  platform_.log().write(removed.error().text());
  if (event.calendar()->isEditable()) {
    mark_.noteFailure(removed.error());
  } else {
    mark_.addLockedCalendar(event.calendar()->uid());
  }
  return event.ledgerIdentity().has_value();
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
