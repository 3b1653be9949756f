// SPDX-License-Identifier: MIT
#include <utility>

#include "codecs/icalendar/AlarmComponent.h"
#include "codecs/icalendar/ContentText.h"
#include "codecs/icalendar/ContentValues.h"
#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventLines.h"

namespace annivo {
namespace {

std::string titleFrom(const ContentLine& line) {
  std::string title = unescapedText(line.value());
  if (line.parameters().empty()) return title;
  if (const auto parameter = line.parameter(kExactParameter)) {
    std::string exact = underscoreDecoded(*parameter);
    if (plainestText(exact) == plainestText(title)) return exact;
  }
  return title;
}

}  // namespace

/// Collects one event from the lines of its VEVENT. Of a property that comes twice the first
/// counts.
class EventFile::Reader {
 public:
  explicit Reader(const NSTimeZone& zone) : zone_(zone) {}

  void begin() {
    event_ = std::make_shared<CalEvent>();
    duration_.reset();
    isException_ = false;
  }
  void read(const ContentLine& line);
  void beginAlarm() { alarm_ = AlarmReader(); }
  void readAlarm(const ContentLine& line) { alarm_.read(line); }
  void endAlarm() {
    if (event_->alarms_.empty()) event_->alarms_.reserve(4);
    if (auto alarm = std::move(alarm_).alarm()) event_->alarms_.push_back(*std::move(alarm));
  }
  /// Null for an exception and for what has no UID.
  std::shared_ptr<CalEvent> end();

 private:
  void finishDates();

  const NSTimeZone& zone_;
  std::shared_ptr<CalEvent> event_;
  AlarmReader alarm_;
  std::optional<std::int64_t> duration_;
  bool isException_ = false;
};

void EventFile::Reader::read(const ContentLine& line) {
  CalEvent& event = *event_;
  if (line.named("UID")) {
    if (event.uid_.empty()) event.uid_ = unescapedText(line.value());
  } else if (line.named("SUMMARY")) {
    if (!event.title_) event.title_ = titleFrom(line);
  } else if (line.named("DTSTART")) {
    if (event.start_) return;
    event.start_ = dateValue(line, zone_);
    event.allDay_ = event.start_ && event.start_->day();
  } else if (line.named("DTEND")) {
    if (!event.end_) event.end_ = dateValue(line, zone_);
  } else if (line.named("DURATION")) {
    if (!duration_) duration_ = durationFromText(line.value());
  } else if (line.named("URL")) {
    if (!event.url_) event.url_ = std::string(line.value());
  } else if (line.named("RECURRENCE-ID")) {
    isException_ = true;
  } else if (line.named(kIdentityProperty)) {
    if (event.identityText_.empty()) event.identityText_ = line.value();
  }
}

std::shared_ptr<CalEvent> EventFile::Reader::end() {
  if (isException_ || event_->uid_.empty()) return nullptr;
  finishDates();
  event_->keptAlarms_ = event_->alarms_.size();
  return event_;
}

void EventFile::Reader::finishDates() {
  const auto& start = event_->start_;
  auto& end = event_->end_;
  if (!start) return end.reset();
  if (end && end->day()) {
    const bool laterDay = start->day() && *end->day() > *start->day();
    CivilTime last = *end->day();
    last.day -= 1;
    end = EventTime(last, zone_);
    if (laterDay) return;
  } else if (!end && duration_) {
    const std::int64_t day = event_->allDay_ ? 86400 : 0;
    end = start->date() + std::chrono::seconds{*duration_ - day};
  }
  if (!end || end->date() < start->date()) end = start;
}

std::optional<std::vector<std::shared_ptr<CalEvent>>> EventFile::events(std::string_view text,
                                                                        const NSTimeZone& zone) {
  using Kind = EventLines::Kind;
  using Place = EventLines::Place;
  std::vector<std::shared_ptr<CalEvent>> found;
  Reader reader(zone);
  EventLines lines(text);
  while (lines.next()) {
    if (lines.place() == Place::event) {
      switch (lines.kind()) {
        case Kind::begin:
          reader.begin();
          break;
        case Kind::property:
          reader.read(lines.line());
          break;
        case Kind::end:
          if (auto event = reader.end()) found.push_back(std::move(event));
          break;
      }
    } else if (lines.place() == Place::alarm) {
      switch (lines.kind()) {
        case Kind::begin:
          reader.beginAlarm();
          break;
        case Kind::property:
          reader.readAlarm(lines.line());
          break;
        case Kind::end:
          reader.endAlarm();
          break;
      }
    }
  }
  if (!lines.wellFormed()) return std::nullopt;
  return found;
}

}  // namespace annivo
