// SPDX-License-Identifier: MIT
#include "run/AnvCalPrefs.h"

#include "calendar/AlarmKind.h"
#include "contacts/ZPKAddressBookDates.h"
#include "run/PreferenceTypes.h"

namespace annivo {

namespace {

PropertyList alarmRow(AlarmKind kind, const char* days, Date time, bool selected) {
  return PropertyList::Dictionary{{keys::kRowType, storedText(kind)},
                                  {keys::kRowDays, days},
                                  {keys::kRowTime, time},
                                  {keys::kRowBirth, selected},
                                  {keys::kRowAnni, selected}};
}

PropertyList defaultAlarmTable(Platform& platform) {
  const NSTimeZone& zone = platform.defaultTimeZone();
  CivilTime eightToday = zone.civil(platform.clock().now());
  eightToday = {
      .year = eightToday.year, .month = eightToday.month, .day = eightToday.day, .hour = 8};
  const Date time = zone.date(eightToday);
  PropertyList::Array rows{alarmRow(AlarmKind::message, "2", time, true)};
  rows.resize(5, alarmRow(AlarmKind::none, "0", time, false));
  return rows;
}

const PropertyList& defaultTemplate() {
  static const PropertyList kTemplate =
      PropertyList::Array{"First name", "Last name", ":", "ordinal age", "type"};
  return kTemplate;
}

/// The default under a key; nil for a key that has none.
PropertyList defaultFor(const std::string& key, Platform& platform) {
  if (key == keys::kBirthCalTitle || key == keys::kAneeCalTitle) {
    // The birthday calendar is deliberately named after anniversaries too: with equal titles both
    // kinds of date share one calendar.
    return ZPKAddressBookDates::localizedAnniversaryString(platform);
  }
  if (key == keys::kBirthCalUID || key == keys::kAneeCalUID) return "";
  if (key == keys::kSelectedGroup) return " ";
  if (key == keys::kAppRunning) return true;
  if (key == keys::kTitleBirthdays || key == keys::kTitleAnniversaries) return defaultTemplate();
  if (key == keys::kAlarmTable) return defaultAlarmTable(platform);
  if (key == keys::kSetEmail) return ZPKAddressBookDates::userPrimaryEmail(platform);
  if (key == keys::kAlarmFilePath) return platform.homeDirectory();
  if (key == keys::kSelectedSystemSound) return "Basso";
  return {};
}

/// All but the e-mail address.
constexpr const char* kKeysWithDefaults[] = {
    keys::kBirthCalTitle,  keys::kAneeCalTitle,       keys::kBirthCalUID,
    keys::kAneeCalUID,     keys::kSelectedGroup,      keys::kAppRunning,
    keys::kTitleBirthdays, keys::kTitleAnniversaries, keys::kAlarmTable,
    keys::kAlarmFilePath,  keys::kSelectedSystemSound};

}  // namespace

const PropertyList::Dictionary& AnvCalPrefs::allButEmail() {
  if (allButEmail_) return *allButEmail_;
  PropertyList::Dictionary values;
  if (const auto& stored =
          platform_.standardUserDefaults().persistentDomainForName(kParentDomain)) {
    values = *stored;
    reportParentTypes(platform_);
  }
  // A default that a stored value replaces is not computed, because the e-mail address and the
  // titles take a look-up.
  for (const char* key : kKeysWithDefaults) {
    if (!values.contains(key)) values.emplace(key, defaultFor(key, platform_));
  }
  return allButEmail_.emplace(std::move(values));
}

const PropertyList& AnvCalPrefs::prefs() {
  if (appPrefs) return *appPrefs;
  PropertyList::Dictionary values = allButEmail();
  if (!values.contains(keys::kSetEmail))
    values.emplace(keys::kSetEmail, defaultFor(keys::kSetEmail, platform_));
  return appPrefs.emplace(std::move(values));
}

const PropertyList& AnvCalPrefs::valueForKey(const std::string& key) {
  static const PropertyList nil;
  if (key == keys::kSetEmail) return prefs()[key];
  const auto found = allButEmail().find(key);
  return found == allButEmail().end() ? nil : found->second;
}

std::string AnvCalPrefs::text(const std::string& key) {
  const PropertyList& value = valueForKey(key);
  return value.string() ? *value.string() : defaultFor(key, platform_).stringOr("");
}

std::vector<std::string> AnvCalPrefs::texts(const std::string& key) {
  PropertyList value = valueForKey(key);
  if (!value.array()) value = defaultFor(key, platform_);
  std::vector<std::string> texts;
  if (!value.array()) return texts;
  for (const PropertyList& element : *value.array()) {
    if (element.string()) texts.push_back(*element.string());
  }
  return texts;
}

}  // namespace annivo
