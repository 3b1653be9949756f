// SPDX-License-Identifier: MIT
#include "base/Base64.h"

#include <array>
#include <cstddef>

namespace annivo {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kBlanks = " \t\r\n";
constexpr signed char kNoDigit = -1;
constexpr signed char kBlank = -2;

/// What each character is worth.
constexpr std::array<signed char, 256> kWorth = [] {
  std::array<signed char, 256> worth{};
  worth.fill(kNoDigit);
  for (const char c : kBlanks) worth[static_cast<unsigned char>(c)] = kBlank;
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    worth[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
  }
  return worth;
}();

/// The bytes of the digits at the front of `text`, which keeps what comes after them.
std::string takeBytes(std::string_view& text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  unsigned bits = 0;
  int count = 0;
  std::size_t at = 0;
  for (; at < text.size(); ++at) {
    const signed char digit = kWorth[static_cast<unsigned char>(text[at])];
    if (digit == kBlank) continue;
    if (digit == kNoDigit) break;
    bits = bits << 6 | static_cast<unsigned>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  text.remove_prefix(at);
  return bytes;
}

}  // namespace

std::string base64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](std::size_t k) {
      return i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U;
    };
    const unsigned group = byte(0) << 16 | byte(1) << 8 | byte(2);
    out += kAlphabet[group >> 18];
    out += kAlphabet[group >> 12 & 63];
    out += i + 1 < bytes.size() ? kAlphabet[group >> 6 & 63] : '=';
    out += i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
  return out;
}

std::optional<std::string> fromBase64(std::string_view text) {
  std::string bytes = takeBytes(text);
  const bool isPadding = text.find_first_not_of("= \t\r\n") == text.npos;
  return isPadding ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string fromBase64AsFarAsItGoes(std::string_view text) { return takeBytes(text); }

}  // namespace annivo
