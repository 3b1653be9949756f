// SPDX-License-Identifier: MIT
#include "parent/settings/AlarmTable.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <optional>
#include <utility>

#include "base/Reason.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

constexpr std::size_t kRows = 5;
constexpr int kMostDays = 3650;

std::string shownKind(const std::string& stored) {
  const auto kind = alarmKindOf(stored);
  return kind && stored == storedText(*kind) ? alarmWord(*kind) : stored;
}

/// "8:05" as hour and minute.
std::optional<std::pair<int, int>> parseTime(const std::string& text) {
  int hour = 0;
  int minute = 0;
  int used = 0;
  if (std::sscanf(text.c_str(), "%2d:%2d%n", &hour, &minute, &used) != 2 ||
      static_cast<std::size_t>(used) != text.size() || std::isdigit(text[0]) == 0 || hour > 23 ||
      minute < 0 || minute > 59) {
    return std::nullopt;
  }
  return std::pair(hour, minute);
}

bool isFree(const PropertyList& row) {
  return row[keys::kRowType].isNil() ||
         row[keys::kRowType].isEqualToString(storedText(AlarmKind::none));
}

PropertyList::Array rowsOf(const PropertyList& table) {
  return table.array() ? *table.array() : PropertyList::Array();
}

PropertyList freeRow(const PropertyList& time) {
  return PropertyList::Dictionary{{keys::kRowType, storedText(AlarmKind::none)},
                                  {keys::kRowDays, "0"},
                                  {keys::kRowTime, time},
                                  {keys::kRowBirth, false},
                                  {keys::kRowAnni, false}};
}

}  // namespace

const char* alarmWord(AlarmKind kind) {
  switch (kind) {
    case AlarmKind::message:
      return "message";
    case AlarmKind::email:
      return "email";
    case AlarmKind::sound:
      return "sound";
    case AlarmKind::openFile:
      return "file";
    case AlarmKind::none:
      break;
  }
  return "none";
}

std::optional<AlarmKind> alarmKindOfWord(std::string_view word) {
  for (const AlarmKind kind : kAlarmKinds) {
    if (word == alarmWord(kind)) return kind;
  }
  return std::nullopt;
}

std::vector<std::string> alarmWords() {
  std::vector<std::string> words;
  for (const AlarmKind kind : kAlarmKinds) words.emplace_back(alarmWord(kind));
  return words;
}

std::vector<ListedAlarm> listedAlarms(const PropertyList& table, const NSTimeZone& zone) {
  std::vector<ListedAlarm> alarms;
  int number = 0;
  for (const PropertyList& row : rowsOf(table)) {
    ++number;
    if (isFree(row)) continue;
    std::string time;
    if (row[keys::kRowTime].date()) {
      const CivilTime civil = zone.civil(*row[keys::kRowTime].date());
      std::array<char, 16> text{};
      std::snprintf(text.data(), text.size(), "%02d:%02d", civil.hour, civil.minute);
      time = text.data();
    }
    alarms.push_back({.number = number,
                      .kind = shownKind(row[keys::kRowType].stringOr("")),
                      .days = row[keys::kRowDays].intValue(),
                      .time = time,
                      .birthdays = row[keys::kRowBirth].isTheTrueObject(),
                      .anniversaries = row[keys::kRowAnni].isTheTrueObject()});
  }
  return alarms;
}

Result<PropertyList> withAlarm(const PropertyList& table, const ListedAlarm& alarm, Date now,
                               const NSTimeZone& zone) {
  const auto kind = alarmKindOfWord(alarm.kind);
  if (!kind) {
    return reason(translated("there is no alarm \"{1}\"; there are {2}", alarm.kind,
                             listedAll(alarmWords())));
  }
  const auto time = parseTime(alarm.time);
  if (!time) return reason(translated("\"{1}\" is no time of day such as 08:00", alarm.time));
  if (alarm.days < 0 || alarm.days > kMostDays) {
    return reason(translated("an alarm comes 0 to 3650 days before the date"));
  }
  for (const ListedAlarm& there : listedAlarms(table, zone)) {
    if (there.kind == alarm.kind && there.days == alarm.days && parseTime(there.time) == time &&
        there.birthdays >= alarm.birthdays && there.anniversaries >= alarm.anniversaries) {
      return table;
    }
  }
  const CivilTime today = zone.civil(now);
  const PropertyList moment = zone.date({.year = today.year,
                                         .month = today.month,
                                         .day = today.day,
                                         .hour = time->first,
                                         .minute = time->second});
  PropertyList::Array rows = rowsOf(table);
  while (rows.size() < kRows) rows.push_back(freeRow(moment));
  for (PropertyList& row : rows) {
    if (!isFree(row)) continue;
    row = PropertyList::Dictionary{{keys::kRowType, storedText(*kind)},
                                   {keys::kRowDays, std::to_string(alarm.days)},
                                   {keys::kRowTime, moment},
                                   {keys::kRowBirth, alarm.birthdays},
                                   {keys::kRowAnni, alarm.anniversaries}};
    return PropertyList(rows);
  }
  return reason(
      translated("all five alarms are in use; \"annivo alarms remove NUMBER\" frees one"));
}

Result<PropertyList> withoutAlarm(const PropertyList& table, int number) {
  PropertyList::Array rows = rowsOf(table);
  if (number < 1 || static_cast<std::size_t>(number) > rows.size() ||
      isFree(rows[static_cast<std::size_t>(number) - 1])) {
    return reason(translated("there is no alarm {1}; \"annivo alarms\" lists those there are",
                             std::to_string(number)));
  }
  PropertyList& row = rows[static_cast<std::size_t>(number) - 1];
  row = freeRow(row[keys::kRowTime]);
  return PropertyList(rows);
}

std::string alarmTime(std::int64_t daysBefore, const std::string& time) {
  if (daysBefore == 0) return translated("on the day at {1}", time);
  // TRANSLATORS: when an alarm comes: {1} is the number of days, {2} a time of day.
  if (daysBefore > 0) {
    return counted(static_cast<std::size_t>(daysBefore), "{1} day before at {2}",
                   "{1} days before at {2}", time);
  }
  return counted(static_cast<std::size_t>(-daysBefore), "{1} day after at {2}",
                 "{1} days after at {2}", time);
}

std::string alarmText(const ListedAlarm& alarm) {
  const std::string when = alarmTime(alarm.days, alarm.time);
  // TRANSLATORS: {1} is "message", "email", "sound" or "file", {2} "2 days before at 08:00".
  if (alarm.birthdays && alarm.anniversaries) {
    return translated("{1} {2}, for birthdays and anniversaries", alarm.kind, when);
  }
  if (alarm.birthdays) return translated("{1} {2}, for birthdays", alarm.kind, when);
  if (alarm.anniversaries) return translated("{1} {2}, for anniversaries", alarm.kind, when);
  return translated("{1} {2}, for nothing", alarm.kind, when);
}

PropertyList alarmsFact(const std::vector<ListedAlarm>& alarms) {
  PropertyList::Array list;
  for (const ListedAlarm& alarm : alarms) {
    list.push_back(PropertyList::Dictionary{{"number", alarm.number},
                                            {"kind", alarm.kind},
                                            {"days", alarm.days},
                                            {"time", alarm.time},
                                            {"birthdays", alarm.birthdays},
                                            {"anniversaries", alarm.anniversaries}});
  }
  return list;
}

}  // namespace annivo
