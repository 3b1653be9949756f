// SPDX-License-Identifier: MIT
#include "calendar/Recovery.h"

#include <string_view>
#include <tuple>
#include <unordered_set>

#include "base/Unicode.h"

namespace annivo {

using Ledger = core_data_for_dates_AppDelegate::Ledger;

namespace {

/// Equal for identities that the ledger's fetch treats as one.
std::string keyOf(const LedgerIdentity& identity) {
  std::string key = std::to_string(identity.date.time_since_epoch().count());
  key += '\0';
  key += caseFolded(identity.myUID);
  key += '\0';
  return key += caseFolded(identity.calendarUID);
}

Error cannotTell(Error::Kind kind) {
  return {.kind = kind,
          .domain = "CalCalendarStoreErrorDomain",
          .description = "The event is not known to be there.",
          .failureReason = {}};
}

}  // namespace

Ledger Recovery::ledger() {
  const Ledger ledger = ledgerStore_.readLedger();
  if (reconciled_) return ledger;
  if (ledger == Ledger::damaged) {
    reconcile();
  } else if (ledger == Ledger::absent) {
    reconciled_ = true;
    adoptEvents(calendars_.calendars());
  }
  return ledger;
}

void Recovery::reconcile() {
  reconciled_ = true;
  calendars_.removeRemains();
  if (ledgerStore_.readLedger() == Ledger::missing) return mark_.noteFailure();
  adoptEvents(calendars_.calendars());
  (void)unlockedCalendars();
}

bool Recovery::takeUpUnlocked() {
  const Calendars unlocked = unlockedCalendars();
  if (unlocked.empty()) return false;
  if (ledgerStore_.readLedger() == Ledger::missing) {
    mark_.noteFailure();
  } else {
    adoptEvents(unlocked);
  }
  return true;
}

/// Those that the mark names as locked and that may be written now. It names them, and those that
/// are gone, no longer.
Recovery::Calendars Recovery::unlockedCalendars() {
  Calendars unlocked;
  for (const std::string& uid : std::vector(mark_.lockedCalendars())) {
    const auto calendar = calendars_.findCalendar(uid);
    const bool isUnlocked = calendar && (*calendar)->isEditable();
    if (isUnlocked) unlocked.push_back(*calendar);
    if (isUnlocked || (!calendar && calendar.error().kind == Error::Kind::absent)) {
      mark_.removeLockedCalendar(uid);
    }
  }
  return unlocked;
}

void Recovery::adoptEvents(const Calendars& calendars) {
  const auto own = calendars_.ownEvents(calendars);
  if (!own.complete) mark_.noteFailure();
  const auto records = records_.fetch(std::nullopt);
  if (!records) return;
  std::unordered_map<std::string, NSManagedObject*> byIdentity;
  for (NSManagedObject* record : *records) {
    if (!record->valueForKey("date").date()) continue;
    byIdentity.emplace(keyOf(EventRecords::identity(*record)), record);
  }
  for (const auto& event : own.events) {
    adoptEvent(*event, byIdentity[keyOf(*event->ledgerIdentity())]);
  }
  for (const auto& calendar : calendars) {
    unrecorded_[calendar->uid()] = {.uidByIdentity = {}, .complete = own.complete};
  }
  if (!records_.save()) mark_.noteFailure();
}

void Recovery::adoptEvent(CalEvent& event, NSManagedObject*& record) {
  const LedgerIdentity& identity = *event.ledgerIdentity();
  if (!record) {
    // One of another home, in a calendar that both see, is not ours to keep.
    if (!calendars_.calendarWithUID(identity.calendarUID)) return;
    if (!mark_.beginChanges()) return;
    record = &records_.insert(identity, event.uid());
    return;
  }
  const auto* known = EventRecords::eventUID(*record);
  if (known && *known == event.uid()) return;
  const auto recorded = known ? eventOf(*known, identity) : cannotTell(Error::Kind::absent);
  if (!recorded && recorded.error().kind != Error::Kind::absent) return mark_.noteFailure();
  if (!mark_.beginChanges()) return;
  if (recorded) {
    removeSecondEvent(event);
  } else {
    records_.setEvent(*record, event.uid());
  }
}

Result<std::shared_ptr<CalEvent>> Recovery::eventOf(const std::string& eventUID,
                                                    const LedgerIdentity& identity) {
  auto event = calendars_.findEvent(eventUID, identity);
  if (event || event.error().kind != Error::Kind::malformed) return event;
  if (!mark_.beginChanges()) return cannotTell(Error::Kind::unreadable);
  if (auto aside = calendars_.setEventAside(eventUID, identity.calendarUID); !aside) {
    platform_.log().write(aside.error().text());
    return cannotTell(Error::Kind::unreadable);
  }
  return cannotTell(Error::Kind::absent);
}

Result<std::shared_ptr<CalEvent>> Recovery::unrecordedEvent(const LedgerIdentity& identity) {
  auto known = unrecorded_.find(identity.calendarUID);
  if (known == unrecorded_.end()) {
    known = unrecorded_.emplace(identity.calendarUID, unrecordedEvents(identity.calendarUID)).first;
  }
  const auto found = known->second.uidByIdentity.find(keyOf(identity));
  if (found != known->second.uidByIdentity.end()) {
    return calendars_.findEvent(found->second, identity);
  }
  return cannotTell(known->second.complete ? Error::Kind::absent : Error::Kind::unreadable);
}

Recovery::Unrecorded Recovery::unrecordedEvents(const std::string& calendarUID) {
  const auto records = records_.fetch(std::nullopt);
  Calendars calendars = calendars_.calendars();
  std::unordered_set<std::string_view> known;
  if (records) {
    known.reserve(records->size());
    for (const NSManagedObject* record : *records) {
      if (const auto* eventUID = EventRecords::eventUID(*record)) known.insert(*eventUID);
    }
    const auto calendar = calendars_.findCalendar(calendarUID);
    calendars.clear();
    if (calendar) calendars.push_back(*calendar);
  }
  const auto own =
      calendars_.ownEvents(calendars, [&](const std::string& uid) { return known.contains(uid); });
  Unrecorded unrecorded{.uidByIdentity = {}, .complete = own.complete};
  for (const auto& event : own.events) {
    if (known.contains(event->uid())) continue;
    unrecorded.uidByIdentity.emplace(keyOf(*event->ledgerIdentity()), event->uid());
  }
  return unrecorded;
}

/// An event that was moved to another day is the user's.
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
