// SPDX-License-Identifier: MIT
#include "codecs/icalendar/ContentValues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

#include "base/Digits.h"
#include "codecs/icalendar/ContentText.h"

namespace annivo {
namespace {

constexpr std::int64_t kLongestDuration = 1'000'000'000'000'000;

std::optional<int> number(std::string_view digits) {
  int value = 0;
  for (const char c : digits) {
    if (!isDigit(c)) return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

/// "20261120", of a day within the years 1 to 9999.
std::string basicDay(std::chrono::sys_days day) {
  const std::chrono::year_month_day ymd{day};
  std::string text;
  text.reserve(16);
  appendDigits(text, static_cast<std::uint64_t>(static_cast<int>(ymd.year())), 4);
  appendDigits(text, static_cast<unsigned>(ymd.month()), 2);
  appendDigits(text, static_cast<unsigned>(ymd.day()), 2);
  return text;
}

/// "YYYYMMDD", or with `time` "YYYYMMDDTHHMMSS".
std::optional<CivilTime> civilTime(std::string_view text, bool time) {
  if (text.size() != (time ? 15U : 8U) || (time && text[8] != 'T')) return std::nullopt;
  const auto year = number(text.substr(0, 4));
  const auto month = number(text.substr(4, 2));
  const auto day = number(text.substr(6, 2));
  if (!year || !month || !day || *year == 0) return std::nullopt;
  const std::chrono::year_month_day ymd{std::chrono::year{*year},
                                        std::chrono::month{static_cast<unsigned>(*month)},
                                        std::chrono::day{static_cast<unsigned>(*day)}};
  if (!ymd.ok()) return std::nullopt;
  CivilTime civil{.year = *year, .month = *month, .day = *day};
  if (!time) return civil;
  const auto hour = number(text.substr(9, 2));
  const auto minute = number(text.substr(11, 2));
  const auto second = number(text.substr(13, 2));
  if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60) {
    return std::nullopt;
  }
  civil.hour = *hour;
  civil.minute = *minute;
  civil.second = *second;
  return civil;
}

/// A name of the system's zone database and nothing that could lead out of its folder.
bool isZoneName(std::string_view name) {
  return !name.empty() && name.size() < 64 && name.front() != '/' && name.front() != '.' &&
         name.find("..") == name.npos && std::all_of(name.begin(), name.end(), [](char c) {
           return isAlphanumeric(c) || std::string_view("/_+-").find(c) != std::string_view::npos;
         });
}

}  // namespace

std::string durationText(std::int64_t seconds) {
  seconds = std::clamp(seconds, -kLongestDuration, kLongestDuration);
  std::string text = seconds < 0 ? "-P" : "P";
  if (seconds < 0) seconds = -seconds;
  const auto part = [&](std::int64_t value, char unit) {
    text += std::to_string(value);
    text += unit;
  };
  const std::int64_t days = seconds / 86400;
  const std::int64_t hours = seconds / 3600 % 24;
  const std::int64_t minutes = seconds / 60 % 60;
  seconds %= 60;
  if (days != 0) part(days, 'D');
  if (days != 0 && hours == 0 && minutes == 0 && seconds == 0) return text;
  text += 'T';
  if (hours != 0) part(hours, 'H');
  if (minutes != 0 || (hours != 0 && seconds != 0)) part(minutes, 'M');
  if (seconds != 0 || text.back() == 'T') part(seconds, 'S');
  return text;
}

std::optional<std::int64_t> durationFromText(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.size() < 3 || (text[0] != 'P' && text[0] != 'p')) return std::nullopt;
  std::int64_t total = 0;
  bool time = false;
  for (std::size_t i = 1; i < text.size();) {
    if (text[i] == 'T' || text[i] == 't') {
      if (time || i + 1 == text.size()) return std::nullopt;
      time = true;
      ++i;
      continue;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data() + i, text.data() + text.size(), value);
    const auto next = static_cast<std::size_t>(end - text.data());
    if (!isDigit(text[i]) || next == text.size()) return std::nullopt;
    if (error != std::errc()) value = kLongestDuration;
    std::int64_t unit = 0;
    switch (text[next]) {
      case 'W':
      case 'w':
        unit = time ? 0 : 604800;
        break;
      case 'D':
      case 'd':
        unit = time ? 0 : 86400;
        break;
      case 'H':
      case 'h':
        unit = time ? 3600 : 0;
        break;
      case 'M':
      case 'm':
        unit = time ? 60 : 0;
        break;
      case 'S':
      case 's':
        unit = time ? 1 : 0;
        break;
      default:
        break;
    }
    if (unit == 0) return std::nullopt;
    value = std::min(value, kLongestDuration / unit);
    total = std::min(total + value * unit, kLongestDuration);
    i = next + 1;
  }
  return negative ? -total : total;
}

std::string utcText(Date date) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(date - day));
  std::string text = basicDay(day);
  text += 'T';
  appendDigits(text, static_cast<std::uint64_t>(time.hours().count()), 2);
  appendDigits(text, static_cast<std::uint64_t>(time.minutes().count()), 2);
  appendDigits(text, static_cast<std::uint64_t>(time.seconds().count()), 2);
  return text += 'Z';
}

std::chrono::sys_days dayOf(Date date, const NSTimeZone& zone) {
  const CivilTime c = zone.civil(date);
  return std::chrono::year_month_day{std::chrono::year{static_cast<int>(c.year)},
                                     std::chrono::month{static_cast<unsigned>(c.month)},
                                     std::chrono::day{static_cast<unsigned>(c.day)}};
}

std::optional<std::string> dayText(std::chrono::sys_days day) {
  if (day < kEarliestDate || day > kLatestDate) return std::nullopt;
  return basicDay(day);
}

std::optional<EventTime> dateValue(const ContentLine& line, const NSTimeZone& defaultZone) {
  const std::string_view value = line.value();
  if (const auto day = civilTime(value, false)) return EventTime(*day, defaultZone);
  if (value.ends_with('Z') || value.ends_with('z')) {
    const auto utc = civilTime(value.substr(0, value.size() - 1), true);
    if (!utc) return std::nullopt;
    return EventTime(NSTimeZone().date(*utc));
  }
  const auto local = civilTime(value, true);
  if (!local) return std::nullopt;
  const auto zone = line.parameter("TZID");
  if (!zone || !isZoneName(*zone)) return EventTime(defaultZone.date(*local));
  return EventTime(NSTimeZone(std::string(*zone)).date(*local));
}

std::string identityText(const LedgerIdentity& identity, const std::string& eventUID) {
  std::string text = std::to_string(identity.date.time_since_epoch().count());
  for (const std::string* uid : {&identity.calendarUID, &identity.myUID, &eventUID}) {
    (text += '/').append(underscoreEncoded(*uid, ":@"));
  }
  return text;
}

std::optional<IdentityValue> identityFromText(std::string_view text) {
  std::array<std::string_view, 4> parts;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t end = text.find('/');
    if ((end == text.npos) != (i + 1 == parts.size())) return std::nullopt;
    parts[i] = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  const auto microseconds = numberFromText<std::int64_t>(parts[0]);
  if (!microseconds) return std::nullopt;
  return IdentityValue{.identity = {.myUID = underscoreDecoded(parts[2]),
                                    .calendarUID = underscoreDecoded(parts[1]),
                                    .date = Date{std::chrono::microseconds{*microseconds}}},
                       .eventUID = underscoreDecoded(parts[3])};
}

}  // namespace annivo
