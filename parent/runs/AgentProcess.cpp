// SPDX-License-Identifier: MIT
#include "parent/runs/AgentProcess.h"

#include <iostream>
#include <map>

#include "base/Translation.h"
#include "codecs/icalendar/EventFile.h"
#include "parent/runs/OurEvents.h"
#include "parent/runs/OverlayFileManager.h"
#include "platform/appkit/ChildProcess.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

struct EventFileState {
  Date modificationDate{};
  std::uint64_t size = 0;
  Result<std::string> bytes = std::string();
};

/// By path.
using EventFiles = std::map<std::string, EventFileState>;

/// All event files. With `known`, the content of one whose time and size are the same is not read
/// again.
EventFiles allEventFiles(Platform& platform, const EventFiles* known = nullptr) {
  NSFileManager& files = platform.fileManager();
  EventFiles found;
  for (const std::string& path : eventFiles(platform, files)) {
    const auto attributes = files.attributesAtPath(path, Links::follow);
    if (!attributes) continue;
    if (known) {
      const auto before = known->find(path);
      if (before != known->end() &&
          before->second.modificationDate == attributes->modificationDate &&
          before->second.size == attributes->size) {
        found.emplace(path, before->second);
        continue;
      }
    }
    found.emplace(path, EventFileState{attributes->modificationDate, attributes->size,
                                       files.contentsAtPath(path, EventFile::kLimit)});
  }
  return found;
}

/// Whether the run presented a failure, which its exit status 1 says.
bool runAndWait(const std::string& executable) {
  std::cout.flush();
  const auto ended = runProcessInForeground(executable, {});
  if (!ended) throw Refusal{ended.error().description};
  if (ended->signal == 0 && ended->status <= 1) return ended->status == 1;
  if (ended->signal == 0) {
    throw Refusal{
        translated("the agent did not end well (exit status {1}); its messages say why, and "
                   "\"annivo run\" tries again",
                   std::to_string(ended->status))};
  }
  throw Refusal{
      translated("the agent did not end well (signal {1}); its messages say why, and "
                 "\"annivo run\" tries again",
                 std::to_string(ended->signal))};
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
/// version, which shows in the time of the last check. Whether a failure was presented.
bool runToItsEnd(Session& session, const std::string& executable) {
  const PropertyList check = lastUpdateCheck(session.platform);
  const bool failed = runAndWait(executable);
  if (lastUpdateCheck(session.platform) == check) return failed;
  AnvCalPrefs prefs(session.platform);
  const PropertyList& interval = prefs.prefs()[keys::kSUScheduledCheckInterval];
  if (!interval.isNil() && interval.integerValue() < 1) {
    throw Refusal{translated(
        "a new version is out, and at every run the agent only tells of it; \"annivo settings "
        "update-interval daily\" lets it do its work")};
  }
  session.note(translated("A new version of Annivo 2 is out; the application tells where."));
  storeChoices(session, {{keys::kSULastCheckTime, session.platform.clock().now()}});
  return runAndWait(executable) || failed;
}

}  // namespace

AgentRun runAgent(Session& session) {
  Platform& platform = session.platform;
  NSFileManager& files = platform.fileManager();
  std::map<std::string, Result<std::string>> ledger;
  for (const std::string& path : OurEvents::ledgerFiles(platform)) {
    ledger.emplace(path, files.contentsAtPath(path));
  }
  const EventFiles before = allEventFiles(platform);
  const bool failed = runToItsEnd(session, agentExecutable(files, parentBundlePath(session)));
  const EventFiles after = allEventFiles(platform, &before);

  OverlayFileManager old(files, platform.clock());
  for (const auto& [path, bytes] : ledger) {
    bytes ? old.putFile(path, *bytes) : old.putAbsence(path);
  }
  std::vector<std::string> changed;
  for (const auto& [path, state] : before) {
    const auto now = after.find(path);
    // Of a file that could not be read nothing is known.
    if (!state.bytes) continue;
    if (now != after.end() && now->second.bytes && *now->second.bytes == *state.bytes) continue;
    old.putFile(path, *state.bytes);
    changed.push_back(path);
  }
  for (const auto& [path, state] : after) {
    if (before.contains(path)) continue;
    old.putAbsence(path);
    changed.push_back(path);
  }
  return {eventChanges(platform, old, files, changed), failed};
}

void refuseIfFailed(const AgentRun& run) {
  if (run.presentedFailure) {
    throw Refusal{translated(
        "the agent met a failure, which its messages name; what it could do is done, and "
        "\"annivo run\" tries again")};
  }
}

}  // namespace annivo
