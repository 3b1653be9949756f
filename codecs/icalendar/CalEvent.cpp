// SPDX-License-Identifier: MIT
#include "codecs/icalendar/CalEvent.h"

#include <algorithm>
#include <utility>

#include "codecs/icalendar/ContentValues.h"
#include "codecs/icalendar/EventUID.h"

namespace annivo {

std::shared_ptr<CalEvent> CalEvent::event() { return std::make_shared<CalEvent>(); }

const std::string& CalEvent::uid() const {
  if (uid_.empty()) uid_ = freshEventUID();
  return uid_;
}

void CalEvent::setTitle(std::string title) {
  title_ = std::move(title);
  changes_ |= kTitle;
}

void CalEvent::setCalendar(std::shared_ptr<CalCalendar> calendar) {
  calendar_ = std::move(calendar);
  changes_ |= kCalendar;
}

void CalEvent::setStartDate(Date date) {
  start_ = date;
  changes_ |= kStart;
}

void CalEvent::setEndDate(Date date) {
  end_ = date;
  changes_ |= kEnd;
}

void CalEvent::setIsAllDay(bool allDay) {
  allDay_ = allDay;
  changes_ |= kAllDay;
}

void CalEvent::setUrl(std::optional<std::string> url) {
  url_ = std::move(url);
  changes_ |= kUrl;
}

void CalEvent::addAlarms(const std::vector<CalAlarm>& alarms) {
  if (alarms.empty()) return;
  alarms_.insert(alarms_.end(), alarms.begin(), alarms.end());
  changes_ |= kAlarms;
}

void CalEvent::setAlarms(std::vector<CalAlarm> alarms) {
  alarms_ = std::move(alarms);
  keptAlarms_ = 0;
  removedAlarms_.clear();
  replacesAlarms_ = true;
  changes_ |= kAlarms;
}

void CalEvent::removeAlarm(const CalAlarm& alarm) {
  const auto found = std::find(alarms_.begin(), alarms_.end(), alarm);
  if (found == alarms_.end()) return;
  if (static_cast<std::size_t>(found - alarms_.begin()) < keptAlarms_) {
    removedAlarms_.push_back(*found);
    --keptAlarms_;
  }
  alarms_.erase(found);
  changes_ |= kAlarms;
}

const std::optional<LedgerIdentity>& CalEvent::ledgerIdentity() const {
  if (!identityText_.empty()) {
    auto value = identityFromText(std::exchange(identityText_, {}));
    if (value && value->eventUID == uid()) identity_ = std::move(value->identity);
  }
  return identity_;
}

void CalEvent::setLedgerIdentity(LedgerIdentity identity) {
  identityText_.clear();
  identity_ = std::move(identity);
  changes_ |= kIdentity;
}

}  // namespace annivo
