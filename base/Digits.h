// SPDX-License-Identifier: MIT
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace annivo {

inline constexpr std::string_view kHexDigits = "0123456789abcdef";
inline constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";

[[nodiscard]] constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What a hexadecimal digit of either case stands for; -1 for another character.
[[nodiscard]] constexpr int hexDigitValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

/// Appends the last `count` decimal digits of `value`, zeros in front.
inline void appendDigits(std::string& out, std::uint64_t value, std::size_t count) {
  out.append(count, '0');
  for (std::size_t i = out.size(); count > 0; --count, value /= 10) {
    out[--i] = static_cast<char>('0' + value % 10);
  }
}

/// The last `count` hexadecimal digits of `value`, in lower case.
[[nodiscard]] inline std::string hexDigits(std::uint64_t value, std::size_t count) {
  std::string text(count, '0');
  for (std::size_t i = count; i-- > 0; value >>= 4) text[i] = kHexDigits[value & 15];
  return text;
}

/// The number that the whole text spells, without space or "+"; "-" only where the type has a sign.
/// Nothing for another text and for a number that the type does not hold.
template <typename Number, int kBase = 10>
[[nodiscard]] std::optional<Number> numberFromText(std::string_view text) {
  Number value{};
  const char* const last = text.data() + text.size();
  std::from_chars_result result{};
  if constexpr (kBase == 10) {
    result = std::from_chars(text.data(), last, value);
  } else {
    result = std::from_chars(text.data(), last, value, kBase);
  }
  if (result.ec != std::errc() || result.ptr != last) return std::nullopt;
  return value;
}

}  // namespace annivo
