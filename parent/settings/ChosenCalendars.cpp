// SPDX-License-Identifier: MIT
#include "parent/settings/ChosenCalendars.h"

namespace annivo {

namespace {

std::optional<ChosenCalendar> chosen(AnvCalPrefs& prefs, const char* uidKey, const char* titleKey) {
  const std::string uid = prefs.text(uidKey);
  if (uid.empty()) return std::nullopt;
  return ChosenCalendar{uid, prefs.text(titleKey)};
}

}  // namespace

ChosenCalendars chosenCalendars(AnvCalPrefs& prefs) {
  return {chosen(prefs, "birthCalUID", "birthCalTitle"),
          chosen(prefs, "aneeCalUID", "aneeCalTitle")};
}

PropertyList::Dictionary calendarPreferences(const ChosenCalendars& chosen) {
  const auto& [birthdays, anniversaries] = chosen;
  PropertyList::Dictionary values{{"birthCalUID", birthdays ? birthdays->uid : ""},
                                  {"aneeCalUID", anniversaries ? anniversaries->uid : ""},
                                  {"birthCalTitle", PropertyList()},
                                  {"aneeCalTitle", PropertyList()}};
  if (!birthdays && !anniversaries) return values;
  const std::string title = birthdays ? birthdays->title : anniversaries->title;
  values["birthCalTitle"] = birthdays ? title : title + " (birthdays)";
  if (!anniversaries) {
    values["aneeCalTitle"] = title + " (anniversaries)";
  } else if (birthdays && birthdays->uid != anniversaries->uid && title == anniversaries->title) {
    values["aneeCalTitle"] = anniversaries->title + " (anniversaries)";
  } else {
    values["aneeCalTitle"] =
        birthdays && birthdays->uid == anniversaries->uid ? title : anniversaries->title;
  }
  return values;
}

}  // namespace annivo
