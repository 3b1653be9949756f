// SPDX-License-Identifier: MIT
#include "base/Text.h"

#include <algorithm>

#include "base/Digits.h"

namespace annivo {

std::string upperCased(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = upperCased(c);
  return upper;
}

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = lowerCased(c);
  return lower;
}

void appendHexEscape(std::string& out, char mark, char byte) {
  const auto value = static_cast<unsigned char>(byte);
  out += mark;
  out += kUpperHexDigits[value >> 4];
  out += kUpperHexDigits[value & 15];
}

bool isHexEscape(std::string_view text, std::size_t at) {
  return at + 2 < text.size() && hexDigitValue(text[at + 1]) >= 0 &&
         hexDigitValue(text[at + 2]) >= 0;
}

std::string hexUnescaped(std::string_view text, char mark) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t next = std::min(text.find(mark, i), text.size());
    out.append(text, i, next - i);
    if (next == text.size()) break;
    const bool escape = isHexEscape(text, next);
    out +=
        escape
            ? static_cast<char>(hexDigitValue(text[next + 1]) * 16 + hexDigitValue(text[next + 2]))
            : mark;
    i = next + (escape ? 3 : 1);
  }
  return out;
}

}  // namespace annivo
