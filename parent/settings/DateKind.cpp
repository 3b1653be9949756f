// SPDX-License-Identifier: MIT
#include "parent/settings/DateKind.h"

namespace annivo {

namespace {

constexpr DateKind kDateKinds[] = {DateKind::birthdays, DateKind::anniversaries, DateKind::both};

}  // namespace

const char* dateKindWord(DateKind kind) {
  switch (kind) {
    case DateKind::birthdays:
      return "birthdays";
    case DateKind::anniversaries:
      return "anniversaries";
    case DateKind::both:
      break;
  }
  return "both";
}

std::optional<DateKind> dateKindOfWord(std::string_view word) {
  for (const DateKind kind : kDateKinds) {
    if (word == dateKindWord(kind)) return kind;
  }
  return std::nullopt;
}

std::vector<std::string> dateKindWords() {
  std::vector<std::string> words;
  for (const DateKind kind : kDateKinds) words.emplace_back(dateKindWord(kind));
  return words;
}

const char* textFor(DateKind kind, const char* birthdays, const char* anniversaries,
                    const char* both) {
  switch (kind) {
    case DateKind::birthdays:
      return birthdays;
    case DateKind::anniversaries:
      return anniversaries;
    case DateKind::both:
      break;
  }
  return both;
}

DateKind dateKindOf(CalendarType type) {
  switch (type) {
    case CalendarType::birthdays:
      return DateKind::birthdays;
    case CalendarType::anniversaries:
      break;
  }
  return DateKind::anniversaries;
}

bool includes(DateKind kind, CalendarType type) {
  return kind == DateKind::both || kind == dateKindOf(type);
}

}  // namespace annivo
