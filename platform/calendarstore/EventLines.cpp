// SPDX-License-Identifier: MIT
#include "platform/calendarstore/EventLines.h"

namespace annivo {
namespace {

/// A component's name without white space after it.
std::string_view trimmed(std::string_view name) {
  while (!name.empty() && (name.back() == ' ' || name.back() == '\t')) name.remove_suffix(1);
  return name;
}

std::string upperCase(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  }
  return upper;
}

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
    place_ = placeAtDepth(depth_);
    malformed_ = depth_ == 0 && !isBlank(line_.raw());
  }
  return !malformed_;
}

bool EventLines::begin() {
  const std::string_view name = trimmed(line_.value());
  const Place around = placeAtDepth(depth_);
  kind_ = Kind::begin;
  place_ = Place::other;
  if (depth_ == 0) {
    if (!equalsIgnoringCase(name, "VCALENDAR")) return false;
    sawCalendar_ = true;
    place_ = Place::calendar;
  } else if (around == Place::calendar && equalsIgnoringCase(name, "VEVENT")) {
    place_ = Place::event;
  } else if (around == Place::event && equalsIgnoringCase(name, "VALARM")) {
    place_ = Place::alarm;
  }
  open_.append(name) += '\n';
  lineDepth_ = ++depth_;
  if (depth_ < places_.size()) places_[depth_] = place_;
  return true;
}

bool EventLines::end() {
  const std::string_view name = trimmed(line_.value());
  kind_ = Kind::end;
  place_ = placeAtDepth(depth_);
  if (depth_ == 0) return false;
  const std::size_t previous = open_.rfind('\n', open_.size() - 2);
  const std::size_t start = previous == open_.npos ? 0 : previous + 1;
  const std::string_view opened = std::string_view(open_).substr(start, open_.size() - 1 - start);
  if (name != opened && !equalsIgnoringCase(name, upperCase(opened))) return false;
  open_.resize(start);
  --depth_;
  return true;
}

EventLines::Place EventLines::placeAtDepth(std::size_t depth) const {
  return depth < places_.size() ? places_[depth] : Place::other;
}

}  // namespace annivo
