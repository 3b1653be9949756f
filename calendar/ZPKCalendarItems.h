// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "calendar/CalendarType.h"
#include "calendar/EventRecords.h"
#include "calendar/Recovery.h"
#include "calendar/RunMark.h"
#include "calendar/core_data_for_dates_AppDelegate.h"
#include "platform/Platform.h"

namespace annivo {

/// The calendar writer: the one object through which the program touches calendars.
///
/// 1. Made at the start of a run; opens the event ledger. Where it finds the mark of a run that did
///    not end well, it reconciles ledger and calendars first (docs/guarantees.md).
/// 2. setThisCalendar…, initAlarmArray and addAlarm… choose the target and the alarms of a pass.
/// 3. addBasicEvent writes, or brings up to date, one event for each occurrence.
/// 4. removeOtherEvents takes away what was not written or confirmed.
/// 5. On destruction the ledger is saved, everything made durable and the run's mark removed.
class ZPKCalendarItems {
 public:
  explicit ZPKCalendarItems(Platform& platform);
  ~ZPKCalendarItems();
  ZPKCalendarItems(const ZPKCalendarItems&) = delete;
  ZPKCalendarItems& operator=(const ZPKCalendarItems&) = delete;

  // Selection.

  /// `setThisCalendar:withUID:forType:`. The calendar of that UID, or, when there is none, a new
  /// one of that title, whose UID is stored in the parent's preferences as that of the type.
  void setThisCalendarWithUIDForType(const std::string& title, const std::string& uid,
                                     CalendarType type);
  /// The current target; null before one was set.
  [[nodiscard]] const std::shared_ptr<CalCalendar>& thisCalendar() const { return thisCalendar_; }
  /// Whether the current target is not editable.
  [[nodiscard]] bool calendarLocked() const { return calendarLocked_; }
  /// `setDefaultUID:forType:`. Stores a calendar's UID in the parent's preferences, at once; no UID
  /// removes it.
  void setDefaultUIDForType(const std::optional<std::string>& uid, CalendarType type);
  /// `hasCalendar:beenUpdatedSinceLastRun:`
  [[nodiscard]] bool hasCalendarBeenUpdatedSinceLastRun(const std::string& uid,
                                                        std::optional<Date> lastRun);

  /// Whether a run before left something that only a pass can bring to its end, whatever the
  /// folders look like.
  [[nodiscard]] bool hasUnfinishedRun() const { return hasUnfinishedRun_; }

  // Writing.

  /// Empties the alarm list.
  void initAlarmArray();
  [[nodiscard]] const std::vector<CalAlarm>& alarmArray() const { return alarmArray_; }
  /// The arguments of `addAlarm:emailAddress:relativeTrigger:sound:URL:`.
  struct Alarm {
    std::string kind;  ///< as the alarm table has it; of a text of no kind only the trigger counts
    std::string emailAddress;
    std::int32_t relativeTrigger = 0;  ///< seconds from the event's start
    std::string sound;
    std::string URL;
  };
  void addAlarm(const Alarm& alarm);
  /// `findEventWithID:onDate:`. Null where the event, or one that stands for it, may be there and
  /// cannot be read: it counts as retained, and the run's mark stays.
  [[nodiscard]] std::shared_ptr<CalEvent> findEventWithIDOnDate(const std::string& uid, Date date);
  /// The arguments of `addBasicEvent:withStartDate:endDate:allDay:notes:location:url:uid:`.
  struct BasicEvent {
    std::string title;
    Date withStartDate;
    Date endDate;
    bool allDay = true;
    std::string notes;                    ///< accepted, not used
    std::optional<std::string> location;  ///< accepted, not used
    std::string url;
    std::string uid;  ///< of the source date
  };
  void addBasicEvent(const BasicEvent& event);
  /// Announces that events will be added, so that the ledger can be read in the background.
  void expectLedger() { coreDataSpace->expectLedger(); }
  /// Announces the events that follow those of the last call, so that their files can be read in
  /// the background. No result depends on it.
  void expectBasicEvents(const std::vector<std::vector<BasicEvent>>& events);

  // Removal.

  /// To be called before removeOtherEvents where not all contacts could be read: the events of all
  /// dates but those of these UIDs, which were read, count as confirmed in this run. Its mark
  /// stays, so that the next run looks again.
  void confirmEventsOfDatesNotIn(const std::unordered_set<std::string>& dateUIDs);
  void removeOtherEvents();
  /// `currentDateOffsetByYears:`
  [[nodiscard]] Date currentDateOffsetByYears(std::int32_t years) const;
  /// Logs, always, how many events all calendars hold in the current year.
  static void logEventsThisYear(Platform& platform);

  /// Makes what was written to the calendars durable; to be called before the time of the run is
  /// stored.
  void synchronizeCalendars();
  /// Whether another program has changed a target's events since they were first looked at.
  [[nodiscard]] bool wereChangedMeanwhile() { return myStore.wasChangedByOthers(); }
  /// Keeps the run's mark, so that the next run does its pass whatever the folders' times say.
  void askForAnotherPass() { mark_.noteFailure(); }
  /// Whether the run's mark could not be written, so that nothing was changed and no mark makes the
  /// next run do it. The time of the run must not be stored then.
  [[nodiscard]] bool couldNotBegin() const { return mark_.couldNotBeSet(); }

 private:
  /// `dataFetchedWithPredicate:`. Nothing when the fetch failed (logged).
  std::optional<EventRecords::Records> dataFetchedWithPredicate(
      std::optional<NSPredicate> predicate);
  [[nodiscard]] const std::string& thisCalendarUID() const;
  /// The records of an occurrence in the current target.
  std::optional<EventRecords::Records> recordsOf(const std::string& uid, Date date);
  [[nodiscard]] std::shared_ptr<CalEvent> unrecordedOrBlankEvent(const LedgerIdentity& identity);
  /// What the ledger says of the calendar's event for an occurrence; null where it says nothing.
  const std::string* recordedEventUID(const BasicEvent& basic);
  void makeCalendar(CalendarType type);
  void refuseEvent(const BasicEvent& basic);
  bool updateExistingEvent(CalEvent& event, const std::string& title);
  void fillNewEvent(CalEvent& event, const BasicEvent& basic);
  void saveEvent(CalEvent& event);
  void removeRecordAndEvent(NSManagedObject& record, const char* logPrefix);
  bool removeEvent(CalEvent& event);

  void adoptCalendars();
  [[nodiscard]] std::shared_ptr<CalCalendar> adoptedCalendar(CalendarType type);
  /// The folder of all calendars, or the home while there is none.
  [[nodiscard]] std::string calendarsFolder() const;

  Platform& platform_;
  CalCalendarStore& myStore;
  std::shared_ptr<CalCalendar> thisCalendar_;
  std::vector<std::string> theRetainedEventUIDs;
  std::vector<CalAlarm> alarmArray_;
  std::optional<Date> horizon_;  ///< a year before the first event was added
  std::unique_ptr<core_data_for_dates_AppDelegate> coreDataSpace;
  NSManagedObjectContext* moc = nullptr;
  bool calendarLocked_ = false;
  RunMark mark_;
  EventRecords records_;
  Recovery recovery_;
  bool hasUnfinishedRun_ = false;
  /// Calendars of the run that was cut off. The preferences that this run read
  /// at its start do not name them yet.
  std::map<CalendarType, std::string> adoptedCalendars_;
};

}  // namespace annivo
