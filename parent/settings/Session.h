// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "parent/command/Console.h"
#include "platform/Platform.h"

namespace annivo {

/// What every command works with.
struct Session {
  /// The machine as the agent sees it, so that all rules are asked of the agent's own code.
  Platform& platform;
  Console& console;
  std::string executable;  ///< full path of this program
  Environment environment;
};

/// The bundle that holds this program, "Annivo 2.app".
[[nodiscard]] std::string parentBundlePath(const Session& session);
/// The agent's executable in the parent's bundle.
[[nodiscard]] std::string agentExecutable(const NSFileManager& files,
                                          const std::string& parentBundle);
/// What a platform for the agent's code stands on; files, log, alerts and launcher are left open.
[[nodiscard]] PlatformParts agentParts(const std::string& home, const std::string& agentExecutable,
                                       Environment environment, std::unique_ptr<Clock> clock);

/// Another object's clock.
class BorrowedClock final : public Clock {
 public:
  explicit BorrowedClock(const Clock& clock) : clock_(clock) {}
  [[nodiscard]] Date now() const override { return clock_.now(); }

 private:
  const Clock& clock_;
};

/// Stores values in the parent's preferences, at once; nil removes a key.
void storeChoices(Session& session, const PropertyList::Dictionary& choices);
/// Notes that the parent was launched now (later than the last run, whatever the clock says), so
/// that the agent's next run does its work.
void markLaunch(Platform& platform);
/// Marks the launch in memory only.
void setLaunch(Platform& platform);

/// "2026-06-10" of a moment in the person's zone, "--06-10" for a date without a year.
[[nodiscard]] std::string dayText(Date date, const NSTimeZone& zone);
/// "2026-06-10 08:00".
[[nodiscard]] std::string momentText(Date date, const NSTimeZone& zone);

}  // namespace annivo
