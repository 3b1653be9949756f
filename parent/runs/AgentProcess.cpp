// SPDX-License-Identifier: MIT
#include "parent/runs/AgentProcess.h"

#include <iostream>
#include <map>

#include "parent/runs/OverlayFileManager.h"
#include "platform/appkit/ChildProcess.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

struct EventFileState {
  Date modificationDate{};
  std::string bytes;
};

using EventFiles = std::map<std::string, EventFileState>;

/// All event files. With `known`, the content of one whose time is the same is not read again.
EventFiles eventFiles(Platform& platform, const EventFiles* known = nullptr) {
  const std::string root = platform.homeDirectory() + "/Library/Calendars";
  const NSFileManager& files = platform.fileManager();
  NSDirectoryEnumerator walk(files, root);
  EventFiles found;
  while (const auto relative = walk.nextObject()) {
    if (!relative->ends_with(".ics")) continue;
    const std::string path = root + '/' + *relative;
    const auto attributes = files.attributesAtPath(path, Links::follow);
    if (!attributes) continue;
    if (known) {
      const auto before = known->find(path);
      if (before != known->end() &&
          before->second.modificationDate == attributes->modificationDate &&
          before->second.bytes.size() == attributes->size) {
        found.emplace(path, before->second);
        continue;
      }
    }
    const auto bytes = files.contentsAtPath(path);
    found.emplace(path, EventFileState{attributes->modificationDate, bytes ? *bytes : ""});
  }
  return found;
}

void runAndWait(const std::string& executable) {
  std::cout.flush();
  const auto ended = runProcessInForeground(executable, {});
  if (!ended) throw Refusal{ended.error().description};
  if (ended->status == 0) return;
  throw Refusal{"the agent did not end well (" +
                (ended->signal == 0 ? "exit status " + std::to_string(ended->status)
                                    : "signal " + std::to_string(ended->signal)) +
                "); its messages say why, and \"annivo run\" tries again"};
}

/// When a new version was last looked for, as the file has it now.
PropertyList lastUpdateCheck(Platform& platform) {
  PreferenceDomains stored(platform.fileManager(), platform.clock(), platform.log(),
                           platform.homeDirectory());
  const auto& parent = stored.domain(kParentDomain);
  return parent && parent->contains(keys::kSULastCheckTime) ? parent->at(keys::kSULastCheckTime)
                                                            : PropertyList();
}

/// Runs the agent once more where it only started the parent application, to tell of a new
/// version, which shows in the time of the last check.
void runToItsEnd(Session& session, const std::string& executable) {
  const PropertyList check = lastUpdateCheck(session.platform);
  runAndWait(executable);
  if (lastUpdateCheck(session.platform) == check) return;
  AnvCalPrefs prefs(session.platform);
  const PropertyList& interval = prefs.prefs()[keys::kSUScheduledCheckInterval];
  if (!interval.isNil() && interval.integerValue() < 1) {
    throw Refusal{
        "a new version is out, and at every run the agent only tells of it; \"annivo settings "
        "update-interval daily\" lets it do its work"};
  }
  session.note("A new version of Annivo 2 is out; the application tells where.");
  storeChoices(session, {{keys::kSULastCheckTime, session.platform.clock().now()}});
  runAndWait(executable);
}

}  // namespace

EventChanges runAgent(Session& session) {
  Platform& platform = session.platform;
  const EventFiles before = eventFiles(platform);
  runToItsEnd(session, agentExecutable(platform.fileManager(), parentBundlePath(session)));
  const EventFiles after = eventFiles(platform, &before);

  OverlayFileManager old(platform.fileManager(), platform.clock());
  std::vector<std::string> changed;
  for (const auto& [path, state] : before) {
    const auto now = after.find(path);
    if (now != after.end() && now->second.bytes == state.bytes) continue;
    old.putFile(path, state.bytes);
    changed.push_back(path);
  }
  for (const auto& [path, state] : after) {
    if (before.contains(path)) continue;
    old.putAbsence(path);
    changed.push_back(path);
  }
  return eventChanges(platform, old, platform.fileManager(), changed);
}

}  // namespace annivo
