// SPDX-License-Identifier: MIT
#include "format/OrdinalNumber.h"

namespace annivo {

namespace {

constexpr std::string_view kDegreeSign = "\u00B0";

std::string_view englishSuffix(std::int64_t number) {
  if (number / 10 % 10 == 1) return "th";
  switch (number % 10) {
    case 1:
      return "st";
    case 2:
      return "nd";
    case 3:
      return "rd";
    default:
      return "th";
  }
}

std::string_view suffix(std::int64_t number, std::string_view language) {
  if (language == "es" || language == "it" || language == "pt") return kDegreeSign;
  if (language == "de") return ".";
  if (language == "fr") return number == 1 ? "er" : "e";
  return englishSuffix(number);
}

}  // namespace

std::string ordinalNumberFormat(std::int64_t number, std::string_view language) {
  if (number == 0) return {};
  return std::to_string(number).append(suffix(number, language));
}

}  // namespace annivo
