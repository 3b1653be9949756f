// SPDX-License-Identifier: MIT
#include "codecs/xml/XMLText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/Digits.h"
#include "base/Text.h"
#include "base/Unicode.h"

namespace annivo {

namespace {

constexpr auto isEscaped = [](char c) { return c == '&' || c == '<' || c == '>' || c == '\r'; };
constexpr auto isForbidden = [](char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
};
constexpr auto isPrintableASCII = [](char c) { return c >= ' ' && c <= '~'; };

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
  return std::none_of(text.begin(), text.end(), isForbidden) && isValidUTF8(text) &&
         text.find("\uFFFE") == text.npos && text.find("\uFFFF") == text.npos;
}

std::string repairedXMLText(std::string_view text) {
  if (isXMLText(text)) return std::string(text);
  std::string out;
  const std::string repaired = repairedUTF8(text);
  for (std::string_view rest = repaired; !rest.empty();) {
    const bool isNone = rest.starts_with("\uFFFE") || rest.starts_with("\uFFFF");
    if (isNone || isForbidden(rest.front())) {
      out += "\uFFFD";
    } else {
      out += rest.front();
    }
    rest.remove_prefix(isNone ? 3 : 1);
  }
  return out;
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
  const auto seconds = numberFromText<double>(text);
  return seconds ? dateFromReferenceSeconds(*seconds) : std::nullopt;
}

}  // namespace annivo
