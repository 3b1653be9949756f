// SPDX-License-Identifier: MIT
#include "tests/support/Doubles.h"

#include <algorithm>

namespace annivo {

Date utc(int year, unsigned month, unsigned day, int hour, int minute, int second) {
  return std::chrono::sys_days{std::chrono::year{year} / static_cast<int>(month) /
                               static_cast<int>(day)} +
         std::chrono::hours{hour} + std::chrono::minutes{minute} + std::chrono::seconds{second};
}

std::size_t RecordingLog::count(std::string_view part) const {
  return static_cast<std::size_t>(
      std::count_if(lines_->begin(), lines_->end(),
                    [&](const std::string& line) { return line.find(part) != std::string::npos; }));
}

AlertAnswer ScriptedAlerts::runModal(const NSAlert& alert) {
  state_->shown.push_back(alert);
  if (state_->happens) state_->happens();
  if (!state_->answers.empty()) {
    const AlertAnswer answer = state_->answers.front();
    state_->answers.pop_front();
    return answer;
  }
  if (!alert.otherButton.empty()) return AlertAnswer::other;
  return alert.alternateButton.empty() ? AlertAnswer::defaultButton : AlertAnswer::alternate;
}

Result<void> RecordingLauncher::launch(const std::string& executable,
                                       const std::vector<std::string>& arguments) {
  launches_->emplace_back(executable, arguments);
  return {};
}

}  // namespace annivo
