// SPDX-License-Identifier: MIT
#include "platform/appkit/NSWorkspace.h"

#include <utility>

#include "platform/appkit/ChildProcess.h"
#include "platform/foundation/NSBundle.h"

namespace annivo {

Result<void> ProcessLauncher::launch(const std::string& executable,
                                     const std::vector<std::string>& arguments) {
  return startDetachedProcess(executable, arguments);
}

NSWorkspace::NSWorkspace(const NSFileManager& files, Launcher& launcher, std::string enclosing,
                         std::string home)
    : files_(files),
      launcher_(launcher),
      enclosing_(std::move(enclosing)),
      home_(std::move(home)) {}

std::optional<std::string> NSWorkspace::absolutePathForAppBundleWithIdentifier(
    const std::string& identifier) const {
  const auto matches = [&](const std::string& path) {
    return !identifier.empty() && NSBundle(files_, path).bundleIdentifier() == identifier;
  };
  if (matches(enclosing_)) return enclosing_;
  for (const std::string& folder : {home_ + "/Applications", std::string("/Applications"),
                                    std::string("/opt"), std::string("/usr/lib/annivo")}) {
    const auto entries = files_.contentsOfDirectory(folder);
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = folder + "/" + entry.name;
      if (entry.name.ends_with(".app") && matches(path)) return path;
    }
  }
  return std::nullopt;
}

Result<void> NSWorkspace::launchApplication(const std::string& path) {
  return launcher_.launch(NSBundle(files_, path).executablePath(), {});
}

}  // namespace annivo
