// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/runs/AgentProcess.h"
#include "parent/runs/OverlayFileManager.h"
#include "parent/runs/ServiceUnits.h"
#include "parent/settings/ChosenCalendars.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"
#include "run/myController.h"

namespace annivo {

namespace {

/// What a run by the clock or at login would do, asked of the agent's own controller over files
/// whose changes are dropped.
myController::Decision nextDecision(CommandSession& session) {
  Platform& real = session.platform;
  PlatformParts parts = agentParts(
      real.homeDirectory(), agentExecutable(real.fileManager(), parentBundlePath(session)),
      session.environment, std::make_unique<BorrowedClock>(real.clock()));
  parts.files = std::make_unique<OverlayFileManager>(real.fileManager(), real.clock());
  Platform platform(std::move(parts));
  myController controller(platform);
  controller.awakeFromNib({});
  return controller.decide();
}

struct NextRun {
  const char* word;
  const char* sentence;
};

NextRun nextRun(CommandSession& session) {
  switch (nextDecision(session)) {
    case myController::Decision::emptyCalendars:
      return {"empty", "takes all events out of the calendars"};
    case myController::Decision::pass:
      return {"pass", "brings the calendars up to date (\"annivo preview\" shows how)"};
    case myController::Decision::nothingToUpdate:
      break;
  }
  return {"nothing", "does nothing: nothing has changed since the last one"};
}

}  // namespace

void statusCommand(CommandSession& session) {
  const Console& console = session.console;
  const auto value = [&](const char* name) { return settingNamed(name).show(session); };
  const NextRun next = nextRun(session);
  const bool service = serviceIsInstalled(session);
  const PropertyList lastRun =
      session.platform.standardUserDefaults().objectForKey(keys::kLastUpdate);
  if (console.json) {
    return console.writeJSON(
        PropertyList::Dictionary{{"agent", value("agent")},
                                 {"lastRun", lastRun},
                                 {"birthdayCalendar", value("birthday-calendar")},
                                 {"anniversaryCalendar", value("anniversary-calendar")},
                                 {"group", value("group")},
                                 {"nextRun", next.word},
                                 {"service", service}});
  }
  const bool on = value("agent") == "on";
  const auto row = [&](const char* name, const std::string& text) {
    console.line(console.styled(name, Style::bold) + text);
  };
  row("Agent:         ", console.styled(on ? "on" : "off", on ? Style::green : Style::yellow));
  row("Last run:      ", value("last-run"));
  row("Birthdays:     ", printable(value("birthday-calendar")));
  row("Anniversaries: ", printable(value("anniversary-calendar")));
  row("Group:         ", printable(value("group")));
  row("Next run:      ", next.sentence);
  row("Service:       ",
      service ? "installed"
              : "not installed; \"annivo service install\" lets runs start by themselves");
}

void onCommand(CommandSession& session) {
  // The order to empty the calendars would win over the switch.
  settingNamed("empty-calendars").reset(session);
  settingNamed("agent").set(session, {"on"});
  session.console.note("The agent is on; \"annivo run\" brings the calendars up to date now.");
}

void offCommand(CommandSession& session) {
  settingNamed("agent").set(session, {"off"});
  const AgentRun run = runAgent(session);
  if (session.console.json) {
    session.console.writeJSON(
        changesAsPropertyList(run.changes, session.platform.defaultTimeZone()));
  } else {
    session.console.line("The agent is off; " +
                         counted(run.changes.removed.size(), "event was", "events were") +
                         " taken out of the calendars.");
  }
  refuseIfFailed(run);
}

}  // namespace annivo
