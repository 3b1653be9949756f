// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/appkit/Alerts.h"

namespace annivo {

/// Whether a person can be asked: both descriptors are a terminal and this process may read from
/// it (it is not in the background of a shell).
[[nodiscard]] bool isUsableTerminal(int in, int out);

/// Writes the alert and its numbered buttons to `out` and reads lines from `in` until one names a
/// button by its number or title. An empty line is the default button, the end of input the last.
AlertAnswer askOnTerminal(const NSAlert& alert, int in, int out);

}  // namespace annivo
