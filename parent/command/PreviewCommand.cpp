// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/runs/AgentProcess.h"
#include "parent/runs/Preview.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

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

void hintAtCalendars(Session& session) {
  AnvCalPrefs prefs(session.platform);
  if (prefs.text("birthCalUID").empty() && prefs.text("aneeCalUID").empty()) {
    session.console.note(
        "No calendar is chosen: \"annivo calendars choose both CALENDAR\" chooses one.");
  }
}

}  // namespace

void previewCommand(Session& session) {
  const Preview preview = previewRun(session);
  const Console& console = session.console;
  const NSTimeZone& zone = session.platform.defaultTimeZone();
  if (console.json) {
    auto value = changesAsPropertyList(preview.changes, zone);
    value.emplace("newCalendars", texts(preview.newCalendars));
    value.emplace("leftOut", leftOutValue(preview.leftOut));
    value.emplace("messages", texts(preview.messages));
    value.emplace("switchedOff", preview.switchedOff);
    return console.writeJSON(value);
  }
  for (const std::string& message : preview.messages) console.note(printable(message));
  if (preview.switchedOff) {
    console.note(
        "The agent is off: a run only takes its events out (\"annivo on\" switches it on).");
  } else {
    hintAtCalendars(session);
  }
  for (const std::string& title : preview.newCalendars) {
    console.line("To create: the calendar \"" + printable(title) + "\"");
  }
  showChanges(console, preview.changes, zone, false);
  showLeftOut(console, preview.leftOut);
}

void runCommand(Session& session) {
  AnvCalPrefs prefs(session.platform);
  if (!prefs.prefs()["appRunning"].isTheTrueObject()) {
    throw Refusal{"the agent is switched off; \"annivo on\" switches it on"};
  }
  hintAtCalendars(session);
  markLaunch(session.platform);
  const EventChanges changes = runAgent(session);
  const NSTimeZone& zone = session.platform.defaultTimeZone();
  if (session.console.json) {
    return session.console.writeJSON(changesAsPropertyList(changes, zone));
  }
  showChanges(session.console, changes, zone, true);
}

}  // namespace annivo
