// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Platform.h"

namespace annivo {

/// The store of the event ledger, "Annivo 2.xml" in the folder "Annivo 2" of application support.
///
/// 1. Nothing is opened before managedObjectContext() is first asked for; that makes the folder and
///    adds the store, whose content is read by readLedger() or, at the latest, the first fetch.
/// 2. saveAction() writes what changed to the ledger's journal.
/// 3. closeLedger(), or else destruction, brings the journal into the file. Then context,
///    coordinator and model go, in that order.
class core_data_for_dates_AppDelegate {
 public:
  explicit core_data_for_dates_AppDelegate(Platform& platform) : platform_(platform) {}
  ~core_data_for_dates_AppDelegate();
  core_data_for_dates_AppDelegate(const core_data_for_dates_AppDelegate&) = delete;
  core_data_for_dates_AppDelegate& operator=(const core_data_for_dates_AppDelegate&) = delete;

  /// Made at the first call and kept; null when there is no coordinator.
  [[nodiscard]] NSManagedObjectContext* managedObjectContext();
  /// Made at the first call and kept, with or without a store; null when there is no model.
  [[nodiscard]] NSPersistentStoreCoordinator* persistentStoreCoordinator();
  /// The merged models of the main bundle; null, presented, when they cannot be read.
  [[nodiscard]] const NSManagedObjectModel* managedObjectModel();
  [[nodiscard]] std::string applicationSupportFolder() const;
  /// Where the ledger lies when there is no application-support folder.
  [[nodiscard]] std::string temporaryFolder() const;
  /// Whether the ledger that was opened lies there, where the next run will not look for it.
  [[nodiscard]] bool isTemporary() const { return temporary_; }

  enum class Ledger {
    sound,
    absent,   ///< there is none yet, or not any more
    damaged,  ///< what was there has to be set aside, the ledger lacks it
    missing,  ///< it cannot be read: fetches and saves fail
  };
  /// Reads the ledger at the first call. What is wrong with it is presented.
  Ledger readLedger();
  /// Begins to read it on another thread.
  void expectLedger();
  /// Whether it has been read and can be asked.
  [[nodiscard]] bool hasLedger() const { return ledger_ && *ledger_ != Ledger::missing; }
  /// `saveAction:`. A failure is presented; the changes stay in memory. Whether it was saved.
  bool saveAction();
  /// Brings the ledger file up to date with all that was saved. A failure is presented, and nothing
  /// that was saved is lost by it. Whether it succeeded. No other operation may follow.
  bool closeLedger();
  /// `windowWillReturnUndoManager:`. The context's.
  [[nodiscard]] NSUndoManager* windowWillReturnUndoManager();
  /// `applicationShouldTerminate:`
  [[nodiscard]] TerminateReply applicationShouldTerminate();

 private:
  Platform& platform_;
  std::unique_ptr<NSManagedObjectModel> managedObjectModel_;
  std::unique_ptr<NSPersistentStoreCoordinator> persistentStoreCoordinator_;
  std::unique_ptr<NSManagedObjectContext> managedObjectContext_;
  std::optional<Ledger> ledger_;
  bool temporary_ = false;
  bool closed_ = false;
};

}  // namespace annivo
