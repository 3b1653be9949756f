// SPDX-License-Identifier: MIT
#include "contacts/ZPKQueryAddressBookSection.h"
#include "run/ZPKLimitSystem.h"

namespace annivo {

namespace {

constexpr const char* kNoModel = "Managed object model is nil";

/// The model file of a release family, or nothing where there is none for it.
std::optional<std::string> modelFile(std::int32_t versionCode) {
  switch (versionCode) {
    case 1050:
      return "/System/Library/Frameworks/AddressBook.framework/Versions/A/Resources/"
             "ABAddressBook.abz";
    case 1060:
      return "/System/Library/Frameworks/AddressBook.framework/Versions/A/Resources/"
             "ABAddressBook.abmom";
    case 1070:
      return "/System/Library/Frameworks/AddressBook.framework/Versions/A/Resources/"
             "ABAddressBook.momd";
    default:
      return std::nullopt;
  }
}

}  // namespace

const NSManagedObjectModel* ZPKQueryAddressBookSection::managedObjectModel() {
  if (managedObjectModel_) return managedObjectModel_.get();
  const auto path = modelFile(ZPKLimitSystem::versionVal(platform_.gestalt()));
  if (!path) return nullptr;
  auto loaded = NSManagedObjectModel::initWithContentsOfURL(platform_.fileManager(),
                                                            platform_.resolvedPath(*path));
  if (!loaded) {
    platform_.log().write(loaded.error().text());
    return nullptr;
  }
  managedObjectModel_ = std::make_unique<NSManagedObjectModel>(std::move(*loaded));
  return managedObjectModel_.get();
}

NSPersistentStoreCoordinator* ZPKQueryAddressBookSection::persistentStoreCoordinator() {
  if (persistentStoreCoordinator_) return persistentStoreCoordinator_.get();
  const NSManagedObjectModel* model = managedObjectModel();
  if (model == nullptr) {
    platform_.log().write(
        "*** Assertion failure in -[ZPKQueryAddressBookSection persistentStoreCoordinator], "
        "ZPKQueryAddressBookSection+Store.cpp: " +
        std::string(kNoModel));
    platform_.log().write(
        "ZPKQueryAddressBookSection:persistentStoreCoordinator No model to generate a store from");
    return nullptr;
  }
  auto coordinator =
      std::make_unique<NSPersistentStoreCoordinator>(*model, platform_.storeEnvironment());
  if (const auto added = coordinator->addPersistentStore(StoreType::sqlite, dbPath_); !added) {
    wasReadWhole_ = false;
    platform_.application().presentError(added.error());
    return nullptr;
  }
  persistentStoreCoordinator_ = std::move(coordinator);
  return persistentStoreCoordinator_.get();
}

NSManagedObjectContext* ZPKQueryAddressBookSection::managedObjectContext() {
  if (managedObjectContext_) return managedObjectContext_.get();
  NSPersistentStoreCoordinator* coordinator = persistentStoreCoordinator();
  if (coordinator == nullptr) {
    platform_.application().presentError(
        {.kind = Error::Kind::failed,
         .domain = "YOUR_ERROR_DOMAIN",
         .code = 9999,
         .description = "Failed to initialize the store",
         .failureReason = "There was an error building up the data file."});
    // The assertion ends the run, but only after the person has been told.
    if (managedObjectModel() == nullptr) throw NSInternalInconsistencyException{kNoModel};
    return nullptr;
  }
  managedObjectContext_ = std::make_unique<NSManagedObjectContext>();
  managedObjectContext_->setPersistentStoreCoordinator(coordinator);
  return managedObjectContext_.get();
}

}  // namespace annivo
