// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Platform.h"

namespace annivo {

/// Ends what was asked for with one line that says what to do.
struct Refusal {
  std::string sentence;
};

/// What all that the parent application does works with.
struct Session {
  /// The machine as the agent sees it, so that all rules are asked of the agent's own code.
  Platform& platform;
  std::string executable;  ///< full path of this program
  Environment environment;
  /// Tells the person one line beside the results.
  std::function<void(std::string_view)> note;
};

/// The bundle that holds this program, "Annivo 2.app".
[[nodiscard]] std::string parentBundlePath(const Session& session);
/// Where the bundle that holds `executable` keeps the catalogues of texts.
[[nodiscard]] std::string textsFolder(const std::string& executable);
/// The agent's executable in the parent's bundle.
[[nodiscard]] std::string agentExecutable(const NSFileManager& files,
                                          const std::string& parentBundle);
/// What a platform for the agent's code stands on; files, log, alerts and launcher are left open.
[[nodiscard]] PlatformParts agentParts(const std::string& home, const std::string& agentExecutable,
                                       Environment environment, std::unique_ptr<Clock> clock);

/// Gives the time of a clock that somebody else owns.
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

}  // namespace annivo
