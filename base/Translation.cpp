// SPDX-License-Identifier: MIT
#include "base/Translation.h"

#include <libintl.h>

#include <clocale>
#include <cstdlib>

namespace annivo {

namespace {

constexpr const char* kDomain = "annivo";

}  // namespace

void chooseLanguage(const std::string& languages, const std::string& folder) {
  // Under "C" gettext answers in English whatever LANGUAGE says; this locale is part of libc.
  if (!std::setlocale(LC_MESSAGES, "C.UTF-8")) return;
  setenv("LANGUAGE", languages.c_str(), 1);
  bindtextdomain(kDomain, folder.c_str());
  bind_textdomain_codeset(kDomain, "UTF-8");
}

std::string translated(const char* english) { return dgettext(kDomain, english); }

std::string translatedCount(std::size_t count, const char* one, const char* many) {
  return dngettext(kDomain, one, many, count);
}

std::string filled(std::string_view text, std::initializer_list<std::string_view> values) {
  std::string result;
  while (!text.empty()) {
    const std::size_t number =
        text.size() > 2 && text[0] == '{' && text[2] == '}' && text[1] >= '1' && text[1] <= '9'
            ? static_cast<std::size_t>(text[1] - '0')
            : 0;
    if (number == 0 || number > values.size()) {
      result += text.front();
      text.remove_prefix(1);
    } else {
      result += values.begin()[number - 1];
      text.remove_prefix(3);
    }
  }
  return result;
}

}  // namespace annivo
