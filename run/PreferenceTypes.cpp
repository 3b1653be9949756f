// SPDX-License-Identifier: MIT
#include "run/PreferenceTypes.h"

#include <algorithm>
#include <span>

namespace annivo {

namespace {

struct Type {
  const char* name;  ///< as the log names it, after "is no"
  bool (*matches)(const PropertyList& value);
};

bool isText(const PropertyList& value) { return value.string() != nullptr; }
bool isBoolean(const PropertyList& value) { return value.boolean() != nullptr; }
bool isDate(const PropertyList& value) { return value.date() != nullptr; }
bool isWholeNumber(const PropertyList& value) { return value.integer() != nullptr; }

bool isListOf(const PropertyList& value, bool (*isElement)(const PropertyList&)) {
  return value.array() && std::all_of(value.array()->begin(), value.array()->end(), isElement);
}
bool isListOfTexts(const PropertyList& value) { return isListOf(value, isText); }

bool isAlarm(const PropertyList& row) {
  const auto isAbsentOr = [&row](const char* key, bool (*matches)(const PropertyList&)) {
    return row[key].isNil() || matches(row[key]);
  };
  return row.dictionary() && isAbsentOr(keys::kRowType, isText) &&
         isAbsentOr(keys::kRowDays, isText) && isAbsentOr(keys::kRowTime, isDate) &&
         isAbsentOr(keys::kRowBirth, isBoolean) && isAbsentOr(keys::kRowAnni, isBoolean);
}
bool isAlarmTable(const PropertyList& value) { return isListOf(value, isAlarm); }

/// Everything that has an integer value: the switch goes by that.
bool isSwitchNumber(const PropertyList& value) {
  return isWholeNumber(value) || value.real() || isText(value) || isBoolean(value);
}

constexpr Type kText{"text", isText};
constexpr Type kBoolean{"boolean", isBoolean};
constexpr Type kDate{"date", isDate};
constexpr Type kWholeNumber{"whole number", isWholeNumber};
constexpr Type kListOfTexts{"list of texts", isListOfTexts};
constexpr Type kAlarmTable{"list of alarms", isAlarmTable};
constexpr Type kSwitchNumber{"number", isSwitchNumber};

struct TypedKey {
  const char* key;
  Type type;
};

constexpr TypedKey kParentKeys[] = {{keys::kBirthCalTitle, kText},
                                    {keys::kAneeCalTitle, kText},
                                    {keys::kBirthCalUID, kText},
                                    {keys::kAneeCalUID, kText},
                                    {keys::kSelectedGroup, kText},
                                    {keys::kAppRunning, kBoolean},
                                    {keys::kTitleBirthdays, kListOfTexts},
                                    {keys::kTitleAnniversaries, kListOfTexts},
                                    {keys::kAlarmTable, kAlarmTable},
                                    {keys::kSetEmail, kText},
                                    {keys::kAlarmFilePath, kText},
                                    {keys::kSelectedSystemSound, kText},
                                    {keys::kSUScheduledCheckInterval, kWholeNumber},
                                    {keys::kSULastCheckTime, kDate},
                                    {keys::kSUEnableAutomaticChecks, kBoolean},
                                    {keys::kLastLaunched, kDate},
                                    {keys::kTheLabels, kListOfTexts},
                                    {keys::kSelectedGroupUID, kText}};

constexpr TypedKey kOwnKeys[] = {
    {keys::kLastUpdate, kDate}, {keys::kAlarmSet, kText}, {keys::kDoLog, kSwitchNumber}};

void report(Platform& platform, const char* domain, std::span<const TypedKey> keys) {
  const auto& stored = platform.standardUserDefaults().persistentDomainForName(domain);
  if (!stored) return;
  for (const auto& [key, type] : keys) {
    const auto found = stored->find(key);
    if (found != stored->end() && !type.matches(found->second)) {
      platform.preferenceDomains().reportType(domain, key, type.name);
    }
  }
}

}  // namespace

void reportParentTypes(Platform& platform) { report(platform, kParentDomain, kParentKeys); }
void reportOwnTypes(Platform& platform) { report(platform, kAgentDomain, kOwnKeys); }

}  // namespace annivo
