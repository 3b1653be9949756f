// SPDX-License-Identifier: MIT
#include "platform/foundation/NSLocale.h"

#include <algorithm>

#include "base/Text.h"

namespace annivo {

namespace {

bool isTraditionalChinese(const std::string& tag) {
  static constexpr std::string_view kMarks[] = {"hant", "tw", "hk", "mo"};
  return tag.find("hans") == std::string::npos &&
         std::any_of(std::begin(kMarks), std::end(kMarks),
                     [&](std::string_view mark) { return tag.find(mark, 2) != std::string::npos; });
}

std::vector<std::string> split(const std::string& list) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    parts.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

/// The first of the variables that is set.
std::string languageVariable(const Environment& environment) {
  for (const char* variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (std::string value = environment(variable); !value.empty()) return value;
  }
  return "";
}

/// A tag as catalogues are named: "pt-BR" and "pt_BR.UTF-8" as "pt_BR". The two scripts of Chinese
/// have the names of the regions that write them.
std::string catalogueName(std::string_view tag) {
  const std::string language = bareLanguage(tag);
  if (language == "zh-Hans") return "zh_CN";
  if (language == "zh-Hant") return "zh_TW";
  std::string name(tag.substr(0, tag.find('.')));
  for (char& c : name) {
    if (c == '-') c = '_';
  }
  return language.empty() ? "" : name;
}

}  // namespace

std::string bareLanguage(std::string_view tag) {
  const std::string name = lowerCased(tag.substr(0, tag.find_first_of(".@")));
  std::string language = name.substr(0, name.find_first_of("_-"));
  const bool letters =
      std::all_of(language.begin(), language.end(), [](char c) { return c >= 'a' && c <= 'z'; });
  if (!letters || language.size() < 2 || language.size() > 3) return "";
  if (language == "zh") return isTraditionalChinese(name) ? "zh-Hant" : "zh-Hans";
  return language;
}

std::vector<std::string> preferredLanguages(const PropertyList& appleLanguages,
                                            const Environment& environment) {
  std::vector<std::string> languages;
  if (appleLanguages.array()) {
    for (const PropertyList& language : *appleLanguages.array()) {
      if (language.string() && !language.string()->empty()) {
        languages.push_back(*language.string());
      }
    }
    if (!languages.empty()) return languages;
  }
  for (const std::string& tag : split(languageVariable(environment))) {
    std::string language = bareLanguage(tag);
    if (!language.empty() &&
        std::find(languages.begin(), languages.end(), language) == languages.end()) {
      languages.push_back(std::move(language));
    }
  }
  if (languages.empty()) languages.emplace_back("en");
  return languages;
}

std::string catalogueLanguages(const Environment& environment) {
  std::string names;
  for (const std::string& tag : split(languageVariable(environment))) {
    // English is what the texts are written in: there is no catalogue to be found for it, and none
    // of a language after it is wanted.
    if (bareLanguage(tag) == "en") break;
    if (const std::string name = catalogueName(tag); !name.empty()) names += name + ':';
  }
  return names + "C";
}

}  // namespace annivo
