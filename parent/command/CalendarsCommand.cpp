// SPDX-License-Identifier: MIT
#include "base/Unicode.h"
#include "parent/command/Commands.h"
#include "parent/runs/ServiceUnits.h"
#include "parent/settings/ChosenCalendars.h"

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

/// By UID, else by title, else by title in any case.
Calendar findCalendar(Session& session, const std::string& wanted) {
  CalCalendarStore& store = session.platform.defaultCalendarStore();
  if (auto calendar = store.calendarWithUID(wanted)) return calendar;
  std::vector<Calendar> exact, folded;
  for (const Calendar& calendar : store.calendars()) {
    if (calendar->title() == wanted) exact.push_back(calendar);
    if (caseFolded(calendar->title()) == caseFolded(wanted)) folded.push_back(calendar);
  }
  const std::vector<Calendar>& found = exact.empty() ? folded : exact;
  if (found.empty()) {
    throw Refusal{"there is no calendar \"" + wanted +
                  "\"; \"annivo calendars\" lists those there are, \"annivo calendars create\" "
                  "makes one"};
  }
  if (found.size() > 1) {
    std::string uids;
    for (const Calendar& calendar : found) uids += (uids.empty() ? "" : ", ") + calendar->uid();
    throw Refusal{"several calendars are called \"" + wanted +
                  "\"; give one of their UIDs: " + uids};
  }
  return found.front();
}

void choose(Session& session, const std::string& kind,
            const std::optional<ChosenCalendar>& calendar) {
  AnvCalPrefs prefs(session.platform);
  ChosenCalendars chosen = chosenCalendars(prefs);
  if (kind != "anniversaries") chosen.birthdays = calendar;
  if (kind != "birthdays") chosen.anniversaries = calendar;
  storeChoices(session, calendarPreferences(chosen));
}

std::string kindText(const std::string& kind) {
  return kind == "both" ? "birthdays and anniversaries" : kind;
}

}  // namespace

void calendarsCommand(Session& session) {
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

void chooseCalendarCommand(Session& session, const std::string& kind, const std::string& calendar) {
  const Calendar found = findCalendar(session, calendar);
  if (!found->isEditable()) {
    throw Refusal{"the calendar \"" + found->title() + "\" cannot be written; choose another"};
  }
  choose(session, kind, ChosenCalendar{found->uid(), found->title()});
  session.console.note("The calendar for " + kindText(kind) + " is now \"" +
                       printable(found->title()) + "\".");
}

void createCalendarCommand(Session& session, const std::string& title,
                           const std::optional<std::string>& kind) {
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

void noCalendarCommand(Session& session, const std::string& kind) {
  choose(session, kind, std::nullopt);
  session.console.note("No calendar is chosen for " + kindText(kind) +
                       "; the next run takes their events out.");
}

}  // namespace annivo
