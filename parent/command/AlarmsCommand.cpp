// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/settings/AlarmTable.h"
#include "parent/settings/Words.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

void alarmsCommand(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  const auto alarms =
      listedAlarms(prefs.prefs()[keys::kAlarmTable], session.platform.defaultTimeZone());
  const Console& console = session.console;
  if (console.json) return console.writeJSON(alarmsFact(alarms));
  for (const ListedAlarm& alarm : alarms) {
    console.line(std::to_string(alarm.number) + "  " + printable(alarmText(alarm)));
  }
  if (alarms.empty()) {
    console.line(translated("No alarms: \"annivo alarms add message --days 2\" adds one."));
  }
}

void addAlarmCommand(CommandSession& session, const NewAlarm& alarm) {
  AnvCalPrefs prefs(session.platform);
  const PropertyList& stored = prefs.prefs()[keys::kAlarmTable];
  const auto table =
      withAlarm(stored,
                {.kind = alarmWord(alarm.kind),
                 .days = alarm.days,
                 .time = alarm.time,
                 .birthdays = includes(alarm.dates, CalendarType::birthdays),
                 .anniversaries = includes(alarm.dates, CalendarType::anniversaries)},
                session.platform.clock().now(), session.platform.defaultTimeZone());
  if (!table) throw Refusal{table.error().description};
  if (*table == stored) {
    session.console.note(translated("There is such an alarm already; nothing is added."));
  } else {
    storeChoices(session, {{keys::kAlarmTable, *table}});
  }
  alarmsCommand(session);
}

void removeAlarmCommand(CommandSession& session, int number) {
  AnvCalPrefs prefs(session.platform);
  const auto table = withoutAlarm(prefs.prefs()[keys::kAlarmTable], number);
  if (!table) throw Refusal{table.error().description};
  storeChoices(session, {{keys::kAlarmTable, *table}});
  alarmsCommand(session);
}

}  // namespace annivo
