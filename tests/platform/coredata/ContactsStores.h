// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/addressbook/AddressBookStoreWriter.h"
#include "platform/coredata/NSManagedObjectContext.h"
#include "tests/support/Doubles.h"
#include "tests/support/EditDatabase.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// One contacts store in a folder of its own, and what is needed to read it.
struct ContactsStore {
  TemporaryFolder folder;
  std::string path = folder.path("AddressBook-v22.abcddb");
  PosixFileManager files;
  ManualClock clock{utc(2026, 11, 20)};
  std::string zone = "UTC";
  std::string modelName = "ABAddressBook.momd";

  std::unique_ptr<NSManagedObjectModel> model;
  std::unique_ptr<NSPersistentStoreCoordinator> coordinator;

  void write(StoreGeneration generation, const std::vector<StoredPerson>& people,
             const std::vector<StoredGroup>& groups = {}) {
    folder.remove("AddressBook-v22.abcddb");
    PosixFileManager disk;
    const auto written =
        AddressBookStoreWriter::write(disk, path, generation, people, groups, clock.now());
    ASSERT_TRUE(written.ok()) << written.error().text();
  }
  void edit(const std::string& sql) { EditDatabase(path).run(sql); }

  Result<void> open() {
    auto loaded = NSManagedObjectModel::initWithContentsOfURL(
        files, std::string(ANNIVO_SOURCE_DIR) +
                   "/resources/system/Library/Frameworks/AddressBook.framework/Versions/A/"
                   "Resources/" +
                   modelName);
    if (!loaded) return loaded.error();
    coordinator.reset();
    model = std::make_unique<NSManagedObjectModel>(std::move(*loaded));
    coordinator = std::make_unique<NSPersistentStoreCoordinator>(
        *model, StoreEnvironment{files, clock, NSTimeZone(zone)});
    return coordinator->addPersistentStore(StoreType::sqlite, path);
  }

  Result<std::vector<NSManagedObject*>> tryFetch(const std::string& entity,
                                                 std::optional<NSPredicate> predicate = {}) {
    if (coordinator == nullptr) {
      if (const auto opened = open(); !opened) return opened.error();
    }
    NSManagedObjectContext context;
    context.setPersistentStoreCoordinator(coordinator.get());
    return context.executeFetchRequest({.entity = entity, .predicate = std::move(predicate)});
  }
  std::vector<NSManagedObject*> fetch(const std::string& entity,
                                      std::optional<NSPredicate> predicate = {}) {
    auto fetched = tryFetch(entity, std::move(predicate));
    EXPECT_TRUE(fetched.ok()) << fetched.error().text();
    return fetched ? *fetched : std::vector<NSManagedObject*>{};
  }
};

/// The texts of an attribute, "-" where it is nil.
inline std::vector<std::string> texts(const std::vector<NSManagedObject*>& objects,
                                      std::string_view attribute) {
  std::vector<std::string> result;
  for (const auto* object : objects) result.push_back(object->valueForKey(attribute).stringOr("-"));
  return result;
}

}  // namespace annivo
