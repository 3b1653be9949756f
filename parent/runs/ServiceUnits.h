// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "parent/settings/Session.h"

namespace annivo {

/// A systemd user unit.
struct ServiceUnit {
  std::string name;
  std::string text;
};

/// The units that start the agent at login, daily, and when contacts or calendars change: a
/// service, a timer and a path unit. The path unit watches the folders that are there now.
[[nodiscard]] std::vector<ServiceUnit> serviceUnits(Session& session);
/// Where the person's units lie.
[[nodiscard]] std::string unitFolder(const Session& session);
[[nodiscard]] bool serviceIsInstalled(const Session& session);
/// Brings the path unit of an installed service up to date with the folders there are; called
/// after a command that may have made some.
void refreshService(Session& session);

}  // namespace annivo
