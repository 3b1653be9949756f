// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <cstdio>

#include "parent/command/Commands.h"
#include "parent/runs/OurEvents.h"
#include "parent/settings/AlarmTable.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

/// Midnight of "2026-06-10" in the person's zone.
Date parseDay(const std::string& text, const NSTimeZone& zone) {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int used = 0;
  const bool formed = std::sscanf(text.c_str(), "%4d-%2u-%2u%n", &year, &month, &day, &used) == 3 &&
                      static_cast<std::size_t>(used) == text.size();
  const std::chrono::year_month_day civil{std::chrono::year(year), std::chrono::month(month),
                                          std::chrono::day(day)};
  if (!formed || year < 1 || !civil.ok()) {
    throw Refusal{translated("\"{1}\" is no day such as 2026-06-10", text)};
  }
  return zone.date({.year = year, .month = static_cast<int>(month), .day = static_cast<int>(day)});
}

std::string triggerText(double seconds) {
  if (seconds == 0) return translated("at the start of the day");
  const auto whole = static_cast<std::int64_t>(seconds);
  // The day before the event's on which the alarm falls, and its time of day.
  std::int64_t days = whole / 86400;
  std::int64_t time = whole % 86400;
  if (time < 0) {
    time += 86400;
    --days;
  }
  char clock[16];
  std::snprintf(clock, sizeof clock, "%02d:%02d", static_cast<int>(time / 3600),
                static_cast<int>(time / 60 % 60));
  return alarmTime(-days, clock);
}

std::string alarmText(const CalAlarm& alarm) {
  std::string kind = alarmWord(alarmKindOf(alarm));
  if (!alarm.relativeTrigger) return kind;
  // TRANSLATORS: {1} is "message", "email", "sound" or "file", {2} "2 days before at 08:00".
  return translated("{1} {2}", kind, triggerText(*alarm.relativeTrigger));
}

PropertyList alarmFact(const CalAlarm& alarm) {
  return PropertyList::Dictionary{
      {"kind", alarmWord(alarmKindOf(alarm))},
      {"seconds", alarm.relativeTrigger ? PropertyList(*alarm.relativeTrigger) : PropertyList()}};
}

}  // namespace

void listCommand(CommandSession& session, const std::optional<std::string>& from, int days) {
  Platform& platform = session.platform;
  const NSTimeZone& zone = platform.defaultTimeZone();
  if (days < 1 || days > 36500) throw Refusal{translated("give 1 to 36500 days")};
  CivilTime day = zone.civil(from ? parseDay(*from, zone) : platform.clock().now());
  day = {.year = day.year, .month = day.month, .day = day.day};
  const Date start = zone.date(day);
  day.day += days;
  const Date end = zone.date(day) - std::chrono::seconds(1);

  CalCalendarStore& store = platform.defaultCalendarStore();
  auto events = store.events(start, end, store.calendars());
  OurEvents ours(platform, {&platform.fileManager()});
  // An event of the day before ends at the first moment asked for.
  std::erase_if(events, [&](const auto& event) {
    return !ours.contains(*event) || event->startDate() < start;
  });
  std::stable_sort(events.begin(), events.end(), [](const auto& left, const auto& right) {
    return std::pair(left->startDate(), left->title()) <
           std::pair(right->startDate(), right->title());
  });

  const Console& console = session.console;
  PropertyList::Array values;
  std::vector<std::vector<std::string>> rows{
      {translated("DATE"), translated("EVENT"), translated("CALENDAR"), translated("ALARMS")}};
  for (const auto& event : events) {
    PropertyList::Array alarmValues;
    std::vector<std::string> alarms;
    for (const CalAlarm& alarm : event->alarms()) {
      alarms.push_back(alarmText(alarm));
      alarmValues.push_back(alarmFact(alarm));
    }
    const auto date = event->startDate();
    const std::string title = event->title().value_or("");
    const std::string calendar = event->calendar() ? event->calendar()->title() : "";
    rows.push_back({date ? shownDay(*date, zone) : "", title, calendar, listedPhrases(alarms)});
    values.push_back(PropertyList::Dictionary{{"date", date ? isoDay(*date, zone) : ""},
                                              {"title", title},
                                              {"calendar", calendar},
                                              {"alarms", alarmValues},
                                              {"uid", event->uid()}});
  }
  if (console.json) return console.writeJSON(values);
  if (!events.empty()) console.table(rows);
  console.line(counted(events.size(), "{1} event.", "{1} events."));
}

}  // namespace annivo
