// SPDX-License-Identifier: MIT
#include "calendar/Recovery.h"

#include <tuple>
#include <unordered_map>

#include "base/Unicode.h"

namespace annivo {

using Ledger = core_data_for_dates_AppDelegate::Ledger;

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

Ledger Recovery::ledger() {
  const Ledger ledger = ledgerStore_.readLedger();
  if (reconciled_) return ledger;
  if (ledger == Ledger::damaged) {
    reconcile();
  } else if (ledger == Ledger::absent) {
    reconciled_ = true;
    adoptEvents();
  }
  return ledger;
}

void Recovery::reconcile() {
  reconciled_ = true;
  calendars_.removeRemains(CalCalendarStore::Remains::damagedEvents);
  if (ledgerStore_.readLedger() == Ledger::missing) {
    mark_.noteFailure();
  } else {
    adoptEvents();
  }
}

void Recovery::adoptEvents() {
  const auto own = calendars_.eventsWithLedgerIdentity();
  const auto records = records_.fetch(std::nullopt);
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
      if (!calendars_.calendarWithUID(identity.calendarUID)) continue;
      if (!mark_.beginChanges()) return;
      record = &records_.insert(identity, event->uid());
      continue;
    }
    const auto* known = EventRecords::eventUID(*record);
    if (known && *known == event->uid()) continue;
    if (!mark_.beginChanges()) return;
    if (known && eventExists(*known)) {
      removeSecondEvent(*event);
    } else {
      records_.setEvent(*record, event->uid());
    }
  }
  if (!records_.save()) mark_.noteFailure();
}

bool Recovery::eventExists(const std::string& uid) {
  return calendars_.eventWithUID(uid) != nullptr;
}

/// Not where it lies on another day than the one we wrote: then somebody has made it his own.
void Recovery::removeSecondEvent(CalEvent& event) {
  const NSTimeZone& zone = platform_.defaultTimeZone();
  const auto dayOf = [&](Date date) {
    const CivilTime time = zone.civil(date);
    return std::tuple(time.year, time.month, time.day);
  };
  if (!event.startDate() || dayOf(*event.startDate()) != dayOf(event.ledgerIdentity()->date)) {
    return;
  }
  if (const auto removed = calendars_.removeEvent(event, CalSpan::thisEvent); !removed) {
    platform_.log().write(removed.error().text());
    mark_.noteFailure(removed.error());
  }
}

}  // namespace annivo
