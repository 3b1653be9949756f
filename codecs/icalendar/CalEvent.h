// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Date.h"
#include "base/NSCalendarDate.h"
#include "codecs/icalendar/CalAlarm.h"

namespace annivo {

class CalCalendar;

/// The identity under which the ledger knows an event, kept in the event's file too, so that
/// ledger and calendars can be reconciled after a power loss.
struct LedgerIdentity {
  std::string myUID = {};
  std::string calendarUID = {};
  Date date{};
  friend bool operator==(const LedgerIdentity&, const LedgerIdentity&) = default;
};

/// When an event starts or ends: a moment, or a day, which stands for its midnight. Computed on
/// request: of most events only title and alarms are asked for.
class EventTime {
 public:
  EventTime(Date moment) : moment_(moment) {}
  EventTime(const CivilTime& day, const NSTimeZone& zone) : day_(Day{day, zone}) {}

  [[nodiscard]] Date date() const { return day_ ? day_->zone.date(day_->civil) : moment_; }
  /// Nothing for a moment.
  [[nodiscard]] const CivilTime* day() const { return day_ ? &day_->civil : nullptr; }

 private:
  struct Day {
    CivilTime civil;
    NSTimeZone zone;
  };
  Date moment_{};
  std::optional<Day> day_;
};

/// One event. A new one has a UID and nothing else; an event with a title, empty or not, is one
/// that exists in a calendar.
class CalEvent {
 public:
  /// A new blank event with a fresh upper-case UUID (drawn when first asked for), which it keeps
  /// when saved.
  static std::shared_ptr<CalEvent> event();

  [[nodiscard]] const std::string& uid() const;
  [[nodiscard]] const std::optional<std::string>& title() const { return title_; }
  void setTitle(std::string title);
  [[nodiscard]] const std::shared_ptr<CalCalendar>& calendar() const { return calendar_; }
  void setCalendar(std::shared_ptr<CalCalendar> calendar);
  [[nodiscard]] std::optional<Date> startDate() const { return dateOf(start_); }
  void setStartDate(Date date);
  /// Of an all-day event read from a file: midnight at the start of its last day.
  [[nodiscard]] std::optional<Date> endDate() const { return dateOf(end_); }
  void setEndDate(Date date);
  [[nodiscard]] bool isAllDay() const { return allDay_; }
  void setIsAllDay(bool allDay);
  /// The URL as text; nothing when the event has none.
  [[nodiscard]] const std::optional<std::string>& url() const { return url_; }
  void setUrl(std::optional<std::string> url);
  [[nodiscard]] const std::vector<CalAlarm>& alarms() const { return alarms_; }
  void addAlarms(const std::vector<CalAlarm>& alarms);
  /// Replaces all alarms.
  void setAlarms(std::vector<CalAlarm> alarms);
  /// Removes the first alarm equal to `alarm`.
  void removeAlarm(const CalAlarm& alarm);
  [[nodiscard]] const std::optional<LedgerIdentity>& ledgerIdentity() const;
  void setLedgerIdentity(LedgerIdentity identity);

 private:
  friend class CalCalendarStore;
  friend class EventFile;
  enum Changes : unsigned {
    kTitle = 1,
    kStart = 2,
    kEnd = 4,
    kAllDay = 8,
    kUrl = 16,
    kAlarms = 32,
    kIdentity = 64,
    kCalendar = 128,
  };
  [[nodiscard]] static std::optional<Date> dateOf(const std::optional<EventTime>& time) {
    return time ? std::optional(time->date()) : std::nullopt;
  }
  /// The alarms that no file holds yet.
  [[nodiscard]] std::span<const CalAlarm> newAlarms() const {
    return std::span(alarms_).subspan(keptAlarms_);
  }

  mutable std::string uid_;
  std::optional<std::string> title_;
  std::shared_ptr<CalCalendar> calendar_;
  std::optional<EventTime> start_;
  std::optional<EventTime> end_;
  bool allDay_ = false;
  std::optional<std::string> url_;
  std::vector<CalAlarm> alarms_;
  std::size_t keptAlarms_ = 0;           ///< how many of alarms_, the first ones, are the file's
  std::vector<CalAlarm> removedAlarms_;  ///< alarms of the file that are to go
  bool replacesAlarms_ = false;          ///< all alarms of the file are to go
  mutable std::optional<LedgerIdentity> identity_;
  mutable std::string identityText_;  ///< as the file has it; "" once it is read
  std::string path_;                  ///< its file; "" for a new event
  unsigned changes_ = 0;              ///< what was set since it was read
};

}  // namespace annivo
