// SPDX-License-Identifier: MIT
#include "codecs/icalendar/EventLines.h"

#include <array>

namespace annivo {
namespace {

/// The nesting of known components, outermost first.
constexpr std::array<std::string_view, 3> kKnown{"VCALENDAR", "VEVENT", "VALARM"};

/// A component's name without white space after it.
std::string_view componentName(std::string_view value) { return trimmedEnd(value, isSpaceOrTab); }

bool isBlank(std::string_view raw) { return raw.find_first_not_of(" \t\r\n") == raw.npos; }

}  // namespace

bool EventLines::next() {
  if (malformed_ || !lines_.next(line_)) return false;
  lineDepth_ = depth_;
  if (line_.named("BEGIN")) {
    malformed_ = !begin();
  } else if (line_.named("END")) {
    malformed_ = !end();
  } else {
    kind_ = Kind::property;
    place_ = innermost();
    malformed_ = depth_ == 0 && !isBlank(line_.raw());
  }
  return !malformed_;
}

bool EventLines::begin() {
  const std::string_view name = componentName(line_.value());
  kind_ = Kind::begin;
  if (depth_ == known_ && known_ < kKnown.size() && equalsIgnoringCase(name, kKnown[known_])) {
    ++known_;
    sawCalendar_ = true;
  } else {
    if (depth_ == 0) return false;
    (others_ += '\n').append(name);
  }
  lineDepth_ = ++depth_;
  place_ = innermost();
  return true;
}

bool EventLines::end() {
  const std::string_view name = componentName(line_.value());
  kind_ = Kind::end;
  place_ = innermost();
  if (depth_ == 0) return false;
  if (place_ == Place::other) {
    if (!endOther(name)) return false;
  } else {
    if (!equalsIgnoringCase(name, kKnown[known_ - 1])) return false;
    --known_;
  }
  --depth_;
  return true;
}

bool EventLines::endOther(std::string_view name) {
  const std::size_t last = others_.rfind('\n');
  const std::string_view opened = std::string_view(others_).substr(last + 1);
  if (name != opened && !equalsIgnoringCase(name, upperCased(opened))) return false;
  others_.resize(last);
  return true;
}

}  // namespace annivo
