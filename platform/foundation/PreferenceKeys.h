// SPDX-License-Identifier: MIT
#pragma once

namespace annivo {

/// The names under which the two programs keep their preferences.
inline constexpr const char* kParentDomain = "org.annivo.Annivo2";
inline constexpr const char* kAgentDomain = "org.annivo.Annivo2.Agent";

/// Every key of the preferences, once. Each line says the type and, where there is one, the default
/// of a value that is not stored. People and other programs store them too: a value may be missing
/// or of another type.
namespace keys {

// The parent's domain. AnvCalPrefs supplies the defaults.

/// Text: title of the birthday calendar. Default: the person's word for anniversary.
inline constexpr const char* kBirthCalTitle = "birthCalTitle";
/// Text: title of the anniversary calendar. Default: the same word; equal titles mean that both
/// kinds of date share one calendar.
inline constexpr const char* kAneeCalTitle = "aneeCalTitle";
/// Text: UID of the birthday calendar. Default: "", which means that no birthdays are written.
inline constexpr const char* kBirthCalUID = "birthCalUID";
/// Text: UID of the anniversary calendar. Default: "", which means that none are written.
inline constexpr const char* kAneeCalUID = "aneeCalUID";
/// Text: name of the chosen group, for showing only. Default: " ".
inline constexpr const char* kSelectedGroup = "selectedGroup";
/// Boolean: the agent is switched on. Default: true. Anything but true makes a run empty the
/// calendars; a run that does so stores false.
inline constexpr const char* kAppRunning = "appRunning";
/// List of texts: title template of birthday events. Default: name, colon, ordinal age, type.
inline constexpr const char* kTitleBirthdays = "titleBirthdays";
/// List of texts: title template of all other events. Default: the same.
inline constexpr const char* kTitleAnniversaries = "titleAnniversaries";
/// List of five rows (see kRowType and below): the alarms. Default: one message two days before at
/// 8 am, for both kinds of date, and four free rows.
inline constexpr const char* kAlarmTable = "alarmTable";
/// Text: where e-mail alarms go. Default: the primary address of the person's own card.
inline constexpr const char* kSetEmail = "setEmail";
/// Text: path of what an alarm opens. Default: the home folder.
inline constexpr const char* kAlarmFilePath = "alarmFilePath";
/// Text: name of the sound of an alarm. Default: "Basso".
inline constexpr const char* kSelectedSystemSound = "selectedSystemSound";
/// Date: when the parent was last launched; a later one than the last run makes the next a pass.
inline constexpr const char* kLastLaunched = "lastLaunched";
/// List of texts: the date labels that are left out. Not stored: none.
inline constexpr const char* kTheLabels = "theLabels";
/// Text: UID of the chosen group. Not stored: everybody.
inline constexpr const char* kSelectedGroupUID = "selectedGroupUID";

// A row of the alarm table.

/// Text: the kind of alarm; "None" for a free row.
inline constexpr const char* kRowType = "type";
/// Text that holds a whole number: days before the event's day.
inline constexpr const char* kRowDays = "days";
/// Date: the alarm's time of day, measured on that date's own day.
inline constexpr const char* kRowTime = "time";
/// Boolean: for birthdays. Only the boolean true counts.
inline constexpr const char* kRowBirth = "birth";
/// Boolean: for anniversaries and all other dates. Only the boolean true counts.
inline constexpr const char* kRowAnni = "anni";

// The parent's domain, as the update framework knows it.

/// Integer, seconds between two update checks. Not stored: a week.
inline constexpr const char* kSUScheduledCheckInterval = "SUScheduledCheckInterval";
/// Date of the last update check. Not stored: now, so that none is due.
inline constexpr const char* kSULastCheckTime = "SULastCheckTime";
/// Boolean: whether runs check for updates. Not stored: false.
inline constexpr const char* kSUEnableAutomaticChecks = "SUEnableAutomaticChecks";
/// Text: address of the feed. Not stored: the one of the same key in the parent's Info.plist.
inline constexpr const char* kSUFeedURL = "SUFeedURL";
/// Text: the version that the person does not want. Not stored: none.
inline constexpr const char* kSUSkippedVersion = "SUSkippedVersion";

// The agent's own domain.

/// Date: end of the last full pass. Registered: 1 January 1970.
inline constexpr const char* kLastUpdate = "lastUpdate";
/// Text: "1" orders the next run to empty the calendars. Registered: "0".
inline constexpr const char* kAlarmSet = "alarmSet";
/// Integer: 1 turns logging on. Not stored: off.
inline constexpr const char* kDoLog = "doLog";

// The global domain.

/// List of texts: the person's languages, most wanted first.
inline constexpr const char* kAppleLanguages = "AppleLanguages";

}  // namespace keys

}  // namespace annivo
