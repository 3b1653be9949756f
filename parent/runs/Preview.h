// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "parent/runs/EventChanges.h"
#include "parent/settings/Session.h"
#include "parent/sources/ImportedSource.h"

namespace annivo {

/// What a run that is started now would do.
struct Preview {
  EventChanges changes;
  std::vector<std::string> newCalendars;  ///< titles of calendars that it would create
  std::vector<LeftOut> leftOut;           ///< contact dates that yield no event
  std::vector<std::string> messages;      ///< what it would tell the person
  bool presentedFailure = false;          ///< one of the messages is of a failure
  bool switchedOff = false;               ///< it would only take its events out
};

/// Lets the agent's own controller run over files whose changes stay in memory. Nothing is written.
[[nodiscard]] Preview previewRun(Session& session);

}  // namespace annivo
