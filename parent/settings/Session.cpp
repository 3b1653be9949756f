// SPDX-License-Identifier: MIT
#include "parent/settings/Session.h"

#include <algorithm>
#include <chrono>

namespace annivo {

std::string parentBundlePath(const Session& session) {
  return NSBundle::enclosing(session.platform.fileManager(), session.executable).bundlePath();
}

std::string textsFolder(const std::string& executable) {
  const PosixFileManager files;
  return NSBundle::enclosing(files, executable).bundlePath() + "/Contents/Resources/locale";
}

std::string agentExecutable(const NSFileManager& files, const std::string& parentBundle) {
  return NSBundle(files, parentBundle + "/Contents/Helpers/AnnivoAgent.app").executablePath();
}

PlatformParts agentParts(const std::string& home, const std::string& agentExecutable,
                         Environment environment, std::unique_ptr<Clock> clock) {
  PlatformParts parts;
  parts.home = home;
  parts.executable = agentExecutable;
  parts.ownDomain = kAgentDomain;
  parts.environment = std::move(environment);
  parts.clock = std::move(clock);
  return parts;
}

void storeChoices(Session& session, const PropertyList::Dictionary& choices) {
  CFPreferences& preferences = session.platform.appPreferences();
  for (const auto& [key, value] : choices) preferences.setAppValue(key, value, kParentDomain);
  if (auto stored = preferences.appSynchronize(kParentDomain); !stored) {
    throw Refusal{stored.error().description};
  }
}

void setLaunch(Platform& platform) {
  Date launch = platform.clock().now();
  const PropertyList& lastUpdate = platform.standardUserDefaults().objectForKey(keys::kLastUpdate);
  if (lastUpdate.date())
    launch = std::max(launch, *lastUpdate.date() + std::chrono::milliseconds(1));
  platform.appPreferences().setAppValue(keys::kLastLaunched, launch, kParentDomain);
}

void markLaunch(Platform& platform) {
  setLaunch(platform);
  if (auto stored = platform.appPreferences().appSynchronize(kParentDomain); !stored) {
    throw Refusal{stored.error().description};
  }
}

}  // namespace annivo
