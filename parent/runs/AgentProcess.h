// SPDX-License-Identifier: MIT
#pragma once

#include "parent/runs/EventChanges.h"
#include "parent/settings/Session.h"

namespace annivo {

/// Starts the agent, waits for its end, and compares the calendars before and after. The agent
/// keeps this process's terminal, for its alerts. Throws Refusal when it cannot be started or
/// fails.
[[nodiscard]] EventChanges runAgent(Session& session);

}  // namespace annivo
