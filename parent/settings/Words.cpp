// SPDX-License-Identifier: MIT
#include "parent/settings/Words.h"

#include <array>
#include <cstdio>

#include "base/Digits.h"
#include "base/StoredDay.h"
#include "base/Unicode.h"

namespace annivo {

std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : repairedUTF8(text)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      shown += c;
    } else {
      shown += c == '\n' || c == '\t' ? std::string(" ") : "\\x" + hexDigits(byte, 2);
    }
  }
  // C1 controls, which some terminals obey, are two bytes in UTF-8.
  for (std::size_t at = 0; (at = shown.find('\xC2', at)) != shown.npos; ++at) {
    if (at + 1 < shown.size() && static_cast<unsigned char>(shown[at + 1]) < 0xA0) {
      shown.replace(at, 2, "\\u" + hexDigits(static_cast<unsigned char>(shown[at + 1]), 4));
    }
  }
  return shown;
}

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

std::string listed(const std::vector<std::string>& words, std::string_view conjunction) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? ' ' + std::string(conjunction) + ' ' : ", ";
    text += words[i];
  }
  return text;
}

std::string shownDay(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  std::array<char, 48> text{};
  if (civil.year == kYearOfNoYear) {
    std::snprintf(text.data(), text.size(), "--%02d-%02d", civil.month, civil.day);
  } else {
    std::snprintf(text.data(), text.size(), "%04lld-%02d-%02d", static_cast<long long>(civil.year),
                  civil.month, civil.day);
  }
  return text.data();
}

std::string shownMoment(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), " %02d:%02d", civil.hour, civil.minute);
  return shownDay(date, zone) + text.data();
}

}  // namespace annivo
