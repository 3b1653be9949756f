// SPDX-License-Identifier: MIT
#pragma once

#include "parent/runs/EventChanges.h"
#include "parent/settings/Session.h"

namespace annivo {

/// A run that came to its end.
struct AgentRun {
  EventChanges changes;
  bool presentedFailure = false;  ///< it told of something that it could not do
};

/// Starts the agent, waits for its end, and compares the calendars before and after. The agent
/// keeps this process's terminal, for its alerts. Throws Refusal when it cannot be started or does
/// not come to its end.
[[nodiscard]] AgentRun runAgent(Session& session);

/// Ends a command, which has shown what a run did, where the run presented a failure.
void refuseIfFailed(const AgentRun& run);

}  // namespace annivo
