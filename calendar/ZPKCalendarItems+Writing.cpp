// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>

#include "calendar/AlarmKind.h"
#include "calendar/ZPKCalendarItems.h"
#include "platform/LoggingSwitch.h"

namespace annivo {

namespace {

/// The limit in bytes for one event's texts. Within it, file and record stay readable however the
/// texts have to be encoded.
constexpr std::size_t kLongestTexts = std::size_t{64} * 1024;

bool containsAll(const std::vector<CalAlarm>& alarms, const std::vector<CalAlarm>& wanted) {
  return std::all_of(wanted.begin(), wanted.end(), [&](const CalAlarm& alarm) {
    return std::find(alarms.begin(), alarms.end(), alarm) != alarms.end();
  });
}

}  // namespace

void ZPKCalendarItems::initAlarmArray() { alarmArray_.clear(); }

void ZPKCalendarItems::addAlarm(const Alarm& alarm) {
  CalAlarm added;
  added.relativeTrigger = alarm.relativeTrigger;
  switch (alarmKindOf(alarm.kind).value_or(AlarmKind::message)) {
    case AlarmKind::email:
      added.emailAddress = alarm.emailAddress;
      break;
    case AlarmKind::openFile:
      if (isFileURL(alarm.URL)) added.url = alarm.URL;
      break;
    case AlarmKind::sound:
      added.sound = alarm.sound;
      break;
    case AlarmKind::message:
    case AlarmKind::none:
      break;
  }
  alarmArray_.push_back(std::move(added));
}

const std::string& ZPKCalendarItems::thisCalendarUID() const {
  static const std::string kNone;
  return thisCalendar_ ? thisCalendar_->uid() : kNone;
}

std::optional<EventRecords::Records> ZPKCalendarItems::recordsOf(const std::string& uid,
                                                                 Date date) {
  recovery_.ledger();
  return records_.find({uid, thisCalendarUID(), date});
}

const std::string* ZPKCalendarItems::recordedEventUID(const BasicEvent& basic) {
  const auto records = recordsOf(basic.uid, basic.withStartDate);
  if (!records || records->empty()) return nullptr;
  return EventRecords::eventUID(*records->front());
}

std::shared_ptr<CalEvent> ZPKCalendarItems::findEventWithIDOnDate(const std::string& uid,
                                                                  Date date) {
  const LedgerIdentity identity{uid, thisCalendarUID(), date};
  const auto records = recordsOf(uid, date);
  // Without a ledger only the calendars can tell that the event is there already.
  if (!records) return unrecordedOrBlankEvent(identity);
  if (records->empty()) {
    logOptionally(platform_, "Event not found");
    auto event = unrecordedOrBlankEvent(identity);
    if (event) records_.insert(identity, event->uid());
    return event;
  }
  NSManagedObject& record = *records->front();
  const auto* eventUID = EventRecords::eventUID(record);
  if (!eventUID) return CalEvent::event();
  auto event = recovery_.eventOf(*eventUID, identity);
  if (event) {
    logOptionally(platform_, "Event already in");
    return *event;
  }
  if (event.error().kind != Error::Kind::absent) {
    theRetainedEventUIDs.push_back(*eventUID);
    mark_.noteFailure();
    return nullptr;
  }
  logOptionally(platform_, "Event not in calendar");
  auto other = unrecordedOrBlankEvent(identity);
  if (other) records_.setEvent(record, other->uid());
  return other;
}

/// An event for an occurrence of which the ledger knows none; null when it cannot be told whether
/// there is one.
std::shared_ptr<CalEvent> ZPKCalendarItems::unrecordedOrBlankEvent(const LedgerIdentity& identity) {
  auto unrecorded = recovery_.unrecordedEvent(identity);
  if (unrecorded) {
    logOptionally(platform_, "Event already in");
    if (!mark_.beginChanges()) return nullptr;  // The record is a change.
    return *std::move(unrecorded);
  }
  if (unrecorded.error().kind == Error::Kind::absent) return CalEvent::event();
  mark_.noteFailure();
  return nullptr;
}

void ZPKCalendarItems::expectBasicEvents(const std::vector<std::vector<BasicEvent>>& events) {
  // The first fetch may present an error about the ledger; it should appear with the first event.
  if (!thisCalendar_ || !coreDataSpace->hasLedger()) return;
  std::vector<std::string> uids;
  for (const auto& ofOneDate : events) {
    for (const BasicEvent& event : ofOneDate) {
      if (const auto* eventUID = recordedEventUID(event)) uids.push_back(*eventUID);
    }
  }
  myStore.readAhead(*thisCalendar_, std::move(uids));
}

void ZPKCalendarItems::addBasicEvent(const BasicEvent& basic) {
  logOptionally(platform_, "Checking for event '", basic.title, "'.");
  // What the removal takes out at the end of this run in any case is not written before. Such are,
  // on 28 February of a leap year, the last occurrences of those born on a 29th.
  if (!horizon_) horizon_ = currentDateOffsetByYears(-1);
  if (basic.withStartDate <= *horizon_) return;
  if (basic.title.size() + basic.url.size() + basic.uid.size() > kLongestTexts) {
    return refuseEvent(basic);
  }
  const auto event = findEventWithIDOnDate(basic.uid, basic.withStartDate);
  if (!event) return;
  bool changed = true;
  if (event->title()) {
    changed = updateExistingEvent(*event, basic.title);
  } else {
    fillNewEvent(*event, basic);
  }
  if (changed) saveEvent(*event);
  theRetainedEventUIDs.push_back(event->uid());
}

/// An event that could not be read back from ledger and calendar is not written. An existing event
/// stays as it is.
void ZPKCalendarItems::refuseEvent(const BasicEvent& basic) {
  if (const auto* eventUID = recordedEventUID(basic)) theRetainedEventUIDs.push_back(*eventUID);
  platform_.application().runAlertWithError(
      {.kind = Error::Kind::refused,
       .domain = "CalCalendarStoreErrorDomain",
       .description = "An event of " + describe(basic.withStartDate) + " cannot be saved.",
       .failureReason = "Its title, its link and the identifier of its date are longer than " +
                        std::to_string(kLongestTexts) + " bytes."});
}

/// Whether the event is to be saved.
bool ZPKCalendarItems::updateExistingEvent(CalEvent& event, const std::string& title) {
  bool changed = false;
  if (*event.title() != title) {
    event.setTitle(title);
    changed = true;
    logOptionally(platform_, "Title changed");
  }
  if (alarmArray_.empty()) {
    if (event.alarms().empty()) return changed;
    event.setAlarms({});
    logOptionally(platform_, "Alarm added 1");
    return true;
  }
  if (containsAll(event.alarms(), alarmArray_)) return changed;
  event.setAlarms(alarmArray_);
  logOptionally(platform_, "Alarm added 2");
  return true;
}

void ZPKCalendarItems::fillNewEvent(CalEvent& event, const BasicEvent& basic) {
  event.setTitle(basic.title);
  event.setCalendar(thisCalendar_);
  event.setStartDate(basic.withStartDate);
  event.setEndDate(basic.endDate);
  event.setIsAllDay(basic.allDay);
  event.setUrl(urlWithString(basic.url));
  event.setLedgerIdentity({basic.uid, thisCalendarUID(), basic.withStartDate});
  event.addAlarms(alarmArray_);
  if (event.alarms().size() != alarmArray_.size()) {
    const CalAlarm first = event.alarms().front();
    event.removeAlarm(first);
  }
}

void ZPKCalendarItems::saveEvent(CalEvent& event) {
  logOptionally(platform_, "Updating event: ", event.title().value_or("(null)"));
  if (!mark_.beginChanges()) return;
  const bool recorded = recovery_.ledger() != core_data_for_dates_AppDelegate::Ledger::missing &&
                        !coreDataSpace->isTemporary();
  if (!records_.save() || !recorded) mark_.noteFailure();
  if (const auto saved = myStore.saveEvent(event, CalSpan::thisEvent); !saved) {
    mark_.noteFailure(saved.error());
    platform_.application().runAlertWithError(saved.error());
  }
}

}  // namespace annivo
