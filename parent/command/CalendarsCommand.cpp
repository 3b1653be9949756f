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
  if (birthdays && anniversaries) return translated("birthdays, anniversaries");
  return birthdays ? translated("birthdays") : anniversaries ? translated("anniversaries") : "";
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
  std::vector<std::vector<std::string>> rows{
      {translated("CALENDAR"), translated("USED FOR"), translated("WRITABLE"), translated("UID")}};
  for (const Calendar& calendar : calendars) {
    rows.push_back({calendar->title(), usedFor(chosen, calendar->uid()),
                    calendar->isEditable() ? translated("yes") : translated("no"),
                    calendar->uid()});
  }
  if (!calendars.empty()) console.table(rows);
  console.line(counted(calendars.size(), "{1} calendar.", "{1} calendars."));
  if (!chosen.birthdays && !chosen.anniversaries) {
    console.line(translated(
        "None is chosen, so no event is written: \"annivo calendars choose both CALENDAR\"."));
  }
}

void chooseCalendarCommand(CommandSession& session, DateKind kind, const std::string& calendar) {
  const Calendar found = chooseCalendar(session, kind, calendar);
  const char* const text =
      textFor(kind, toTranslate("The calendar for birthdays is now \"{1}\"."),
              toTranslate("The calendar for anniversaries is now \"{1}\"."),
              toTranslate("The calendar for birthdays and anniversaries is now \"{1}\"."));
  session.console.note(translated(text, printable(found->title())));
}

void createCalendarCommand(CommandSession& session, const std::string& title,
                           std::optional<DateKind> kind) {
  if (title.find_first_not_of(" \t\n") == title.npos) {
    throw Refusal{translated("a calendar needs a title")};
  }
  const Calendar calendar = CalCalendar::calendar();
  calendar->setTitle(title);
  CalCalendarStore& store = session.platform.defaultCalendarStore();
  auto saved = store.saveCalendar(calendar);
  if (saved) saved = store.synchronize();
  if (!saved) throw Refusal{saved.error().description};
  session.console.line(calendar->uid());
  session.console.note(translated("The calendar \"{1}\" is there.", printable(title)));
  refreshService(session);
  if (kind) chooseCalendarCommand(session, *kind, calendar->uid());
}

void noCalendarCommand(CommandSession& session, DateKind kind) {
  chooseNoCalendar(session, kind);
  session.console.note(translated(textFor(
      kind,
      toTranslate("No calendar is chosen for birthdays; the next run takes their events out."),
      toTranslate("No calendar is chosen for anniversaries; the next run takes their events out."),
      toTranslate("No calendar is chosen for birthdays and anniversaries; the next run takes their "
                  "events out."))));
}

}  // namespace annivo
