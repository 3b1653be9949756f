// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/runs/AgentProcess.h"
#include "parent/runs/Preview.h"
#include "parent/settings/Words.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

/// "was "Ann: 45th birthday", alarms"; "" for an event that is not changed in place.
std::string difference(const EventChange& change) {
  const std::string old = printable(change.oldTitle.value_or(""));
  if (change.oldTitle && change.alarmsChanged) {
    return translated("  (was \"{1}\", alarms)", old);
  }
  if (change.oldTitle) return translated("  (was \"{1}\")", old);
  return change.alarmsChanged ? translated("  (alarms)") : translated("  (details)");
}

enum class Kind { added, changed, removed };

void showList(const Console& console, const std::string& heading,
              const std::vector<EventChange>& list, Kind kind, const NSTimeZone& zone) {
  const char* sign = kind == Kind::added ? "+" : kind == Kind::changed ? "~" : "-";
  const Style style = kind == Kind::added     ? Style::green
                      : kind == Kind::changed ? Style::yellow
                                              : Style::red;
  console.line(console.styled(heading, Style::bold));
  for (const EventChange& change : list) {
    // TRANSLATORS: {1} is a sign, {2} a day, {3} an event's title, {4} its calendar.
    std::string text = translated("  {1} {2}  {3}  [{4}]", sign, shownDay(change.date, zone),
                                  printable(change.title), printable(change.calendar));
    if (kind == Kind::changed) text += difference(change);
    console.line(console.styled(text, style));
  }
}

/// The lists for people: of what was done, or of what would be.
void showChanges(const Console& console, const EventChanges& changes, const NSTimeZone& zone,
                 bool done) {
  const auto heading = [](const char* text, std::size_t count) {
    return translated(text, std::to_string(count));
  };
  const auto& [added, changed, removed] = changes;
  showList(console,
           heading(done ? toTranslate("Added ({1})") : toTranslate("To add ({1})"), added.size()),
           added, Kind::added, zone);
  showList(
      console,
      heading(done ? toTranslate("Changed ({1})") : toTranslate("To change ({1})"), changed.size()),
      changed, Kind::changed, zone);
  showList(
      console,
      heading(done ? toTranslate("Removed ({1})") : toTranslate("To remove ({1})"), removed.size()),
      removed, Kind::removed, zone);
}

std::string textOf(DateWithoutEvent::Reason reason, CalendarType kind) {
  using Reason = DateWithoutEvent::Reason;
  const bool birthday = kind == CalendarType::birthdays;
  switch (reason) {
    case Reason::notInGroup:
      return translated("the person is not in the chosen group");
    case Reason::labelExcluded:
      return translated("its label is excluded");
    case Reason::noCalendar:
      return birthday ? translated("no calendar is chosen for birthdays")
                      : translated("no calendar is chosen for anniversaries and other dates");
    case Reason::calendarMissing:
      return birthday ? translated("the calendar for birthdays is not there")
                      : translated("the calendar for anniversaries and other dates is not there");
    case Reason::calendarLocked:
      return birthday
                 ? translated("the calendar for birthdays cannot be written")
                 : translated("the calendar for anniversaries and other dates cannot be written");
    case Reason::tooFarAhead:
      return translated("the date lies too far in the future");
    case Reason::noDay:
      break;
  }
  return translated("the date is missing");
}

const char* wordOf(DateWithoutEvent::Reason reason) {
  using Reason = DateWithoutEvent::Reason;
  switch (reason) {
    case Reason::notInGroup:
      return "notInGroup";
    case Reason::labelExcluded:
      return "labelExcluded";
    case Reason::noCalendar:
      return "noCalendar";
    case Reason::calendarMissing:
      return "calendarMissing";
    case Reason::calendarLocked:
      return "calendarLocked";
    case Reason::tooFarAhead:
      return "tooFarAhead";
    case Reason::noDay:
      break;
  }
  return "noDay";
}

void showLeftOut(const Console& console, const std::vector<DateWithoutEvent>& leftOut,
                 const NSTimeZone& zone) {
  if (leftOut.empty()) return;
  console.line(
      console.styled(translated("Left out ({1})", std::to_string(leftOut.size())), Style::bold));
  for (const DateWithoutEvent& item : leftOut) {
    const std::string person = printable(item.person);
    const std::string label = printable(item.label);
    const std::string why = textOf(item.reason, item.kind);
    // TRANSLATORS: {1} is a person, {2} what the date is ("birthday"), {3} why it yields no event,
    // {4} the day.
    console.line(item.date ? translated("    {1}, {2} {4}: {3}", person, label, why,
                                        shownDay(*item.date, zone))
                           : translated("    {1}, {2}: {3}", person, label, why));
  }
}

PropertyList texts(const std::vector<std::string>& list) {
  return PropertyList::Array(list.begin(), list.end());
}

PropertyList leftOutValue(const std::vector<DateWithoutEvent>& leftOut, const NSTimeZone& zone) {
  PropertyList::Array values;
  for (const DateWithoutEvent& item : leftOut) {
    values.push_back(PropertyList::Dictionary{
        {"person", item.person},
        {"label", item.label},
        {"date", item.date ? PropertyList(isoDay(*item.date, zone)) : PropertyList()},
        {"reason", wordOf(item.reason)}});
  }
  return values;
}

void hintAtCalendars(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  if (prefs.text(keys::kBirthCalUID).empty() && prefs.text(keys::kAneeCalUID).empty()) {
    session.console.note(translated(
        "No calendar is chosen: \"annivo calendars choose both CALENDAR\" chooses one."));
  }
}

PropertyList previewValue(const Preview& preview, const NSTimeZone& zone) {
  auto value = changesAsPropertyList(preview.changes, zone);
  value.emplace("newCalendars", texts(preview.newCalendars));
  value.emplace("leftOut", leftOutValue(preview.leftOut, zone));
  value.emplace("messages", texts(preview.messages));
  value.emplace("switchedOff", preview.switchedOff);
  return value;
}

void showPreview(CommandSession& session, const Preview& preview) {
  const Console& console = session.console;
  if (preview.switchedOff) {
    console.note(translated(
        "The agent is off: a run only takes its events out (\"annivo on\" switches it on)."));
  } else {
    hintAtCalendars(session);
  }
  for (const std::string& title : preview.newCalendars) {
    console.line(translated("To create: the calendar \"{1}\"", printable(title)));
  }
  showChanges(console, preview.changes, session.platform.defaultTimeZone(), false);
  showLeftOut(console, preview.leftOut, session.platform.defaultTimeZone());
}

}  // namespace

void previewCommand(CommandSession& session) {
  const Preview preview = previewRun(session);
  const Console& console = session.console;
  if (console.json) {
    console.writeJSON(previewValue(preview, session.platform.defaultTimeZone()));
  } else {
    for (const std::string& message : preview.messages) console.note(printable(message));
    showPreview(session, preview);
  }
  if (preview.presentedFailure) {
    throw Refusal{
        translated("a run that is started now would meet a failure, which its messages name")};
  }
}

void runCommand(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  if (!prefs.prefs()[keys::kAppRunning].isTheTrueObject()) {
    throw Refusal{translated("the agent is switched off; \"annivo on\" switches it on")};
  }
  hintAtCalendars(session);
  markLaunch(session.platform);
  const AgentRun run = runAgent(session);
  const NSTimeZone& zone = session.platform.defaultTimeZone();
  if (session.console.json) {
    session.console.writeJSON(changesAsPropertyList(run.changes, zone));
  } else {
    showChanges(session.console, run.changes, zone, true);
  }
  refuseIfFailed(run);
}

}  // namespace annivo
