// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "codecs/icalendar/AlarmComponent.h"
#include "codecs/icalendar/ContentText.h"
#include "codecs/icalendar/ContentValues.h"
#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventLines.h"
#include "codecs/icalendar/EventUID.h"

namespace annivo {
namespace {

using Kind = EventLines::Kind;
using Place = EventLines::Place;

constexpr std::string_view kHeader =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Annivo//Annivo Agent " ANNIVO_SHORT_VERSION
    "//EN\r\n"
    "CALSCALE:GREGORIAN\r\nBEGIN:VEVENT\r\n";

std::string_view withoutZeros(std::string_view text) {
  while (text.ends_with('\0')) text.remove_suffix(1);
  return text;
}

/// A property line to be written, or, where it is empty, a property to be taken away.
struct Replacement {
  std::string_view name;
  std::string line;
  bool done = false;
};

std::string contentLine(const std::string& head, std::string_view value, std::string_view lineEnd) {
  std::string line;
  line.reserve(head.size() + value.size() + 16);
  appendContentLine(line, head, value, lineEnd);
  return line;
}

std::string titleLine(const std::string& title, std::string_view lineEnd) {
  const std::string value = escapedText(title);
  std::string head = "SUMMARY";
  if (plainestReading(value) != title) head += exactParameter(title);
  return contentLine(head, value, lineEnd);
}

std::string startLine(Date start, bool allDay, const NSTimeZone& zone, std::string_view lineEnd) {
  if (!allDay) return contentLine("DTSTART", utcText(start), lineEnd);
  const char* const held = start < kReferenceDate ? "00010101" : "99991231";
  return contentLine("DTSTART;VALUE=DATE", dayText(dayOf(start, zone)).value_or(held), lineEnd);
}

/// DTEND; empty where the event has none, and where it would not lie after the start or lie beyond
/// the year 9999 (without one an event lasts its one day).
std::string endLine(Date start, std::optional<Date> end, bool allDay, const NSTimeZone& zone,
                    std::string_view lineEnd) {
  if (!end) return {};
  if (!allDay) return *end > start ? contentLine("DTEND", utcText(*end), lineEnd) : std::string();
  const auto last = dayOf(*end, zone);
  const auto after = dayText(last + std::chrono::days{1});
  if (!after || last < dayOf(start, zone)) return {};
  return contentLine("DTEND;VALUE=DATE", *after, lineEnd);
}

std::int64_t nextSequence(std::string_view value) {
  std::int64_t sequence = 0;
  std::from_chars(value.data(), value.data() + value.size(), sequence);
  constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
  return std::clamp<std::int64_t>(sequence, 0, highest - 1) + 1;
}

/// Which of the text's events, counted from 1, is the one with that UID; 0 when there is none or
/// the text is not well formed.
std::size_t positionOfEvent(std::string_view text, const std::string& uid) {
  std::size_t count = 0;
  std::size_t found = 0;
  std::string thisUID;
  bool isException = false;
  if (uid.empty()) return 0;
  EventLines lines(text);
  while (lines.next()) {
    if (lines.place() != Place::event) continue;
    if (lines.kind() == Kind::begin) {
      ++count;
      thisUID.clear();
      isException = false;
    } else if (lines.kind() == Kind::end) {
      if (found == 0 && !isException && thisUID == uid) found = count;
    } else if (lines.line().named("UID")) {
      if (thisUID.empty()) thisUID = unescapedText(lines.line().value());
    } else if (lines.line().named("RECURRENCE-ID")) {
      isException = true;
    }
  }
  return lines.wellFormed() ? found : 0;
}

}  // namespace

/// Copies a text line by line, with the changes of one event.
class EventFile::Editor {
 public:
  Editor(const CalEvent& event, Date now, const NSTimeZone& zone)
      : event_(event), now_(now), zone_(zone), removed_(event.removedAlarms_) {}

  std::string edited(std::string_view text, std::size_t position);
  /// The lines of all properties that are set, or of those in `changes`.
  std::vector<Replacement> propertyLines(unsigned changes) const;

 private:
  void copyOfEvent(const EventLines& lines);
  void copyOfAlarm(const EventLines& lines);
  void copyProperty(const ContentLine& line);
  void writeMissing();
  bool isToGo(AlarmReader&& reader);

  const CalEvent& event_;
  Date now_;
  const NSTimeZone& zone_;
  std::vector<CalAlarm> removed_;
  std::vector<Replacement> replacements_;
  std::string out_;
  std::string lineEnd_ = "\r\n";
  AlarmReader alarm_;
  std::size_t alarmStart_ = 0;
};

std::vector<Replacement> EventFile::Editor::propertyLines(unsigned changes) const {
  std::vector<Replacement> lines;
  lines.reserve(9);
  const CalEvent& event = event_;
  if ((changes & CalEvent::kTitle) && event.title_) {
    lines.push_back({"SUMMARY", titleLine(*event.title_, lineEnd_)});
  }
  if ((changes & (CalEvent::kStart | CalEvent::kEnd | CalEvent::kAllDay)) && event.start_) {
    const Date start = event.start_->date();
    lines.push_back({"DTSTART", startLine(start, event.allDay_, zone_, lineEnd_)});
    lines.push_back({"DTEND", endLine(start, event.endDate(), event.allDay_, zone_, lineEnd_)});
    lines.push_back({"DURATION", ""});
  }
  if (changes & CalEvent::kUrl) {
    const std::string url = escapedURI(event.url_.value_or(""));
    lines.push_back({"URL", url.empty() ? "" : contentLine("URL;VALUE=URI", url, lineEnd_)});
  }
  const std::string now = utcText(now_);
  lines.push_back({"DTSTAMP", contentLine("DTSTAMP", now, lineEnd_)});
  lines.push_back({"LAST-MODIFIED", contentLine("LAST-MODIFIED", now, lineEnd_)});
  lines.push_back({"SEQUENCE", contentLine("SEQUENCE", "1", lineEnd_)});
  if ((changes & CalEvent::kIdentity) && event.ledgerIdentity()) {
    lines.push_back({kIdentityProperty,
                     contentLine(std::string(kIdentityProperty),
                                 identityText(*event.ledgerIdentity(), event.uid()), lineEnd_)});
  }
  return lines;
}

std::string EventFile::Editor::edited(std::string_view text, std::size_t position) {
  out_.reserve(text.size() + 512);
  std::size_t count = 0;
  EventLines lines(text);
  while (lines.next()) {
    if (lines.place() == Place::event && lines.kind() == Kind::begin && ++count == position) {
      lineEnd_ = lines.line().raw().ends_with("\r\n") ? "\r\n" : "\n";
      replacements_ = propertyLines(event_.changes_);
    }
    if (count == position && lines.depth() >= 2) {
      copyOfEvent(lines);
    } else {
      out_ += lines.line().raw();
    }
  }
  return std::move(out_);
}

void EventFile::Editor::copyOfEvent(const EventLines& lines) {
  const ContentLine& line = lines.line();
  if (lines.place() == Place::alarm) return copyOfAlarm(lines);
  if (lines.place() != Place::event) {
    if (lines.kind() == Kind::begin) writeMissing();
    out_ += line.raw();
    return;
  }
  switch (lines.kind()) {
    case Kind::begin:
      out_ += line.raw();
      break;
    case Kind::property:
      copyProperty(line);
      break;
    case Kind::end:
      writeMissing();
      for (const CalAlarm& alarm : event_.newAlarms()) appendAlarm(out_, alarm, lineEnd_);
      out_ += line.raw();
      break;
  }
}

void EventFile::Editor::copyOfAlarm(const EventLines& lines) {
  if (lines.kind() == Kind::begin) {
    writeMissing();
    alarm_ = AlarmReader();
    alarmStart_ = out_.size();
  } else if (lines.kind() == Kind::property) {
    alarm_.read(lines.line());
  }
  out_ += lines.line().raw();
  if (lines.kind() == Kind::end && isToGo(std::move(alarm_))) out_.resize(alarmStart_);
}

bool EventFile::Editor::isToGo(AlarmReader&& reader) {
  const auto alarm = std::move(reader).alarm();
  if (!alarm) return false;
  if (event_.replacesAlarms_) return true;
  const auto found = std::find(removed_.begin(), removed_.end(), *alarm);
  if (found == removed_.end()) return false;
  removed_.erase(found);
  return true;
}

void EventFile::Editor::copyProperty(const ContentLine& line) {
  const auto found = std::find_if(
      replacements_.begin(), replacements_.end(),
      [&](const Replacement& candidate) { return !candidate.done && line.named(candidate.name); });
  if (found == replacements_.end()) {
    out_ += line.raw();
    return;
  }
  found->done = true;
  if (found->name == "SEQUENCE") {
    appendContentLine(out_, "SEQUENCE", std::to_string(nextSequence(line.value())), lineEnd_);
  } else {
    out_ += found->line;
  }
}

void EventFile::Editor::writeMissing() {
  for (Replacement& replacement : replacements_) {
    if (!std::exchange(replacement.done, true)) out_ += replacement.line;
  }
}

std::string EventFile::newText(const CalEvent& event, Date now, const NSTimeZone& zone) {
  constexpr std::string_view end = "\r\n";
  std::string text(kHeader);
  text.reserve(2048);
  appendContentLine(text, "UID", escapedText(event.uid()), end);
  for (const Replacement& property : Editor(event, now, zone).propertyLines(~0U)) {
    if (property.name == "URL") appendContentLine(text, "TRANSP", "TRANSPARENT", end);
    if (property.name == "DTSTAMP") appendContentLine(text, "CREATED", utcText(now), end);
    if (property.name == "SEQUENCE") {
      appendContentLine(text, "SEQUENCE", "0", end);
    } else {
      text += property.line;
    }
  }
  for (const CalAlarm& alarm : event.alarms_) appendAlarm(text, alarm, end);
  text += "END:VEVENT\r\nEND:VCALENDAR\r\n";
  return text;
}

std::optional<std::string> EventFile::edited(std::string_view text, const CalEvent& event, Date now,
                                             const NSTimeZone& zone) {
  const std::size_t position = positionOfEvent(text, event.uid());
  if (position == 0) return std::nullopt;
  return Editor(event, now, zone).edited(text, position);
}

std::optional<std::string> EventFile::without(std::string_view text, const std::string& uid) {
  if (positionOfEvent(text, uid) == 0) return std::nullopt;
  std::string out;
  out.reserve(text.size());
  std::size_t start = 0;
  std::string thisUID;
  bool holdsMore = false;
  EventLines lines(text);
  while (lines.next()) {
    const bool isEvent = lines.place() == Place::event;
    const bool begins = lines.kind() == Kind::begin;
    if (isEvent && begins) {
      start = out.size();
      thisUID.clear();
    }
    if (isEvent && lines.line().named("UID") && thisUID.empty()) {
      thisUID = unescapedText(lines.line().value());
    }
    if (!isEvent && begins && lines.depth() == 2 &&
        !equalsIgnoringCase(lines.line().value(), "VTIMEZONE")) {
      holdsMore = true;
    }
    out += lines.line().raw();
    if (isEvent && lines.kind() == Kind::end) {
      if (thisUID == uid) {
        out.resize(start);
      } else {
        holdsMore = true;
      }
    }
  }
  return holdsMore ? out : std::string();
}

bool EventFile::isBrokenOff(std::string_view text) {
  if (text.ends_with('\0') || isHardlyBegun(text)) return true;
  EventLines lines(text);
  while (lines.next()) {
  }
  // Where the text breaks off inside an END line, that line closes nothing.
  const std::string_view last = lines.line().raw();
  const bool atEnd = last.data() + last.size() == text.data() + text.size();
  return lines.isOpen() ||
         (atEnd && !last.ends_with('\n') && lines.depth() > 0 && !lines.wellFormed());
}

bool EventFile::isHardlyBegun(std::string_view text) {
  return kHeader.starts_with(withoutZeros(text));
}

bool EventFile::isOurs(std::string_view text) {
  const bool hasOurHeader = text.starts_with(kHeader.substr(0, kHeader.find("//EN")));
  std::string uid;
  std::optional<IdentityValue> identity;
  const auto eventIsOurs = [&] {
    if (identity) return uid.empty() || identity->eventUID == uid;
    return isOurEventUID(uid) || hasOurHeader;
  };
  bool inEvent = false;
  bool sawEvent = false;
  EventLines lines(withoutZeros(text));
  while (lines.next()) {
    if (lines.place() != Place::event) continue;
    const ContentLine& line = lines.line();
    if (lines.kind() == Kind::begin) {
      inEvent = sawEvent = true;
      uid.clear();
      identity.reset();
    } else if (lines.kind() == Kind::end) {
      if (!eventIsOurs()) return false;
      inEvent = false;
    } else if (!line.raw().ends_with('\n')) {  // Broken off here.
      continue;
    } else if (line.named("UID") && uid.empty()) {
      uid = unescapedText(line.value());
    } else if (line.named(kIdentityProperty) && !identity) {
      identity = identityFromText(line.value());
    }
  }
  return inEvent ? eventIsOurs() : sawEvent || hasOurHeader;
}

}  // namespace annivo
