// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/runs/ServiceUnits.h"
#include "parent/settings/Words.h"
#include "platform/appkit/ChildProcess.h"

namespace annivo {

namespace {

/// Asks the person's service manager; what it answers when it fails.
std::optional<std::string> systemctl(CommandSession& session, std::vector<std::string> arguments) {
  const auto program = programInPath("systemctl", session.environment("PATH"));
  if (!program) return translated("systemctl is not there");
  arguments.insert(arguments.begin(), "--user");
  const auto ended = runProcess(*program, arguments);
  if (!ended) return ended.error().description;
  if (ended->status == 0) return std::nullopt;
  return ended->errors.substr(0, ended->errors.find('\n'));
}

void ensureFolder(CommandSession& session) {
  const std::string folder = unitFolder(session);
  const std::string& home = session.platform.homeDirectory();
  NSFileManager& files = session.platform.fileManager();
  const std::string root = folder.starts_with(home + '/') ? home : "/";
  if (auto made = files.createDirectoriesUnder(root, folder); !made) {
    throw Refusal{made.error().description};
  }
}

}  // namespace

void installServiceCommand(CommandSession& session) {
  ensureFolder(session);
  std::vector<std::string> enable{"enable"};
  for (const ServiceUnit& unit : serviceUnits(session)) {
    const std::string path = unitFolder(session) + '/' + unit.name;
    if (auto written = session.platform.fileManager().writeAtomically(path, unit.text); !written) {
      throw Refusal{written.error().description};
    }
    enable.push_back(unit.name);
    session.console.line(path);
  }
  auto failure = systemctl(session, {"daemon-reload"});
  if (!failure) failure = systemctl(session, enable);
  if (!failure) failure = systemctl(session, {"restart", enable[2], enable[3]});
  if (failure) {
    throw Refusal{translated(
        "the units are written, but the service manager did not take them ({1}); \"{2}\" does it",
        printable(*failure),
        "systemctl --user enable --now annivo-agent.service annivo-agent.timer "
        "annivo-agent.path")};
  }
  session.console.note(
      translated("The agent runs at login, daily, and when contacts or calendars change."));
}

void removeServiceCommand(CommandSession& session) {
  std::vector<std::string> disable{"disable", "--now"};
  bool any = false;
  const auto units = serviceUnits(session);
  for (const ServiceUnit& unit : units) {
    disable.push_back(unit.name);
    any |= session.platform.fileManager().fileExistsAtPath(unitFolder(session) + '/' + unit.name);
  }
  if (!any) {
    session.console.note(translated("The service is not installed."));
    return;
  }
  (void)systemctl(session, disable);  // Without a service manager there is nothing to stop.
  for (const ServiceUnit& unit : units) {
    const auto removed =
        session.platform.fileManager().removeFile(unitFolder(session) + '/' + unit.name);
    if (!removed && removed.error().kind != Error::Kind::absent) {
      throw Refusal{removed.error().description};
    }
  }
  (void)systemctl(session, {"daemon-reload"});
  session.console.note(translated("The service is removed; \"annivo run\" still runs the agent."));
}

void printServiceCommand(CommandSession& session) {
  const auto units = serviceUnits(session);
  if (session.console.json) {
    PropertyList::Dictionary values;
    for (const ServiceUnit& unit : units) values.emplace(unit.name, unit.text);
    return session.console.writeJSON(values);
  }
  bool first = true;
  for (const ServiceUnit& unit : units) {
    if (!first) session.console.line("");
    first = false;
    session.console.line("# " + unitFolder(session) + '/' + unit.name);
    session.console.out << unit.text;
  }
}

}  // namespace annivo
