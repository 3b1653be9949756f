// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// Starts other programs.
class Launcher {
 public:
  virtual ~Launcher() = default;
  /// Starts `executable` with `arguments` detached: it outlives this process, has a session of its
  /// own, no standard input and none of this process's open files.
  virtual Result<void> launch(const std::string& executable,
                              const std::vector<std::string>& arguments) = 0;
};

class ProcessLauncher final : public Launcher {
 public:
  Result<void> launch(const std::string& executable,
                      const std::vector<std::string>& arguments) override;
};

/// Finds and launches applications by their bundle identifiers.
class NSWorkspace {
 public:
  /// `enclosing` is the path of the bundle that encloses the running one, `home` the person's home.
  NSWorkspace(const NSFileManager& files, Launcher& launcher, std::string enclosing,
              std::string home);
  /// The enclosing bundle, then "*.app" in ~/Applications, /Applications, /opt and
  /// /usr/lib/annivo, the first whose CFBundleIdentifier is `identifier`.
  [[nodiscard]] std::optional<std::string> absolutePathForAppBundleWithIdentifier(
      const std::string& identifier) const;
  /// Launches the CFBundleExecutable of the bundle at `path` without arguments.
  Result<void> launchApplication(const std::string& path);

 private:
  const NSFileManager& files_;
  Launcher& launcher_;
  std::string enclosing_;
  std::string home_;
};

}  // namespace annivo
