// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "calendar/EventRecords.h"
#include "calendar/RunMark.h"
#include "platform/Platform.h"

namespace annivo {

/// Brings ledger and event files together where a run was cut off or the ledger was lost: what is
/// half written is taken away, and events of ours without a record get one (docs/guarantees.md).
class Recovery {
 public:
  /// All outlive this.
  Recovery(Platform& platform, core_data_for_dates_AppDelegate& store, EventRecords& records,
           RunMark& mark)
      : platform_(platform),
        calendars_(platform.defaultCalendarStore()),
        ledgerStore_(store),
        records_(records),
        mark_(mark) {}

  /// Reads the ledger at the first call; where it is damaged or gone, rebuilds it from the
  /// calendars.
  core_data_for_dates_AppDelegate::Ledger ledger();
  /// What a run does that finds the mark of one that did not end well.
  void reconcile();
  /// Gives records to the events of ours in calendars that the mark names as locked and that may be
  /// written now. Whether there are such calendars.
  bool takeUpUnlocked();

  /// The event of a record. Absent also where its file was damaged for a day and is set aside now;
  /// anything else that is wrong says that the event may be there.
  [[nodiscard]] Result<std::shared_ptr<CalEvent>> eventOf(const std::string& eventUID,
                                                          const LedgerIdentity& identity);
  /// To be asked before an event is made: one of ours that stands for the occurrence already, in a
  /// file that the ledger does not name. Absent only where all such files could be looked at; they
  /// are, once for each calendar. Without a ledger that is every event file of every calendar.
  [[nodiscard]] Result<std::shared_ptr<CalEvent>> unrecordedEvent(const LedgerIdentity& identity);

 private:
  using Calendars = std::vector<std::shared_ptr<CalCalendar>>;
  /// The events of ours that the ledger does not name.
  struct Unrecorded {
    std::unordered_map<std::string, std::string> uidByIdentity;
    bool complete = true;
  };
  Calendars unlockedCalendars();
  void adoptEvents(const Calendars& calendars);
  void adoptEvent(CalEvent& event, NSManagedObject*& record);
  void removeSecondEvent(CalEvent& event);
  Unrecorded unrecordedEvents(const std::string& calendarUID);

  Platform& platform_;
  CalCalendarStore& calendars_;
  core_data_for_dates_AppDelegate& ledgerStore_;
  EventRecords& records_;
  RunMark& mark_;
  bool reconciled_ = false;
  std::map<std::string, Unrecorded> unrecorded_;  ///< by calendar UID
};

}  // namespace annivo
