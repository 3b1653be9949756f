// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "parent/settings/Session.h"

namespace annivo {

/// One preference that the agent reads, by its friendly name.
struct Setting {
  std::string name;
  std::string help;  ///< what it is, and what values it takes
  /// The value in force, for people.
  std::function<std::string(Session&)> show;
  /// The same for programs, in every language alike.
  std::function<PropertyList(Session&)> fact;
  /// Checks and stores a value of one or more words; throws Refusal. Absent: it cannot be set.
  std::function<void(Session&, const std::vector<std::string>&)> set;
  /// Back to the default; absent where there is nothing to go back to.
  std::function<void(Session&)> reset;
  /// Words that can stand as a value, for completion; may be absent.
  std::function<std::vector<std::string>(Session&)> values;
};

[[nodiscard]] const std::vector<Setting>& settings();
/// Throws Refusal with the names there are.
[[nodiscard]] const Setting& settingNamed(const std::string& name);

// The settings of which calendars, contacts and titles, made in files of their own.
[[nodiscard]] std::vector<Setting> contactSettings();
[[nodiscard]] std::vector<Setting> titleSettings();
[[nodiscard]] std::vector<Setting> alarmSettings();
[[nodiscard]] std::vector<Setting> agentSettings();

}  // namespace annivo
