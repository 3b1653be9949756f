// SPDX-License-Identifier: MIT
#include "run/AnvCalPrefs.h"

#include "contacts/ZPKAddressBookDates.h"

namespace annivo {

namespace {

PropertyList alarmRow(const char* type, const char* days, Date time, bool selected) {
  return PropertyList::Dictionary{
      {"type", type}, {"days", days}, {"time", time}, {"birth", selected}, {"anni", selected}};
}

PropertyList defaultAlarmTable(Platform& platform) {
  const NSTimeZone& zone = platform.defaultTimeZone();
  CivilTime eightToday = zone.civil(platform.clock().now());
  eightToday = {
      .year = eightToday.year, .month = eightToday.month, .day = eightToday.day, .hour = 8};
  const Date time = zone.date(eightToday);
  PropertyList::Array rows{alarmRow("Message", "2", time, true)};
  rows.resize(5, alarmRow("None", "0", time, false));
  return rows;
}

const PropertyList& defaultTemplate() {
  static const PropertyList kTemplate =
      PropertyList::Array{"First name", "Last name", ":", "ordinal age", "type"};
  return kTemplate;
}

/// The default under a key; nil for a key that has none.
PropertyList defaultFor(const std::string& key, Platform& platform) {
  if (key == "birthCalTitle" || key == "aneeCalTitle") {
    // The birthday calendar is deliberately named after anniversaries too: with equal titles both
    // kinds of date share one calendar.
    return ZPKAddressBookDates::localizedAnniversaryString(platform);
  }
  if (key == "birthCalUID" || key == "aneeCalUID") return "";
  if (key == "selectedGroup") return " ";
  if (key == "appRunning") return true;
  if (key == "titleBirthdays" || key == "titleAnniversaries") return defaultTemplate();
  if (key == "alarmTable") return defaultAlarmTable(platform);
  if (key == "setEmail") return ZPKAddressBookDates::userPrimaryEmail(platform);
  if (key == "alarmFilePath") return platform.homeDirectory();
  if (key == "selectedSystemSound") return "Basso";
  return {};
}

constexpr const char* kKeysWithDefaults[] = {
    "birthCalTitle", "aneeCalTitle", "birthCalUID",    "aneeCalUID",
    "selectedGroup", "appRunning",   "titleBirthdays", "titleAnniversaries",
    "alarmTable",    "setEmail",     "alarmFilePath",  "selectedSystemSound"};

}  // namespace

const PropertyList& AnvCalPrefs::prefs() {
  if (appPrefs) return *appPrefs;
  PropertyList::Dictionary values;
  if (const auto& stored =
          platform_.standardUserDefaults().persistentDomainForName(kParentDomain)) {
    values = *stored;
  }
  // A default that the parent's own value hides is not made: the e-mail address and the titles have
  // to be looked up.
  for (const char* key : kKeysWithDefaults) {
    if (!values.contains(key)) values.emplace(key, defaultFor(key, platform_));
  }
  appPrefs.emplace(std::move(values));
  return *appPrefs;
}

std::string AnvCalPrefs::text(const std::string& key) {
  const PropertyList& value = prefs()[key];
  if (value.string()) return *value.string();
  if (!value.isNil()) report(key, "text");
  return defaultFor(key, platform_).stringOr("");
}

std::vector<std::string> AnvCalPrefs::texts(const std::string& key) {
  PropertyList value = prefs()[key];
  if (!value.array()) {
    if (!value.isNil()) report(key, "list of texts");
    value = defaultFor(key, platform_);
  }
  std::vector<std::string> texts;
  if (!value.array()) return texts;
  for (const PropertyList& element : *value.array()) {
    if (element.string()) {
      texts.push_back(*element.string());
    } else {
      report(key, "list of texts");
    }
  }
  return texts;
}

void AnvCalPrefs::report(const std::string& key, const std::string& expected) {
  if (!reported_.insert(key).second) return;
  platform_.log().write(platform_.preferenceDomains().path(kParentDomain) + ": the value of \"" +
                        key + "\" is no " + expected + "; it is left as it is and not used");
}

}  // namespace annivo
