// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/Platform.h"

namespace annivo {

/// The store of the event ledger, "Annivo 2.xml" in the folder "Annivo 2" of application support.
///
/// 1. Nothing is opened before managedObjectContext() is first asked for; that makes the folder and
///    adds the store, whose content is read at the first fetch.
/// 2. saveAction() writes what changed to the ledger's journal.
/// 3. On destruction context, coordinator and model go, in that order; the coordinator's store
///    folds the journal into the file as it closes.
class core_data_for_dates_AppDelegate {
 public:
  explicit core_data_for_dates_AppDelegate(Platform& platform);
  ~core_data_for_dates_AppDelegate();

  /// Made at the first call and kept; null when there is no coordinator.
  [[nodiscard]] NSManagedObjectContext* managedObjectContext();
  [[nodiscard]] NSPersistentStoreCoordinator* persistentStoreCoordinator();
  /// The merged models of the main bundle.
  [[nodiscard]] const NSManagedObjectModel* managedObjectModel();
  [[nodiscard]] std::string applicationSupportFolder() const;
  /// `saveAction:`. A failure is presented; the changes stay in memory.
  void saveAction();
  /// `applicationShouldTerminate:`
  [[nodiscard]] TerminateReply applicationShouldTerminate();

 private:
  Platform& platform_;
  std::unique_ptr<NSManagedObjectModel> managedObjectModel_;
  std::unique_ptr<NSPersistentStoreCoordinator> persistentStoreCoordinator_;
  std::unique_ptr<NSManagedObjectContext> managedObjectContext_;
};

}  // namespace annivo
