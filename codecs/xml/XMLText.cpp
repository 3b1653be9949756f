// SPDX-License-Identifier: MIT
#include "codecs/xml/XMLText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "base/Digits.h"
#include "base/Unicode.h"

namespace annivo {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kSpace) + 1 - begin);
}

constexpr auto isEscaped = [](char c) { return c == '&' || c == '<' || c == '>' || c == '\r'; };
constexpr auto isPrintableASCII = [](char c) { return c >= ' ' && c <= '~'; };
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// A plain decimal number as microseconds, exact to the last digit that counts.
std::optional<std::int64_t> plainMicroseconds(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  const std::string_view decimals = point < text.size() ? text.substr(point + 1) : "";
  constexpr std::size_t kMostDigits = 12;
  if (whole.empty() || whole.size() > kMostDigits ||
      !std::all_of(whole.begin(), whole.end(), isDigit) ||
      !std::all_of(decimals.begin(), decimals.end(), isDigit)) {
    return std::nullopt;
  }
  std::int64_t value = 0;
  for (const char c : whole) value = value * 10 + (c - '0');
  for (std::size_t i = 0; i < 6; ++i) {
    value = value * 10 + (i < decimals.size() ? decimals[i] - '0' : 0);
  }
  if (decimals.size() > 6 && decimals[6] >= '5') ++value;
  return negative ? -value : value;
}

}  // namespace

bool isXMLText(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPrintableASCII)) return true;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') return false;
  }
  return isValidUTF8(text) && text.find("\xEF\xBF\xBE") == std::string_view::npos &&
         text.find("\xEF\xBF\xBF") == std::string_view::npos;
}

void appendEscaped(std::string& out, std::string_view text) {
  for (auto at = text.begin(); at != text.end(); ++at) {
    const auto stop = std::find_if(at, text.end(), isEscaped);
    out.append(at, stop);
    if (stop == text.end()) break;
    switch (*stop) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += "&#13;";
    }
    at = stop;
  }
}

std::string base64(std::string_view bytes) {
  std::string out;
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
  std::string out;
  unsigned bits = 0;
  int count = 0;
  bool ended = false;
  for (const char c : text) {
    if (kSpace.find(c) != std::string_view::npos) continue;
    if (c == '=') {
      ended = true;
      continue;
    }
    const std::size_t digit = kAlphabet.find(c);
    if (ended || digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(digit);
    count += 6;
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return out;
}

std::string storeDateText(Date date) {
  const std::int64_t micros = (date - kReferenceDate).count();
  const std::int64_t size = micros < 0 ? -micros : micros;
  std::string text(micros < 0 ? "-" : "");
  text.append(std::to_string(size / 1'000'000)).append(1, '.');
  appendDigits(text, static_cast<std::uint64_t>(size % 1'000'000), 6);
  return text.append(14, '0');
}

std::optional<Date> dateFromStoreText(std::string_view text) {
  text = trimmed(text);
  if (const auto micros = plainMicroseconds(text)) {
    const Date date = kReferenceDate + std::chrono::microseconds{*micros};
    if (date < kEarliestDate || date > kLatestDate) return std::nullopt;
    return date;
  }
  if (text.starts_with('+')) text.remove_prefix(1);
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return dateFromReferenceSeconds(seconds);
}

}  // namespace annivo
