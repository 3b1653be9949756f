// SPDX-License-Identifier: MIT
#include "format/ZPKAnvCCalendarItemsFormat.h"

#include <algorithm>

#include "base/Unicode.h"
#include "calendar/AlarmKind.h"
#include "format/AlarmTrigger.h"
#include "format/Occurrences.h"
#include "platform/LoggingSwitch.h"

namespace annivo {

ZPKAnvCCalendarItemsFormat::ZPKAnvCCalendarItemsFormat(Platform& platform, ZPKCalendarItems& target,
                                                       const std::vector<std::string>& titleFormat)
    : platform_(platform), thisInstance(target), mainTitleString(masterTitle(titleFormat)) {}

void ZPKAnvCCalendarItemsFormat::setAlarmsWithDataForType(const PropertyList& preferences,
                                                          CalendarType type) {
  thisInstance.initAlarmArray();
  const auto* rows = preferences[keys::kAlarmTable].array();
  if (!rows) return;
  const auto* path = preferences[keys::kAlarmFilePath].string();
  const std::string url = path ? fileURLWithPath(*path) : "";
  for (const auto& row : *rows) {
    if (row[keys::kRowType].isEqualToString(storedText(AlarmKind::none)) ||
        !row[textsOf(type).word].isTheTrueObject())
      continue;
    thisInstance.addAlarm(
        {.kind = row[keys::kRowType].stringOr(""),
         .emailAddress = preferences[keys::kSetEmail].stringOr(""),
         .relativeTrigger = triggerIntervalFromDaysAndHours(
             row[keys::kRowDays], row[keys::kRowTime], platform_.defaultTimeZone()),
         .sound = preferences[keys::kSelectedSystemSound].stringOr(""),
         .URL = url});
  }
}

void ZPKAnvCCalendarItemsFormat::setEventsWithOriginal(const ContactDateRecord& record) {
  addEvents(record, eventsForOriginal(record));
}

void ZPKAnvCCalendarItemsFormat::setEventsWithOriginals(Records records) {
  // Large enough to pay for the hand-over, small enough to hold in memory.
  constexpr std::size_t kAtOnce = 256;
  const auto taken = [&] {
    const Records first = records.first(std::min(kAtOnce, records.size()));
    records = records.subspan(first.size());
    return first;
  };
  const auto eventsOf = [&](Records some) {
    std::vector<Events> events;
    events.reserve(some.size());
    for (const ContactDateRecord& record : some) events.push_back(eventsForOriginal(record));
    return events;
  };
  Records current = taken();
  std::vector<Events> events = eventsOf(current);
  while (!current.empty()) {
    const Records next = taken();
    std::vector<Events> expected = eventsOf(next);
    thisInstance.expectBasicEvents(expected);
    for (std::size_t i = 0; i < current.size(); ++i) addEvents(current[i], events[i]);
    current = next;
    events = std::move(expected);
  }
}

void ZPKAnvCCalendarItemsFormat::settleTitles(Records records) {
  settledTitles_.clear();
  std::vector<std::size_t> hashes;
  hashes.reserve(records.size());
  for (const ContactDateRecord& record : records) hashes.push_back(caseFoldedHash(record.dateUID));
  std::vector<std::size_t> sorted = hashes;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) return;
  Titles last;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto [first, end] = std::equal_range(sorted.begin(), sorted.end(), hashes[i]);
    if (end - first < 2) continue;
    for (auto& event : eventsForOriginal(records[i])) {
      last[{caseFolded(event.uid), event.withStartDate}] = std::move(event.title);
    }
  }
  settledTitles_ = std::move(last);
}

void ZPKAnvCCalendarItemsFormat::addEvents(const ContactDateRecord& record, const Events& events) {
  if (!record.thisDate) {
    logOptionally(platform_, "No date in the record ", record.dateUID);
    return;
  }
  for (const auto& event : events) thisInstance.addBasicEvent(event);
}

std::vector<ZPKCalendarItems::BasicEvent> ZPKAnvCCalendarItemsFormat::eventsForOriginal(
    const ContactDateRecord& record) const {
  std::vector<ZPKCalendarItems::BasicEvent> events;
  if (!record.thisDate) return events;
  const auto& zone = platform_.defaultTimeZone();
  const Date now = platform_.clock().now();
  const std::string base = baseTitle(mainTitleString, record, yearText(*record.thisDate, zone),
                                     platform_.localizedString(record.dateType, ""));
  const auto& language = platform_.preferredLanguages().front();
  const auto all = occurrences(*record.thisDate, now, zone);
  events.reserve(all.size());
  for (const auto& [age, date] : all) {
    events.push_back({.title = titleForAge(base, age, language),
                      .withStartDate = date,
                      .endDate = date,
                      .allDay = true,
                      .notes = "",
                      .location = std::nullopt,
                      .url = "addressbook://" + record.personUID,
                      .uid = record.dateUID});
    if (settledTitles_.empty()) continue;
    const auto settled = settledTitles_.find({caseFolded(record.dateUID), date});
    if (settled != settledTitles_.end()) events.back().title = settled->second;
  }
  return events;
}

}  // namespace annivo
