// SPDX-License-Identifier: MIT
#pragma once

#include <string>

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

 private:
  void adoptEvents();
  [[nodiscard]] bool eventExists(const std::string& uid);
  void removeSecondEvent(CalEvent& event);

  Platform& platform_;
  CalCalendarStore& calendars_;
  core_data_for_dates_AppDelegate& ledgerStore_;
  EventRecords& records_;
  RunMark& mark_;
  bool reconciled_ = false;
};

}  // namespace annivo
