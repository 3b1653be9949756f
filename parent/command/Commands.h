// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calendar/AlarmKind.h"
#include "parent/command/Console.h"
#include "parent/settings/DateKind.h"
#include "parent/sources/Import.h"

namespace annivo {

// One function a command. Each throws Refusal when it cannot do what it is asked.

void importCommand(CommandSession& session, const ImportRequest& request);

void peopleCommand(CommandSession& session);
void groupsCommand(CommandSession& session);
void labelsCommand(CommandSession& session);

void calendarsCommand(CommandSession& session);
/// `calendar` is a UID or a title.
void chooseCalendarCommand(CommandSession& session, DateKind kind, const std::string& calendar);
void createCalendarCommand(CommandSession& session, const std::string& title,
                           std::optional<DateKind> kind);
void noCalendarCommand(CommandSession& session, DateKind kind);

void settingsCommand(CommandSession& session);
void showSettingCommand(CommandSession& session, const std::string& key);
void setSettingCommand(CommandSession& session, const std::string& key,
                       const std::vector<std::string>& values);
/// Back to the default.
void resetSettingCommand(CommandSession& session, const std::string& key);

struct NewAlarm {
  AlarmKind kind = AlarmKind::message;
  int days = 0;
  std::string time = "08:00";
  DateKind dates = DateKind::both;
};
void alarmsCommand(CommandSession& session);
void addAlarmCommand(CommandSession& session, const NewAlarm& alarm);
void removeAlarmCommand(CommandSession& session, int number);

void previewCommand(CommandSession& session);
void runCommand(CommandSession& session);

void listCommand(CommandSession& session, const std::optional<std::string>& from, int days);

void statusCommand(CommandSession& session);
void onCommand(CommandSession& session);
void offCommand(CommandSession& session);

void installServiceCommand(CommandSession& session);
void removeServiceCommand(CommandSession& session);
void printServiceCommand(CommandSession& session);

/// What the parent application does when it is launched: records it and tells of a new version.
void launchedCommand(CommandSession& session);

}  // namespace annivo
