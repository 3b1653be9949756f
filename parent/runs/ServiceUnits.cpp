// SPDX-License-Identifier: MIT
#include "parent/runs/ServiceUnits.h"

#include <algorithm>

#include "base/Translation.h"

namespace annivo {

namespace {

constexpr const char* kName = "annivo-agent";

/// A text in a unit file: "%" begins a specifier there.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c;
    if (c == '%') result += c;
  }
  return result;
}

/// As the program of a command line: quoted, and without its own meaning of "$".
std::string quoted(const std::string& path) {
  std::string result = "\"";
  for (const char c : escaped(path)) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
    if (c == '$') result += c;
  }
  return result + '"';
}

/// The folders whose times tell the agent that something changed, and those in which new ones of
/// them appear.
std::vector<std::string> watchedFolders(Session& session) {
  const HomeFolders& home = session.platform.folders();
  const std::string book = home.addressBook();
  const std::string calendars = home.calendars();
  std::vector<std::string> folders{book, home.addressBookSources(), calendars};
  const auto add = [&](const std::string& root, const char* suffix) {
    NSDirectoryEnumerator walk(session.platform.fileManager(), root);
    while (const auto entry = walk.nextObject()) {
      const bool wanted = entry->ends_with(suffix);
      if (wanted || entry->ends_with(names::kImages)) walk.skipDescendents();
      if (wanted) folders.push_back(root + '/' + *entry);
    }
  };
  add(book, names::kMetadata);
  add(calendars, names::kEvents);
  // A line of a unit file ends at a line break.
  std::erase_if(folders, [](const std::string& folder) {
    return folder.find_first_of("\n\r") != folder.npos;
  });
  return folders;
}

ServiceUnit pathUnit(Session& session) {
  std::string text =
      "[Unit]\n"
      "Description=Annivo: watch contacts and calendars\n\n"
      "[Path]\n";
  for (const std::string& folder : watchedFolders(session)) {
    text += "PathChanged=" + escaped(folder) + '\n';
  }
  text += std::string("Unit=") + kName + ".service\n\n[Install]\nWantedBy=default.target\n";
  return {std::string(kName) + ".path", text};
}

}  // namespace

std::vector<ServiceUnit> serviceUnits(Session& session) {
  // Changes come in bursts, such as a synchronization: those of a second make one run, and however
  // many there are the watch goes on.
  const std::string agent =
      agentExecutable(session.platform.fileManager(), parentBundlePath(session));
  return {{std::string(kName) + ".service",
           "[Unit]\n"
           "Description=Annivo: copy the dates kept in contacts into calendars\n"
           "Documentation=man:annivo(1) man:AnnivoAgent(1)\n"
           "StartLimitIntervalSec=0\n\n"
           "[Service]\n"
           "Type=oneshot\n"
           "ExecStartPre=/bin/sleep 1\n"
           "ExecStart=" +
               quoted(agent) +
               "\n\n"
               "[Install]\n"
               "WantedBy=default.target\n"},
          {std::string(kName) + ".timer",
           "[Unit]\n"
           "Description=Annivo: once a day\n\n"
           "[Timer]\n"
           "OnCalendar=daily\n"
           "Persistent=true\n\n"
           "[Install]\n"
           "WantedBy=timers.target\n"},
          pathUnit(session)};
}

std::string unitFolder(const Session& session) {
  std::string configuration = session.environment("XDG_CONFIG_HOME");
  if (!configuration.starts_with('/')) {
    configuration = session.platform.homeDirectory() + "/.config";
  }
  return configuration + "/systemd/user";
}

bool serviceIsInstalled(const Session& session) {
  return session.platform.fileManager().fileExistsAtPath(unitFolder(session) + '/' + kName +
                                                         ".service");
}

void refreshService(Session& session) {
  NSFileManager& files = session.platform.fileManager();
  const ServiceUnit unit = pathUnit(session);
  const std::string path = unitFolder(session) + '/' + unit.name;
  const auto there = files.contentsAtPath(path);
  if (!there || *there == unit.text) return;
  if (auto written = files.writeAtomically(path, unit.text); !written) {
    throw Refusal{written.error().description};
  }
  session.note(translated(
      "The service watches new folders after \"annivo service install\" or the next login."));
}

}  // namespace annivo
