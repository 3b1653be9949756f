// SPDX-License-Identifier: MIT
#include "parent/settings/Settings.h"

#include <algorithm>

#include "parent/settings/ChosenCalendars.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

Setting calendarSetting(const std::string& name, CalendarType type) {
  const DateKind kind = dateKindOf(type);
  return {.name = name,
          .help = translated(textFor(
              kind, toTranslate("the calendar for birthdays: its title or UID, or none"),
              toTranslate("the calendar for anniversaries: its title or UID, or none"), "")),
          .show =
              [type](Session& session) {
                AnvCalPrefs prefs(session.platform);
                const ChosenCalendars chosen = chosenCalendars(prefs);
                const auto& calendar =
                    type == CalendarType::birthdays ? chosen.birthdays : chosen.anniversaries;
                if (!calendar) return std::string("none");
                const auto found =
                    session.platform.defaultCalendarStore().calendarWithUID(calendar->uid);
                return found ? found->title()
                             : translated("{1} (the next run makes it)", calendar->title);
              },
          .fact = [type](Session& session) -> PropertyList {
            AnvCalPrefs prefs(session.platform);
            const ChosenCalendars chosen = chosenCalendars(prefs);
            const auto& calendar =
                type == CalendarType::birthdays ? chosen.birthdays : chosen.anniversaries;
            if (!calendar) return {};
            const auto found =
                session.platform.defaultCalendarStore().calendarWithUID(calendar->uid);
            return PropertyList::Dictionary{{"title", found ? found->title() : calendar->title},
                                            {"uid", calendar->uid},
                                            {"exists", found != nullptr}};
          },
          .set =
              [kind](Session& session, const std::vector<std::string>& words) {
                if (words.size() != 1) throw Refusal{translated("give one calendar")};
                if (words.front() == "none") return chooseNoCalendar(session, kind);
                chooseCalendar(session, kind, words.front());
              },
          .reset = [kind](Session& session) { chooseNoCalendar(session, kind); },
          .values =
              [](Session& session) {
                std::vector<std::string> titles{"none"};
                for (const auto& calendar : session.platform.defaultCalendarStore().calendars()) {
                  titles.push_back(calendar->title());
                }
                return titles;
              }};
}

}  // namespace

const std::vector<Setting>& settings() {
  static const std::vector<Setting> kSettings = [] {
    std::vector<Setting> all{calendarSetting("birthday-calendar", CalendarType::birthdays),
                             calendarSetting("anniversary-calendar", CalendarType::anniversaries)};
    for (auto part : {titleSettings(), contactSettings(), alarmSettings(), agentSettings()}) {
      std::move(part.begin(), part.end(), std::back_inserter(all));
    }
    return all;
  }();
  return kSettings;
}

const Setting& settingNamed(const std::string& name) {
  std::vector<std::string> names;
  for (const Setting& setting : settings()) {
    if (setting.name == name) return setting;
    names.push_back(setting.name);
  }
  throw Refusal{translated("there is no setting \"{1}\"; there are {2}", name, listed(names))};
}

}  // namespace annivo
