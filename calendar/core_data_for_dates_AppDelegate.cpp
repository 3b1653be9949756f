// SPDX-License-Identifier: MIT
#include "calendar/core_data_for_dates_AppDelegate.h"

namespace annivo {

core_data_for_dates_AppDelegate::~core_data_for_dates_AppDelegate() {
  closeLedger();
  managedObjectContext_.reset();
  persistentStoreCoordinator_.reset();
  managedObjectModel_.reset();
}

std::string core_data_for_dates_AppDelegate::applicationSupportFolder() const {
  const auto support = platform_.applicationSupportDirectory();
  return support ? *support + '/' + names::kLedger : temporaryFolder();
}

std::string core_data_for_dates_AppDelegate::temporaryFolder() const {
  return platform_.temporaryDirectory() + '/' + names::kLedger;
}

const NSManagedObjectModel* core_data_for_dates_AppDelegate::managedObjectModel() {
  if (!managedObjectModel_) {
    auto model = NSManagedObjectModel::mergedModelFromBundle(platform_.fileManager(),
                                                             platform_.mainBundle());
    if (!model) {
      platform_.application().presentError(model.error());
      return nullptr;
    }
    managedObjectModel_ = std::make_unique<NSManagedObjectModel>(std::move(*model));
  }
  return managedObjectModel_.get();
}

NSPersistentStoreCoordinator* core_data_for_dates_AppDelegate::persistentStoreCoordinator() {
  if (persistentStoreCoordinator_) return persistentStoreCoordinator_.get();
  const std::string folder = applicationSupportFolder();
  temporary_ = folder == temporaryFolder();
  if (temporary_) {
    platform_.log().write("There is no folder " + platform_.folders().applicationSupport() +
                          "; the event ledger is kept in " + folder);
  }
  NSFileManager& files = platform_.fileManager();
  // The run goes on without it; setting the run's mark tries again.
  if (!files.fileExistsAtPath(folder)) {
    if (const auto made = files.createDirectory(folder); !made) {
      platform_.log().write(made.error().text());
    }
  }
  const NSManagedObjectModel* model = managedObjectModel();
  if (!model) return nullptr;
  persistentStoreCoordinator_ =
      std::make_unique<NSPersistentStoreCoordinator>(*model, platform_.storeEnvironment());
  const auto added = persistentStoreCoordinator_->addPersistentStore(
      StoreType::xml, folder + '/' + names::kLedger + ".xml");
  if (!added) platform_.application().presentError(added.error());
  return persistentStoreCoordinator_.get();
}

NSManagedObjectContext* core_data_for_dates_AppDelegate::managedObjectContext() {
  if (!managedObjectContext_) {
    NSPersistentStoreCoordinator* coordinator = persistentStoreCoordinator();
    if (!coordinator) return nullptr;
    managedObjectContext_ = std::make_unique<NSManagedObjectContext>();
    managedObjectContext_->setPersistentStoreCoordinator(coordinator);
  }
  return managedObjectContext_.get();
}

core_data_for_dates_AppDelegate::Ledger core_data_for_dates_AppDelegate::readLedger() {
  if (ledger_) return *ledger_;
  NSPersistentStoreCoordinator* coordinator = persistentStoreCoordinator();
  NSPersistentStore* store = coordinator ? coordinator->store() : nullptr;
  if (!store) return *(ledger_ = Ledger::missing);
  if (const auto loaded = store->load(); !loaded) {
    platform_.application().presentError(loaded.error());
    return *(ledger_ = Ledger::missing);
  }
  for (const std::string& note : store->notes()) platform_.log().write(note);
  ledger_ = store->damage() ? Ledger::damaged : store->isNew() ? Ledger::absent : Ledger::sound;
  if (store->damage()) platform_.application().presentError(*store->damage());
  return *ledger_;
}

void core_data_for_dates_AppDelegate::expectLedger() {
  NSPersistentStoreCoordinator* coordinator = persistentStoreCoordinator();
  if (coordinator && coordinator->store()) coordinator->store()->beginLoading();
}

bool core_data_for_dates_AppDelegate::saveAction() {
  NSManagedObjectContext* context = managedObjectContext();
  if (!context) return false;
  const auto saved = context->save();
  if (!saved) platform_.application().presentError(saved.error());
  return saved.ok();
}

bool core_data_for_dates_AppDelegate::closeLedger() {
  if (closed_) return true;
  closed_ = true;
  NSPersistentStore* store =
      persistentStoreCoordinator_ ? persistentStoreCoordinator_->store() : nullptr;
  if (!store) return true;
  const auto folded = store->close();
  if (!folded) platform_.application().presentError(folded.error());
  return folded.ok();
}

NSUndoManager* core_data_for_dates_AppDelegate::windowWillReturnUndoManager() {
  NSManagedObjectContext* context = managedObjectContext();
  return context ? context->undoManager() : nullptr;
}

TerminateReply core_data_for_dates_AppDelegate::applicationShouldTerminate() {
  if (!managedObjectContext_) return TerminateReply::now;
  if (!managedObjectContext_->commitEditing()) return TerminateReply::cancel;
  if (!managedObjectContext_->hasChanges()) return TerminateReply::now;
  const auto saved = managedObjectContext_->save();
  if (saved) return TerminateReply::now;
  if (platform_.application().presentError(saved.error())) return TerminateReply::cancel;
  const auto answer = platform_.application().runAlertPanel(
      {.messageText = "",
       .defaultButton = "Quit anyway",
       .alternateButton = "Cancel",
       .otherButton = "",
       .informativeText = "Could not save changes while quitting. Quit anyway?"});
  return answer == AlertAnswer::defaultButton ? TerminateReply::now : TerminateReply::cancel;
}

}  // namespace annivo
