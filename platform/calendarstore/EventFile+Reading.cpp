// SPDX-License-Identifier: MIT
#include <utility>

#include "platform/calendarstore/AlarmComponent.h"
#include "platform/calendarstore/ContentText.h"
#include "platform/calendarstore/ContentValues.h"
#include "platform/calendarstore/EventFile.h"
#include "platform/calendarstore/EventLines.h"

namespace annivo {
namespace {

std::string titleFrom(const ContentLine& line) {
  std::string title = unescapedText(line.value);
  if (line.parameters.empty()) return title;
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
    end_.reset();
    duration_.reset();
    identity_.reset();
    isException_ = false;
  }
  void read(const ContentLine& line);
  void beginAlarm() { alarm_ = AlarmReader(); }
  void readAlarm(const ContentLine& line) { alarm_.read(line); }
  void endAlarm() {
    if (auto alarm = std::move(alarm_).alarm()) event_->alarms_.push_back(*std::move(alarm));
  }
  /// Null for an exception and for what has no UID.
  std::shared_ptr<CalEvent> end();

 private:
  void finishDates();

  const NSTimeZone& zone_;
  std::shared_ptr<CalEvent> event_;
  AlarmReader alarm_;
  std::optional<DateValue> end_;
  std::optional<std::int64_t> duration_;
  std::optional<IdentityValue> identity_;
  bool isException_ = false;
};

void EventFile::Reader::read(const ContentLine& line) {
  CalEvent& event = *event_;
  if (line.named("UID")) {
    if (event.uid_.empty()) event.uid_ = unescapedText(line.value);
  } else if (line.named("SUMMARY")) {
    if (!event.title_) event.title_ = titleFrom(line);
  } else if (line.named("DTSTART")) {
    if (event.startDate_) return;
    if (const auto start = dateValue(line, zone_)) {
      event.startDate_ = start->date;
      event.allDay_ = start->allDay;
    }
  } else if (line.named("DTEND")) {
    if (!end_) end_ = dateValue(line, zone_);
  } else if (line.named("DURATION")) {
    if (!duration_) duration_ = durationFromText(line.value);
  } else if (line.named("URL")) {
    if (!event.url_) event.url_ = std::string(line.value);
  } else if (line.named("RECURRENCE-ID")) {
    isException_ = true;
  } else if (line.named(kIdentityProperty)) {
    if (!identity_) identity_ = identityFromText(line.value);
  }
}

std::shared_ptr<CalEvent> EventFile::Reader::end() {
  if (isException_ || event_->uid_.empty()) return nullptr;
  finishDates();
  if (identity_ && identity_->eventUID == event_->uid_) {
    event_->identity_ = std::move(identity_->identity);
  }
  event_->keptAlarms_ = event_->alarms_.size();
  return std::move(event_);
}

void EventFile::Reader::finishDates() {
  CalEvent& event = *event_;
  if (!event.startDate_) return;
  if (end_ && end_->allDay) {
    CivilTime last = zone_.civil(end_->date);
    last.day -= 1;
    event.endDate_ = zone_.date(last);
  } else if (end_) {
    event.endDate_ = end_->date;
  } else if (duration_) {
    const std::int64_t day = event.allDay_ ? 86400 : 0;
    event.endDate_ = *event.startDate_ + std::chrono::seconds{*duration_ - day};
  }
  if (!event.endDate_ || *event.endDate_ < *event.startDate_) event.endDate_ = event.startDate_;
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
