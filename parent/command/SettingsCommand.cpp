// SPDX-License-Identifier: MIT
#include "parent/command/Commands.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"

namespace annivo {

void settingsCommand(CommandSession& session) {
  const Console& console = session.console;
  if (console.json) {
    PropertyList::Dictionary values;
    for (const Setting& setting : settings()) values.emplace(setting.name, setting.show(session));
    return console.writeJSON(values);
  }
  std::vector<std::vector<std::string>> rows{{"SETTING", "VALUE"}};
  for (const Setting& setting : settings()) rows.push_back({setting.name, setting.show(session)});
  console.table(rows);
}

void showSettingCommand(CommandSession& session, const std::string& key) {
  const Setting& setting = settingNamed(key);
  const Console& console = session.console;
  if (console.json) {
    return console.writeJSON(PropertyList::Dictionary{
        {"name", key}, {"value", setting.show(session)}, {"help", setting.help}});
  }
  console.line(printable(setting.show(session)));
  console.note(setting.name + ": " + setting.help + (setting.set ? "." : "; it is only shown."));
}

void setSettingCommand(CommandSession& session, const std::string& key,
                       const std::vector<std::string>& values) {
  const Setting& setting = settingNamed(key);
  if (!setting.set) throw Refusal{"\"" + key + "\" is not set here: it is " + setting.help};
  setting.set(session, values);
  session.console.line(key + ": " + printable(setting.show(session)));
}

void resetSettingCommand(CommandSession& session, const std::string& key) {
  const Setting& setting = settingNamed(key);
  if (!setting.reset) throw Refusal{"\"" + key + "\" has no default to go back to"};
  setting.reset(session);
  session.console.line(key + ": " + printable(setting.show(session)));
}

}  // namespace annivo
