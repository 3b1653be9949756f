// SPDX-License-Identifier: MIT
#include "parent/command/Console.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "base/Digits.h"
#include "base/Unicode.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

std::string jsonString(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : repairedUTF8(text)) {
    if (c == '"' || c == '\\') {
      (quoted += '\\') += c;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      quoted += "\\u" + hexDigits(static_cast<unsigned char>(c), 4);
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string isoText(Date date) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day civil(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(date - day));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(civil.year()), static_cast<unsigned>(civil.month()),
                static_cast<unsigned>(civil.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

void appendJSON(const PropertyList& value, const std::string& indent, std::string& text);

void appendReal(double number, std::string& text) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  text += std::isfinite(number) ? std::string(buffer.data(), end) : std::string("null");
}

void appendArray(const PropertyList::Array& array, const std::string& indent, std::string& text) {
  text += '[';
  for (std::size_t i = 0; i < array.size(); ++i) {
    text += (i == 0 ? "\n  " : ",\n  ") + indent;
    appendJSON(array[i], indent + "  ", text);
  }
  text += array.empty() ? "]" : '\n' + indent + ']';
}

void appendDictionary(const PropertyList::Dictionary& dictionary, const std::string& indent,
                      std::string& text) {
  text += '{';
  bool first = true;
  for (const auto& [key, element] : dictionary) {
    text += (first ? "\n  " : ",\n  ") + indent + jsonString(key) + ": ";
    appendJSON(element, indent + "  ", text);
    first = false;
  }
  text += first ? "}" : '\n' + indent + '}';
}

void appendJSON(const PropertyList& value, const std::string& indent, std::string& text) {
  if (value.boolean()) {
    text += *value.boolean() ? "true" : "false";
  } else if (value.integer()) {
    text += std::to_string(*value.integer());
  } else if (value.real()) {
    appendReal(*value.real(), text);
  } else if (value.string()) {
    text += jsonString(*value.string());
  } else if (value.date()) {
    text += jsonString(isoText(*value.date()));
  } else if (value.array()) {
    appendArray(*value.array(), indent, text);
  } else if (value.dictionary()) {
    appendDictionary(*value.dictionary(), indent, text);
  } else {
    text += "null";
  }
}

}  // namespace

void Console::line(std::string_view text) const { out << text << '\n'; }

void Console::note(std::string_view text) const { err << text << '\n'; }

void Console::table(const std::vector<std::vector<std::string>>& rows) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], columnsOf(printable(row[i])));
    }
  }
  bool heading = true;
  for (const auto& row : rows) {
    std::string text;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string cell = printable(row[i]);
      text += cell;
      if (i + 1 < row.size()) text += std::string(widths[i] - columnsOf(cell) + 2, ' ');
    }
    line(heading ? styled(text, Style::bold) : text);
    heading = false;
  }
}

void Console::writeJSON(const PropertyList& value) const { out << jsonText(value); }

std::string Console::styled(std::string_view text, Style style) const {
  if (!colours || style == Style::plain) return std::string(text);
  const char* code = style == Style::bold     ? "1"
                     : style == Style::dim    ? "2"
                     : style == Style::green  ? "32"
                     : style == Style::yellow ? "33"
                                              : "31";
  return std::string("\x1b[") + code + 'm' + std::string(text) + "\x1b[0m";
}

std::string jsonText(const PropertyList& value) {
  std::string text;
  appendJSON(value, "", text);
  return text + '\n';
}

}  // namespace annivo
