// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/appkit/Alerts.h"
#include "platform/foundation/NSLocale.h"
#include "platform/foundation/NSLog.h"

namespace annivo {

/// The alerts of this machine. Each is shown, where there is a display (DISPLAY or
/// WAYLAND_DISPLAY), by the first of zenity and kdialog that is found in PATH and can open it;
/// else on the terminal, where standard input and error are one; else the text goes to the log and
/// the alert answers as its last button would. `log` must outlive the result.
[[nodiscard]] std::unique_ptr<Alerts> makeSystemAlerts(Log& log, const Environment& environment);

}  // namespace annivo
