// SPDX-License-Identifier: MIT
#include "parent/settings/Words.h"

#include <algorithm>
#include <cstdint>

#include "base/Digits.h"
#include "base/StoredDay.h"
#include "base/Unicode.h"

namespace annivo {

namespace {

std::string digits(std::int64_t number, std::size_t least) {
  const std::string text = std::to_string(number);
  return std::string(least - std::min(least, text.size()), '0') + text;
}

std::string joined(const std::vector<std::string>& items, const char* binding) {
  std::string text;
  for (const std::string& item : items) {
    text = text.empty() ? item : translated(binding, text, item);
  }
  return text;
}

template <typename Bind>
std::string boundList(const std::vector<std::string>& items, Bind bind) {
  if (items.size() < 2) return listed(items);
  return bind(listed({items.begin(), items.end() - 1}), items.back());
}

}  // namespace

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

std::string listed(const std::vector<std::string>& items) {
  // TRANSLATORS: one item of a list ({2}) after the others ({1}).
  return joined(items, toTranslate("{1}, {2}"));
}

std::string listedPhrases(const std::vector<std::string>& items) {
  // TRANSLATORS: one item of a list ({2}) after the others ({1}); items may hold commas.
  return joined(items, toTranslate("{1}; {2}"));
}

std::string listedAll(const std::vector<std::string>& items) {
  return boundList(items, [](const std::string& others, const std::string& last) {
    // TRANSLATORS: {1} is one or more items, {2} the last one of a list.
    return translated("{1} and {2}", others, last);
  });
}

std::string listedAlternatives(const std::vector<std::string>& items) {
  return boundList(items, [](const std::string& others, const std::string& last) {
    // TRANSLATORS: {1} is one or more items, {2} the last one to choose from.
    return translated("{1} or {2}", others, last);
  });
}

std::string shownDay(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  const std::string month = digits(civil.month, 2);
  const std::string day = digits(civil.day, 2);
  // TRANSLATORS: a date without a year: {1} is the month, {2} the day, both of two digits.
  if (civil.year == kYearOfNoYear) return translated("--{1}-{2}", month, day);
  // TRANSLATORS: a date in digits: {1} is the year, {2} the month, {3} the day.
  return translated("{1}-{2}-{3}", digits(civil.year, 4), month, day);
}

std::string shownMoment(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  // TRANSLATORS: a day ({1}) and a time of day: {2} is the hour (0 to 23), {3} the minute.
  return translated("{1} {2}:{3}", shownDay(date, zone), digits(civil.hour, 2),
                    digits(civil.minute, 2));
}

std::string isoDay(Date date, const NSTimeZone& zone) {
  const CivilTime civil = zone.civil(date);
  const std::string day = '-' + digits(civil.month, 2) + '-' + digits(civil.day, 2);
  return (civil.year == kYearOfNoYear ? "-" : digits(civil.year, 4)) + day;
}

}  // namespace annivo
