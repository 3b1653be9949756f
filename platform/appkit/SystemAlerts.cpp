// SPDX-License-Identifier: MIT
#include "platform/appkit/SystemAlerts.h"

#include <unistd.h>

#include <optional>
#include <utility>

#include "platform/appkit/ChildProcess.h"
#include "platform/appkit/DialogProgram.h"
#include "platform/appkit/TerminalAlert.h"

namespace annivo {

namespace {

class SystemAlerts final : public Alerts {
 public:
  SystemAlerts(Log& log, Environment environment)
      : log_(log), environment_(std::move(environment)) {}

  AlertAnswer runModal(const NSAlert& alert) override {
    if (const auto answer = askOnDisplay(alert)) return *answer;
    if (isUsableTerminal(STDIN_FILENO, STDERR_FILENO)) {
      return askOnTerminal(alert, STDIN_FILENO, STDERR_FILENO);
    }
    const AlertButton last = buttonsOf(alert).back();
    log_.write("Nobody to ask, taken as \"" + last.title + "\": " + textOf(alert));
    return last.answer;
  }

 private:
  [[nodiscard]] std::optional<AlertAnswer> askOnDisplay(const NSAlert& alert) const {
    if (environment_("DISPLAY").empty() && environment_("WAYLAND_DISPLAY").empty()) {
      return std::nullopt;
    }
    for (const DialogProgram program : {DialogProgram::zenity, DialogProgram::kdialog}) {
      const auto path = programInPath(nameOf(program), environment_("PATH"));
      if (!path) continue;
      const auto ended = runProcess(*path, dialogArguments(program, alert));
      if (!ended) continue;
      if (const auto answer = dialogAnswer(program, alert, *ended)) return answer;
    }
    return std::nullopt;
  }

  Log& log_;
  Environment environment_;
};

}  // namespace

std::unique_ptr<Alerts> makeSystemAlerts(Log& log, const Environment& environment) {
  return std::make_unique<SystemAlerts>(log, environment);
}

}  // namespace annivo
