// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "parent/settings/Session.h"
#include "parent/sources/Import.h"

namespace annivo {

// One function a command. Each throws Refusal when it cannot do what it is asked.

void importCommand(Session& session, const ImportRequest& request);

void peopleCommand(Session& session);
void groupsCommand(Session& session);
void labelsCommand(Session& session);

void calendarsCommand(Session& session);
/// `kind` is "birthdays", "anniversaries" or "both"; `calendar` a UID or a title.
void chooseCalendarCommand(Session& session, const std::string& kind, const std::string& calendar);
void createCalendarCommand(Session& session, const std::string& title,
                           const std::optional<std::string>& kind);
void noCalendarCommand(Session& session, const std::string& kind);

void settingsCommand(Session& session);
void showSettingCommand(Session& session, const std::string& key);
void setSettingCommand(Session& session, const std::string& key,
                       const std::vector<std::string>& values);
/// Back to the default.
void resetSettingCommand(Session& session, const std::string& key);

struct NewAlarm {
  std::string kind;  ///< "message", "email", "sound" or "file"
  int days = 0;
  std::string time = "08:00";
  std::string dates = "both";  ///< "birthdays", "anniversaries" or "both"
};
void alarmsCommand(Session& session);
void addAlarmCommand(Session& session, const NewAlarm& alarm);
void removeAlarmCommand(Session& session, int number);

void previewCommand(Session& session);
void runCommand(Session& session);

void listCommand(Session& session, const std::optional<std::string>& from, int days);

void statusCommand(Session& session);
void onCommand(Session& session);
void offCommand(Session& session);

void installServiceCommand(Session& session);
void removeServiceCommand(Session& session);
void printServiceCommand(Session& session);

/// What the parent application does when it is launched: records it and tells of a new version.
void launchedCommand(Session& session);

}  // namespace annivo
