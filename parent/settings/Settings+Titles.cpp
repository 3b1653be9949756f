// SPDX-License-Identifier: MIT
#include "base/Translation.h"
#include "parent/settings/Settings.h"
#include "parent/settings/TitleChoice.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

namespace {

Setting titleSetting(const std::string& name, CalendarType type) {
  const char* key = textsOf(type).titleTemplateKey;
  return {.name = name,
          .help = translated(
              "the title of events, such as \"{first name} {last name}: {ordinal age} {type}\""),
          .show =
              [key, type](Session& session) {
                AnvCalPrefs prefs(session.platform);
                const auto titleFormat = prefs.texts(key);
                return templateText(titleFormat) + "  (\"" +
                       exampleTitle(session.platform, type, titleFormat) + "\")";
              },
          .fact = [key, type](Session& session) -> PropertyList {
            AnvCalPrefs prefs(session.platform);
            const auto titleFormat = prefs.texts(key);
            return PropertyList::Dictionary{
                {"elements", PropertyList::Array(titleFormat.begin(), titleFormat.end())},
                {"template", templateText(titleFormat)},
                {"example", exampleTitle(session.platform, type, titleFormat)}};
          },
          .set =
              [key](Session& session, const std::vector<std::string>& words) {
                const auto elements = templateFromWords(words);
                if (!elements) throw Refusal{elements.error().description};
                PropertyList::Array stored(elements->begin(), elements->end());
                storeChoices(session, {{key, stored}});
              },
          .reset =
              [key](Session& session) {
                storeChoices(session, {{key, PropertyList()}});
              },
          .values = [](Session&) { return tokenWords(); }};
}

}  // namespace

std::vector<Setting> titleSettings() {
  return {titleSetting("birthday-title", CalendarType::birthdays),
          titleSetting("anniversary-title", CalendarType::anniversaries)};
}

}  // namespace annivo
