// SPDX-License-Identifier: MIT
#include "parent/runs/OurEvents.h"

#include "calendar/EventRecords.h"
#include "parent/runs/OverlayFileManager.h"

namespace annivo {

namespace {

std::string ledgerFile(Platform& platform) {
  return core_data_for_dates_AppDelegate(platform).applicationSupportFolder() + '/' +
         names::kLedger + ".xml";
}

void addRecorded(Platform& platform, NSFileManager& files, std::set<std::string>& recorded) {
  const auto model =
      NSManagedObjectModel::mergedModelFromBundle(platform.fileManager(), platform.mainBundle());
  if (!model) return platform.log().write(model.error().text());
  // What a run that was cut off left beside the ledger is brought into it in memory only.
  OverlayFileManager overlay(files, platform.clock());
  NSPersistentStoreCoordinator coordinator(*model,
                                           {overlay, platform.clock(), platform.defaultTimeZone()});
  if (const auto added = coordinator.addPersistentStore(StoreType::xml, ledgerFile(platform));
      !added) {
    return platform.log().write(added.error().text());
  }
  NSManagedObjectContext context;
  context.setPersistentStoreCoordinator(&coordinator);
  const auto records = context.executeFetchRequest({.entity = "Event", .predicate = {}});
  if (!records) return platform.log().write(records.error().text());
  for (const NSManagedObject* record : *records) {
    if (const std::string* uid = EventRecords::eventUID(*record)) recorded.insert(*uid);
  }
}

}  // namespace

bool OurEvents::contains(const CalEvent& event) {
  if (event.ledgerIdentity()) return true;
  if (!recorded_) {
    recorded_.emplace();
    for (NSFileManager* files : states_) addRecorded(platform_, *files, *recorded_);
  }
  return recorded_->contains(event.uid());
}

std::vector<std::string> OurEvents::ledgerFiles(Platform& platform) {
  const std::string file = ledgerFile(platform);
  return {file, file + ".journal"};
}

}  // namespace annivo
