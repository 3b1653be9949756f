// SPDX-License-Identifier: MIT
#pragma once

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

[[nodiscard]] constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
[[nodiscard]] constexpr bool isSpaceOrTab(char c) { return c == ' ' || c == '\t'; }

/// Without white space, or what else `isCut` names, at its end.
[[nodiscard]] constexpr std::string_view trimmedEnd(std::string_view text,
                                                    bool (&isCut)(char) = isSpace) {
  while (!text.empty() && isCut(text.back())) text.remove_suffix(1);
  return text;
}
/// Without it at both ends.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view text,
                                                 bool (&isCut)(char) = isSpace) {
  text = trimmedEnd(text, isCut);
  while (!text.empty() && isCut(text.front())) text.remove_prefix(1);
  return text;
}

// An escape is a mark ('%', '_', '=') and the two hexadecimal digits of a byte after it.

/// Appends the escape of a byte, digits in upper case.
void appendHexEscape(std::string& out, char mark, char byte);
/// Whether two hexadecimal digits follow the mark at `at`.
[[nodiscard]] bool isHexEscape(std::string_view text, std::size_t at);
/// Each escape as its byte. A mark without two digits stands for itself.
[[nodiscard]] std::string hexUnescaped(std::string_view text, char mark);

}  // namespace annivo
