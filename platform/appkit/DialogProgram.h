// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/appkit/Alerts.h"
#include "platform/appkit/ChildProcess.h"

namespace annivo {

/// The programs that can show an alert on a display.
enum class DialogProgram { zenity, kdialog };

[[nodiscard]] const char* nameOf(DialogProgram program);
/// The arguments that make the program show the alert. Whatever the texts hold (markup, leading
/// dashes, backslashes, mnemonic marks) is shown as it stands.
[[nodiscard]] std::vector<std::string> dialogArguments(DialogProgram program, const NSAlert& alert);
/// What the person answered; nothing when the program could not show the alert.
[[nodiscard]] std::optional<AlertAnswer> dialogAnswer(DialogProgram program, const NSAlert& alert,
                                                      const EndedProcess& ended);

}  // namespace annivo
