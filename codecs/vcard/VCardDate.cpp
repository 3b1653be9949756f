// SPDX-License-Identifier: MIT
#include "codecs/vcard/VCardDate.h"

#include <chrono>
#include <optional>
#include <vector>

#include "base/Digits.h"
#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"

namespace annivo {

namespace {

/// Of digits only.
std::optional<int> number(std::string_view digits) {
  return digits.starts_with('-') ? std::nullopt : numberFromText<int>(digits);
}

/// The text cut at "-", "/" or ".".
std::vector<std::string_view> fields(std::string_view date) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  while (true) {
    const auto end = date.find_first_of("-/.", start);
    fields.push_back(date.substr(start, end - start));
    if (end == date.npos) return fields;
    start = end + 1;
  }
}

/// What is written before a time of day and a zone.
std::string_view withoutTime(std::string_view text) {
  std::string_view date = text.substr(0, text.find_first_of("Tt "));
  if (date.ends_with('Z') || date.ends_with('z')) date.remove_suffix(1);
  return date;
}

struct Written {
  std::optional<int> year, month, day;
};

/// Year, month and day as far as they are written; nothing for another form.
std::optional<Written> parseDate(std::string_view date) {
  if (date.starts_with("---")) {
    const auto day = number(date.substr(3));
    return day ? std::optional<Written>({.year = {}, .month = {}, .day = day}) : std::nullopt;
  }
  if (date.starts_with("--")) {
    date.remove_prefix(2);
    if (date.size() == 4) return Written{{}, number(date.substr(0, 2)), number(date.substr(2))};
    const auto parts = fields(date);
    if (parts.size() == 1) return Written{{}, number(parts[0]), {}};
    if (parts.size() == 2) return Written{{}, number(parts[0]), number(parts[1])};
    return std::nullopt;
  }
  if (date.size() == 8 && number(date)) {
    return Written{number(date.substr(0, 4)), number(date.substr(4, 2)), number(date.substr(6))};
  }
  const auto parts = fields(date);
  if (parts[0].size() != 4 || !number(parts[0]) || parts.size() > 3) return std::nullopt;
  Written written{number(parts[0]), {}, {}};
  if (parts.size() > 1 && !(written.month = number(parts[1]))) return std::nullopt;
  if (parts.size() > 2 && !(written.day = number(parts[2]))) return std::nullopt;
  return written;
}

/// As much of a value as a message shows.
std::string shown(std::string_view text) {
  constexpr std::size_t kShown = 40;
  return std::string(text.substr(0, kShown)) + (text.size() > kShown ? "…" : "");
}

}  // namespace

Result<StoredDay> vCardDay(const VCardProperty& property, std::string_view text) {
  text = trimmed(text);
  const std::string valueType = upperCased(property.parameter("VALUE"));
  if (valueType == "TEXT") return reason(translated("is given in words (\"{1}\")", shown(text)));
  const std::string calendar = upperCased(property.parameter("CALSCALE"));
  if (!calendar.empty() && calendar != "GREGORIAN") {
    return reason(translated("is in the calendar \"{1}\" (\"{2}\")", calendar, shown(text)));
  }
  const std::string_view date = withoutTime(text);
  if (date.empty()) return reason(translated("names a time without a day (\"{1}\")", shown(text)));
  const auto written = parseDate(date);
  if (!written) return reason(translated("is no date that can be read (\"{1}\")", shown(text)));
  if (!written->month) {
    return reason(written->day ? translated("names a day without a month (\"{1}\")", shown(text))
                               : translated("names no month and day (\"{1}\")", shown(text)));
  }
  if (!written->day)
    return reason(translated("names a month without a day (\"{1}\")", shown(text)));

  StoredDay day{written->year.value_or(kYearOfNoYear), *written->month, *written->day};
  const auto omitted = property.parameter("X-APPLE-OMIT-YEAR");
  if (day.year == 0 || (!omitted.empty() && number(omitted) == day.year)) {
    day.year = kYearOfNoYear;
  }
  const std::chrono::year_month_day civil{std::chrono::year(day.year),
                                          std::chrono::month(static_cast<unsigned>(day.month)),
                                          std::chrono::day(static_cast<unsigned>(day.day))};
  // The types of the library hold no more than a byte of a month and a day.
  if (day.month > 12 || day.day > 31 || !civil.ok()) {
    return reason(translated("is no day of the calendar (\"{1}\")", shown(text)));
  }
  return day;
}

}  // namespace annivo
