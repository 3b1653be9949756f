// SPDX-License-Identifier: MIT
#include "platform/coredata/NSManagedObjectContext.h"

#include <cstdlib>
#include <iostream>

#include "platform/coredata/SQLiteStore.h"
#include "platform/coredata/XMLStore.h"

namespace annivo {

namespace {

Error noStore(const std::string& operation) {
  return {.kind = Error::Kind::absent,
          .domain = "NSCocoaErrorDomain",
          .code = 134080,
          .description = "There is no object store; it cannot perform a " + operation + ".",
          .failureReason = ""};
}

}  // namespace

NSPersistentStoreCoordinator::NSPersistentStoreCoordinator(const NSManagedObjectModel& model,
                                                           StoreEnvironment environment)
    : model_(model), environment_(std::move(environment)) {}

NSPersistentStoreCoordinator::~NSPersistentStoreCoordinator() = default;

Result<void> NSPersistentStoreCoordinator::addPersistentStore(StoreType type,
                                                              const std::string& path) {
  auto opened = type == StoreType::sqlite ? openSQLiteStore(model_, environment_, path)
                                          : openXMLStore(model_, environment_, path);
  if (!opened) return opened.error();
  store_ = std::move(*opened);
  return {};
}

NSPersistentStore* NSManagedObjectContext::store() const {
  return coordinator_ == nullptr ? nullptr : coordinator_->store();
}

Result<std::vector<NSManagedObject*>> NSManagedObjectContext::executeFetchRequest(
    const NSFetchRequest& request) {
  if (store() == nullptr) return noStore("fetch");
  return store()->execute(request);
}

NSManagedObject& NSManagedObjectContext::insertNewObjectForEntityForName(
    const std::string& entity) {
  const NSEntityDescription* description =
      coordinator_ == nullptr ? nullptr : coordinator_->model().entityForName(entity);
  if (description == nullptr) {
    std::cerr << "No entity " << entity << " to make an object of\n";
    std::abort();
  }
  NSManagedObject* inserted = store() == nullptr ? nullptr : store()->insert(*description);
  if (inserted != nullptr) return *inserted;
  auto object = std::make_unique<NSManagedObject>(*description, 0);
  NSManagedObject& result = *object;
  unsaved_.emplace(&result, std::move(object));
  return result;
}

void NSManagedObjectContext::setValueForKey(NSManagedObject& object, PropertyList value,
                                            std::string_view attribute) {
  if (unsaved_.count(&object) == 0 && store() != nullptr) {
    store()->set(object, attribute, value);
  }
  object.setValueForKey(std::move(value), attribute);
}

void NSManagedObjectContext::deleteObject(NSManagedObject& object) {
  if (unsaved_.erase(&object) == 0 && store() != nullptr) store()->remove(object);
}

bool NSManagedObjectContext::hasChanges() const {
  return !unsaved_.empty() || (store() != nullptr && store()->hasChanges());
}

Result<void> NSManagedObjectContext::save() {
  if (store() == nullptr || !unsaved_.empty()) return noStore("save");
  return store()->save();
}

}  // namespace annivo
