// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calendar/core_data_for_dates_AppDelegate.h"
#include "platform/Platform.h"

namespace annivo {

/// The records of the event ledger: which event stands for which occurrence of a date.
///
/// A change reaches the ledger with the next save().
class EventRecords {
 public:
  using Records = std::vector<NSManagedObject*>;

  /// Both outlive this.
  EventRecords(Platform& platform, core_data_for_dates_AppDelegate& store)
      : platform_(platform), store_(store), context_(store.managedObjectContext()) {}

  /// Nothing when the fetch failed (logged), as it does without a ledger.
  [[nodiscard]] std::optional<Records> fetch(std::optional<NSPredicate> predicate);
  /// The records of an occurrence: those that the ledger takes for the same.
  [[nodiscard]] std::optional<Records> find(const LedgerIdentity& identity);
  NSManagedObject& insert(const LedgerIdentity& identity, const std::string& eventUID);
  /// Points a record at another event.
  void setEvent(NSManagedObject& record, const std::string& eventUID);
  void remove(NSManagedObject& record);
  /// Whether all was saved; a failure is presented.
  bool save() { return store_.saveAction(); }

  /// The UID of the record's event; null where it names none.
  [[nodiscard]] static const std::string* eventUID(const NSManagedObject& record) {
    return record.valueForKey("iCalUID").string();
  }
  /// The occurrence that the record stands for.
  [[nodiscard]] static LedgerIdentity identity(const NSManagedObject& record);

 private:
  Platform& platform_;
  core_data_for_dates_AppDelegate& store_;
  NSManagedObjectContext* context_;  ///< null without a data model
};

}  // namespace annivo
