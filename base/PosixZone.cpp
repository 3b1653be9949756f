// SPDX-License-Identifier: MIT
#include "base/PosixZone.h"

#include <algorithm>
#include <array>

#include "base/Digits.h"

namespace annivo {

namespace {

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Takes the zone's abbreviation off the front of `rest`: three letters or more, or "<...>".
bool takeAbbreviation(std::string_view& rest) {
  if (rest.starts_with('<')) {
    const auto end = rest.find('>');
    if (end == std::string_view::npos || end < 4) return false;
    rest.remove_prefix(end + 1);
    return true;
  }
  const auto end = std::find_if_not(rest.begin(), rest.end(), isLetter);
  const auto length = end - rest.begin();
  rest.remove_prefix(static_cast<std::size_t>(length));
  return length >= 3;
}

/// Takes a number of one or two digits.
std::optional<int> takeNumber(std::string_view& rest) {
  if (rest.empty() || !isDigit(rest[0])) return std::nullopt;
  int number = 0;
  for (int digits = 0; digits < 2 && !rest.empty() && isDigit(rest[0]); ++digits) {
    number = number * 10 + (rest[0] - '0');
    rest.remove_prefix(1);
  }
  return number;
}

}  // namespace

std::optional<std::chrono::seconds> standardOffsetOfPosixZone(std::string_view value) {
  if (!takeAbbreviation(value) || value.empty()) return std::nullopt;
  const bool west = value[0] != '-';
  if (value[0] == '+' || value[0] == '-') value.remove_prefix(1);

  std::array<int, 3> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) {
      if (!value.starts_with(':')) break;
      value.remove_prefix(1);
    }
    const auto number = takeNumber(value);
    if (!number || *number > (i == 0 ? 24 : 59)) return std::nullopt;
    parts[i] = *number;
  }
  // What may follow is the abbreviation of summer time and its rules.
  if (!value.empty() && !isLetter(value[0]) && value[0] != '<') return std::nullopt;
  const std::chrono::seconds offset{parts[0] * 3600 + parts[1] * 60 + parts[2]};
  return west ? -offset : offset;
}

}  // namespace annivo
