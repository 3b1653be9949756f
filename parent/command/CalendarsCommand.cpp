// SPDX-License-Identifier: MIT
#include "base/Unicode.h"
#include "parent/command/Commands.h"
#include "parent/runs/ServiceUnits.h"
#include "parent/settings/ChosenCalendars.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

using Calendar = std::shared_ptr<CalCalendar>;

bool is(const std::optional<ChosenCalendar>& chosen, const std::string& uid) {
  return chosen && chosen->uid == uid;
}

std::string usedFor(const ChosenCalendars& chosen, const std::string& uid) {
  const bool birthdays = is(chosen.birthdays, uid);
  const bool anniversaries = is(chosen.anniversaries, uid);
  if (birthdays && anniversaries) return "birthdays, anniversaries";
  return birthdays ? "birthdays" : anniversaries ? "anniversaries" : "";
}

}  // namespace

void calendarsCommand(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  const ChosenCalendars chosen = chosenCalendars(prefs);
  const auto& calendars = session.platform.defaultCalendarStore().calendars();
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Array list;
    for (const Calendar& calendar : calendars) {
      list.push_back(
          PropertyList::Dictionary{{"title", calendar->title()},
                                   {"uid", calendar->uid()},
                                   {"editable", calendar->isEditable()},
                                   {"birthdays", is(chosen.birthdays, calendar->uid())},
                                   {"anniversaries", is(chosen.anniversaries, calendar->uid())}});
    }
    return console.writeJSON(list);
  }
  std::vector<std::vector<std::string>> rows{{"CALENDAR", "USED FOR", "WRITABLE", "UID"}};
  for (const Calendar& calendar : calendars) {
    rows.push_back({calendar->title(), usedFor(chosen, calendar->uid()),
                    calendar->isEditable() ? "yes" : "no", calendar->uid()});
  }
  if (!calendars.empty()) console.table(rows);
  console.line(counted(calendars.size(), "calendar", "calendars") + '.');
  if (!chosen.birthdays && !chosen.anniversaries) {
    console.line(
        "None is chosen, so no event is written: \"annivo calendars choose both CALENDAR\".");
  }
}

void chooseCalendarCommand(CommandSession& session, DateKind kind, const std::string& calendar) {
  const Calendar found = chooseCalendar(session, kind, calendar);
  session.console.note("The calendar for " + dateKindText(kind) + " is now \"" +
                       printable(found->title()) + "\".");
}

void createCalendarCommand(CommandSession& session, const std::string& title,
                           std::optional<DateKind> kind) {
  if (title.find_first_not_of(" \t\n") == title.npos) throw Refusal{"a calendar needs a title"};
  const Calendar calendar = CalCalendar::calendar();
  calendar->setTitle(title);
  CalCalendarStore& store = session.platform.defaultCalendarStore();
  auto saved = store.saveCalendar(calendar);
  if (saved) saved = store.synchronize();
  if (!saved) throw Refusal{saved.error().description};
  session.console.line(calendar->uid());
  session.console.note("The calendar \"" + printable(title) + "\" is there.");
  refreshService(session);
  if (kind) chooseCalendarCommand(session, *kind, calendar->uid());
}

void noCalendarCommand(CommandSession& session, DateKind kind) {
  chooseNoCalendar(session, kind);
  session.console.note("No calendar is chosen for " + dateKindText(kind) +
                       "; the next run takes their events out.");
}

}  // namespace annivo
