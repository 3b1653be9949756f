// SPDX-License-Identifier: MIT
#include <tuple>
#include <unordered_map>

#include "base/Unicode.h"
#include "calendar/ZPKCalendarItems.h"

namespace annivo {

namespace {

/// The same for two identities that the ledger's fetch takes for one.
std::string keyOf(const std::string& myUID, const std::string& calendarUID, Date date) {
  std::string key = std::to_string(date.time_since_epoch().count());
  key += '\0';
  key += caseFolded(myUID);
  key += '\0';
  return key += caseFolded(calendarUID);
}

}  // namespace

void ZPKCalendarItems::reconcile() {
  reconciled_ = true;
  myStore.removeRemains(CalCalendarStore::Remains::damagedEvents);
  adoptCalendars();
  if (coreDataSpace->readLedger() == core_data_for_dates_AppDelegate::Ledger::missing) {
    noteFailure();
  } else {
    adoptEvents();
  }
}

/// A calendar made by the run that was cut off, before its preference was stored.
void ZPKCalendarItems::adoptCalendars() {
  const auto* domain = &platform_.standardUserDefaults().persistentDomainForName(kParentDomain);
  for (const RunMark::Calendar& made : mark_.calendars()) {
    if (!myStore.calendarWithUID(made.uid)) continue;
    const PropertyList stored = *domain ? PropertyList(**domain)[made.key] : PropertyList();
    if (stored.isEqualToString(made.uid)) continue;
    if (stored.string() && myStore.calendarWithUID(*stored.string())) continue;
    adoptedCalendars_[made.key] = made.uid;
    setDefaultUIDForType(made.uid, made.key);
  }
}

std::shared_ptr<CalCalendar> ZPKCalendarItems::adoptedCalendar(const std::string& key) {
  const auto found = adoptedCalendars_.find(key);
  return found == adoptedCalendars_.end() ? nullptr : myStore.calendarWithUID(found->second);
}

void ZPKCalendarItems::adoptEvents() {
  const auto own = myStore.eventsWithLedgerIdentity();
  const auto records = dataFetchedWithPredicate(std::nullopt);
  if (!records) return;
  std::unordered_map<std::string, NSManagedObject*> byIdentity;
  for (NSManagedObject* record : *records) {
    const auto* date = record->valueForKey("date").date();
    if (!date) continue;
    byIdentity.emplace(keyOf(record->valueForKey("myUID").stringOr(""),
                             record->valueForKey("calendarUID").stringOr(""), *date),
                       record);
  }
  for (const auto& event : own) {
    const LedgerIdentity& identity = *event->ledgerIdentity();
    NSManagedObject*& record =
        byIdentity[keyOf(identity.myUID, identity.calendarUID, identity.date)];
    if (!record) {
      // One of another home, in a calendar that both see, is not ours to keep.
      if (!myStore.calendarWithUID(identity.calendarUID)) continue;
      beginChanges();
      record = &insertRecord(identity, event->uid());
      continue;
    }
    const auto* known = record->valueForKey("iCalUID").string();
    if (known && *known == event->uid()) continue;
    beginChanges();
    if (known && eventExists(*known)) {
      removeSecondEvent(*event);
    } else {
      moc->setValueForKey(*record, event->uid(), "iCalUID");
    }
  }
  if (!coreDataSpace->saveAction()) noteFailure();
}

bool ZPKCalendarItems::eventExists(const std::string& uid) {
  return myStore.eventWithUID(uid) != nullptr;
}

/// Not where it lies on another day than the one we wrote: then somebody has made it his own.
void ZPKCalendarItems::removeSecondEvent(CalEvent& event) {
  const NSTimeZone& zone = platform_.defaultTimeZone();
  const auto dayOf = [&](Date date) {
    const CivilTime time = zone.civil(date);
    return std::tuple(time.year, time.month, time.day);
  };
  if (!event.startDate() || dayOf(*event.startDate()) != dayOf(event.ledgerIdentity()->date)) {
    return;
  }
  if (const auto removed = myStore.removeEvent(event, CalSpan::thisEvent); !removed) {
    platform_.log().write(removed.error().text());
    noteFailure(removed.error());
  }
}

}  // namespace annivo
