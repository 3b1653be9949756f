// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace annivo {

// The one seam for texts that a person reads. A text is written in English where it is used, whole,
// with {1}, {2} … where its values go, so that a translation may put them in another order. Log
// lines, keys, JSON and the texts of the alerts that are part of the agent's behaviour do not go
// through it.

/// Chooses the language of all texts, whatever locales are installed: the first of `languages` (as
/// gettext wants them, "pt_BR:fr:C") for which `folder` holds a catalogue
/// ("<folder>/fr/LC_MESSAGES/annivo.mo"), else English. Called once, before any other thread and
/// any text; sets LANGUAGE for this process and those it starts.
void chooseLanguage(const std::string& languages, const std::string& folder);

/// Marks a text that is translated elsewhere, where it is used.
[[nodiscard]] constexpr const char* toTranslate(const char* english) { return english; }
/// `english` in the person's language.
[[nodiscard]] std::string translated(const char* english);
/// `text` with each {1}, {2} … replaced by that value; any other brace stays.
[[nodiscard]] std::string filled(std::string_view text,
                                 std::initializer_list<std::string_view> values);
/// The text in the person's language with its values.
template <typename... Values>
[[nodiscard]] std::string translated(const char* english, const Values&... values) {
  return filled(translated(english), {std::string_view(values)...});
}
/// The form of a text that goes with a count: "{1} person", "{1} people". {1} is the count, {2} …
/// are the values.
[[nodiscard]] std::string translatedCount(std::size_t count, const char* one, const char* many);
template <typename... Values>
[[nodiscard]] std::string counted(std::size_t count, const char* one, const char* many,
                                  const Values&... values) {
  const std::string number = std::to_string(count);
  return filled(translatedCount(count, one, many), {number, std::string_view(values)...});
}

}  // namespace annivo
