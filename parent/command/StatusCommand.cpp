// SPDX-License-Identifier: MIT
#include "base/Unicode.h"
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
  std::string sentence;
};

NextRun nextRun(CommandSession& session) {
  switch (nextDecision(session)) {
    case myController::Decision::emptyCalendars:
      return {"empty", translated("takes all events out of the calendars")};
    case myController::Decision::pass:
      return {"pass", translated("brings the calendars up to date (\"annivo preview\" shows how)")};
    case myController::Decision::nothingToUpdate:
      break;
  }
  return {"nothing", translated("does nothing: nothing has changed since the last one")};
}

/// Names and values side by side.
void showRows(const Console& console,
              const std::vector<std::pair<std::string, std::string>>& rows) {
  std::size_t width = 0;
  for (const auto& [name, value] : rows) width = std::max(width, columnsOf(name));
  for (const auto& [name, value] : rows) {
    const std::string space(width - columnsOf(name) + 1, ' ');
    console.line(console.styled(name, Style::bold) + space + value);
  }
}

}  // namespace

void statusCommand(CommandSession& session) {
  const Console& console = session.console;
  const auto value = [&](const char* name) { return settingNamed(name).show(session); };
  const auto fact = [&](const char* name) { return settingNamed(name).fact(session); };
  const NextRun next = nextRun(session);
  const bool service = serviceIsInstalled(session);
  if (console.json) {
    return console.writeJSON(
        PropertyList::Dictionary{{"agent", fact("agent")},
                                 {"lastRun", fact("last-run")},
                                 {"birthdayCalendar", fact("birthday-calendar")},
                                 {"anniversaryCalendar", fact("anniversary-calendar")},
                                 {"group", fact("group")},
                                 {"nextRun", next.word},
                                 {"service", service}});
  }
  const bool on = *fact("agent").boolean();
  const std::string agent = on ? console.styled(translated("on"), Style::green)
                               : console.styled(translated("off"), Style::yellow);
  showRows(console,
           {{translated("Agent:"), agent},
            {translated("Last run:"), value("last-run")},
            {translated("Birthdays:"), printable(value("birthday-calendar"))},
            {translated("Anniversaries:"), printable(value("anniversary-calendar"))},
            {translated("Group:"), printable(value("group"))},
            {translated("Next run:"), next.sentence},
            {translated("Service:"),
             service ? translated("installed")
                     : translated("not installed; \"annivo service install\" lets runs start by "
                                  "themselves")}});
}

void onCommand(CommandSession& session) {
  // The order to empty the calendars would win over the switch.
  settingNamed("empty-calendars").reset(session);
  settingNamed("agent").set(session, {"on"});
  session.console.note(
      translated("The agent is on; \"annivo run\" brings the calendars up to date now."));
}

void offCommand(CommandSession& session) {
  settingNamed("agent").set(session, {"off"});
  const AgentRun run = runAgent(session);
  if (session.console.json) {
    session.console.writeJSON(
        changesAsPropertyList(run.changes, session.platform.defaultTimeZone()));
  } else {
    session.console.line(counted(run.changes.removed.size(),
                                 "The agent is off; {1} event was taken out of the calendars.",
                                 "The agent is off; {1} events were taken out of the calendars."));
  }
  refuseIfFailed(run);
}

}  // namespace annivo
