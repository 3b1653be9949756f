// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace annivo {

// Letters, here, are those of ASCII; all other bytes stay as they are. base/Unicode.h has the case
// rules of whole texts.

[[nodiscard]] constexpr char upperCased(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
[[nodiscard]] constexpr char lowerCased(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
[[nodiscard]] std::string upperCased(std::string_view text);
[[nodiscard]] std::string lowerCased(std::string_view text);

/// Whether two texts are equal without case; `upper` is in upper case.
[[nodiscard]] constexpr bool equalsIgnoringCase(std::string_view text, std::string_view upper) {
  if (text == upper) return true;
  if (text.size() != upper.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (upperCased(text[i]) != upper[i]) return false;
  }
  return true;
}

[[nodiscard]] constexpr bool isAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

inline constexpr std::string_view kSpace = " \t\r\n\f\v";

/// Without the characters of `space` at its end.
[[nodiscard]] constexpr std::string_view trimmedEnd(std::string_view text,
                                                    std::string_view space = kSpace) {
  return text.substr(0, text.find_last_not_of(space) + 1);
}
/// Without the characters of `space` at both ends.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view text,
                                                 std::string_view space = kSpace) {
  return trimmedEnd(text.substr(std::min(text.find_first_not_of(space), text.size())), space);
}

// An escape is a mark ('%', '_', '=') and the two hexadecimal digits of a byte after it.

/// Appends the escape of a byte, digits in upper case.
void appendHexEscape(std::string& out, char mark, char byte);
/// Whether two hexadecimal digits follow the mark at `at`.
[[nodiscard]] bool isHexEscape(std::string_view text, std::size_t at);
/// Each escape as its byte. A mark without two digits stands for itself.
[[nodiscard]] std::string hexUnescaped(std::string_view text, char mark);

}  // namespace annivo
