// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/runs/AgentProcess.h"
#include "parent/runs/Preview.h"
#include "parent/settings/Words.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

void showList(const Console& console, const std::string& heading,
              const std::vector<EventChange>& list, char sign, Style style,
              const NSTimeZone& zone) {
  console.line(console.styled(heading + " (" + std::to_string(list.size()) + ')', Style::bold));
  for (const EventChange& change : list) {
    std::string text = std::string("  ") + sign + ' ' + shownDay(change.date, zone) + "  " +
                       printable(change.title) + "  [" + printable(change.calendar) + ']';
    if (!change.what.empty()) text += "  (" + printable(change.what) + ')';
    console.line(console.styled(text, style));
  }
}

/// The lists for people.
void showChanges(const Console& console, const EventChanges& changes, const NSTimeZone& zone,
                 bool done) {
  showList(console, done ? "Added" : "To add", changes.added, '+', Style::green, zone);
  showList(console, done ? "Changed" : "To change", changes.changed, '~', Style::yellow, zone);
  showList(console, done ? "Removed" : "To remove", changes.removed, '-', Style::red, zone);
}

void showLeftOut(const Console& console, const std::vector<LeftOut>& leftOut) {
  if (leftOut.empty()) return;
  console.line(console.styled("Left out (" + std::to_string(leftOut.size()) + ')', Style::bold));
  for (const LeftOut& item : leftOut) {
    console.line("    " + printable(item.where) + ": " + item.reason);
  }
}

PropertyList texts(const std::vector<std::string>& list) {
  return PropertyList::Array(list.begin(), list.end());
}

PropertyList leftOutValue(const std::vector<LeftOut>& leftOut) {
  PropertyList::Array values;
  for (const LeftOut& item : leftOut) {
    values.push_back(PropertyList::Dictionary{{"date", item.where}, {"reason", item.reason}});
  }
  return values;
}

void hintAtCalendars(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  if (prefs.text(keys::kBirthCalUID).empty() && prefs.text(keys::kAneeCalUID).empty()) {
    session.console.note(
        "No calendar is chosen: \"annivo calendars choose both CALENDAR\" chooses one.");
  }
}

PropertyList previewValue(const Preview& preview, const NSTimeZone& zone) {
  auto value = changesAsPropertyList(preview.changes, zone);
  value.emplace("newCalendars", texts(preview.newCalendars));
  value.emplace("leftOut", leftOutValue(preview.leftOut));
  value.emplace("messages", texts(preview.messages));
  value.emplace("switchedOff", preview.switchedOff);
  return value;
}

void showPreview(CommandSession& session, const Preview& preview) {
  const Console& console = session.console;
  if (preview.switchedOff) {
    console.note(
        "The agent is off: a run only takes its events out (\"annivo on\" switches it on).");
  } else {
    hintAtCalendars(session);
  }
  for (const std::string& title : preview.newCalendars) {
    console.line("To create: the calendar \"" + printable(title) + "\"");
  }
  showChanges(console, preview.changes, session.platform.defaultTimeZone(), false);
  showLeftOut(console, preview.leftOut);
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
    throw Refusal{"a run that is started now would meet a failure, which its messages name"};
  }
}

void runCommand(CommandSession& session) {
  AnvCalPrefs prefs(session.platform);
  if (!prefs.prefs()[keys::kAppRunning].isTheTrueObject()) {
    throw Refusal{"the agent is switched off; \"annivo on\" switches it on"};
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
