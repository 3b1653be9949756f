// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/coredata/XMLStore.h"
#include "tests/support/Doubles.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/ForwardingFileManager.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// The disk without the waiting for it, of which thousands of saves would make minutes.
class UnsyncedFileManager final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override {
    return inner_.writeAtomically(path, bytes);
  }
};

/// An XML store over the ledger's model in a folder of its own.
class LedgerFixture {
 public:
  LedgerFixture() {
    auto loaded = NSManagedObjectModel::initWithContentsOfURL(
        disk, std::string(ANNIVO_SOURCE_DIR) + "/resources/agent/Resources/Ledger.mom");
    EXPECT_TRUE(loaded.ok());
    model = std::make_unique<NSManagedObjectModel>(std::move(*loaded));
  }

  std::unique_ptr<NSPersistentStore> open() {
    auto store = openXMLStore(*model, {files, clock, NSTimeZone()}, path());
    EXPECT_TRUE(store.ok());
    return std::move(*store);
  }
  [[nodiscard]] std::string path() const { return folder.path("L.xml"); }
  [[nodiscard]] std::string file() const { return folder.readFile("L.xml"); }
  [[nodiscard]] bool hasJournal() const { return folder.exists("L.xml.journal"); }

  NSManagedObject& insert(NSPersistentStore& store, const std::string& myUID, Date date = kDay) {
    NSManagedObject* object = store.insert(*model->entityForName("Event"));
    set(store, *object, "myUID", myUID);
    set(store, *object, "calendarUID", "C");
    set(store, *object, "date", date);
    set(store, *object, "iCalUID", "E-" + myUID);
    return *object;
  }
  static void set(NSPersistentStore& store, NSManagedObject& object, const char* key,
                  PropertyList value) {
    store.set(object, key, value);
    object.setValueForKey(std::move(value), key);
  }
  static std::vector<NSManagedObject*> all(NSPersistentStore& store) {
    auto found = store.execute({.entity = "Event", .predicate = {}});
    EXPECT_TRUE(found.ok()) << found.error().text();
    return found ? *found : std::vector<NSManagedObject*>();
  }
  static std::vector<std::string> myUIDs(NSPersistentStore& store) {
    std::vector<std::string> uids;
    for (const auto* object : all(store))
      uids.push_back(object->valueForKey("myUID").stringOr("nil"));
    return uids;
  }
  /// Makes a closed ledger of records of these myUIDs, numbered from z102.
  void fill(const std::vector<std::string>& myUIDs) {
    auto store = open();
    for (const auto& uid : myUIDs) insert(*store, uid);
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }

  /// A file with these texts inside its root element.
  static std::string document(const std::string& objects, const std::string& version = "134481920",
                              const std::string& nextObjectID = "110") {
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE database SYSTEM "
           "\"file:///System/Library/DTDs/CoreData.dtd\">\n\n<database>\n    <databaseInfo>\n"
           "        <version>" +
           version +
           "</version>\n        <UUID>8D6DCE5A-2F1B-4A7C-9B0E-0B4D9C1A77E2</UUID>\n"
           "        <nextObjectID>" +
           nextObjectID + "</nextObjectID>\n        <metadata></metadata>\n    </databaseInfo>\n" +
           objects + "</database>\n";
  }
  static std::string object(const std::string& id, const std::string& myUID) {
    return "    <object type=\"EVENT\" id=\"" + id +
           "\">\n        <attribute name=\"myuid\" type=\"string\">" + myUID +
           "</attribute>\n    </object>\n";
  }
  void write(const std::string& bytes) const { folder.writeFile("L.xml", bytes); }

  static constexpr Date kDay = kReferenceDate + std::chrono::hours{24 * 9000};
  TemporaryFolder folder;
  PosixFileManager disk;
  UnsyncedFileManager unsynced{disk};
  FailingFileManager files{unsynced};
  ManualClock clock{utc(2026, 11, 20, 18, 46)};
  std::unique_ptr<NSManagedObjectModel> model;
};

}  // namespace annivo
