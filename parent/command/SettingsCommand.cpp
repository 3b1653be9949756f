// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"

namespace annivo {

void settingsCommand(CommandSession& session) {
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Dictionary values;
    for (const Setting& setting : settings()) values.emplace(setting.name, setting.fact(session));
    return console.writeJSON(values);
  }
  std::vector<std::vector<std::string>> rows{{translated("SETTING"), translated("VALUE")}};
  for (const Setting& setting : settings()) rows.push_back({setting.name, setting.show(session)});
  console.table(rows);
}

void showSettingCommand(CommandSession& session, const std::string& key) {
  const Setting& setting = settingNamed(key);
  const Console& console = session.console;
  if (console.json) {
    return console.writeJSON(
        PropertyList::Dictionary{{"name", key}, {"value", setting.fact(session)}});
  }
  console.line(printable(setting.show(session)));
  // TRANSLATORS: {1} is a setting's name, {2} says what it is.
  console.note(setting.set ? translated("{1}: {2}.", setting.name, setting.help)
                           : translated("{1}: {2}; it is only shown.", setting.name, setting.help));
}

void setSettingCommand(CommandSession& session, const std::string& key,
                       const std::vector<std::string>& values) {
  const Setting& setting = settingNamed(key);
  if (!setting.set) {
    throw Refusal{translated("\"{1}\" is not set here: it is {2}", key, setting.help)};
  }
  setting.set(session, values);
  session.console.line(key + ": " + printable(setting.show(session)));
}

void resetSettingCommand(CommandSession& session, const std::string& key) {
  const Setting& setting = settingNamed(key);
  if (!setting.reset) {
    throw Refusal{translated("\"{1}\" has no default to go back to", key)};
  }
  setting.reset(session);
  session.console.line(key + ": " + printable(setting.show(session)));
}

}  // namespace annivo
