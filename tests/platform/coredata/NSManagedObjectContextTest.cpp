// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/coredata/NSManagedObjectContext.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

/// A coordinator that has no store, as when that could not be opened.
struct NSManagedObjectContextWithoutStore : testing::Test {
  TemporaryFolder folder;
  PosixFileManager files;
  ManualClock clock{utc(2026, 11, 20)};
  NSManagedObjectModel model = makeModel();
  NSPersistentStoreCoordinator coordinator{model, {files, clock, NSTimeZone()}};
  NSManagedObjectContext context;

  NSManagedObjectContextWithoutStore() { context.setPersistentStoreCoordinator(&coordinator); }

  NSManagedObjectModel makeModel() {
    const PropertyList name = PropertyList::Dictionary{{"name", "name"}, {"type", "string"}};
    const PropertyList::Dictionary entity{{"name", "Event"},
                                          {"attributes", PropertyList::Array{name}}};
    folder.writeFile(
        "m.mom",
        xmlPropertyList(PropertyList::Dictionary{{"entities", PropertyList::Array{entity}}}));
    return *NSManagedObjectModel::initWithContentsOfURL(files, folder.path("m.mom"));
  }
};

TEST_F(NSManagedObjectContextWithoutStore, FetchAndSaveFail) {
  EXPECT_FALSE(context.executeFetchRequest({.entity = "Event", .predicate = {}}).ok());
  EXPECT_FALSE(context.save().ok());
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(coordinator.store(), nullptr);
}

TEST_F(NSManagedObjectContextWithoutStore, InsertedObjectsLiveInTheContext) {
  NSManagedObject& object = context.insertNewObjectForEntityForName("Event");
  context.setValueForKey(object, "x", "name");
  EXPECT_TRUE(object.valueForKey("name").isEqualToString("x"));
  EXPECT_TRUE(context.hasChanges());
  EXPECT_FALSE(context.save().ok());
  EXPECT_TRUE(context.hasChanges());
  context.deleteObject(object);
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(NSManagedObjectContextWithoutStore, AStoreThatCannotBeOpenedLeavesTheCoordinatorAsItWas) {
  EXPECT_FALSE(coordinator.addPersistentStore(StoreType::sqlite, folder.path("none")).ok());
  EXPECT_EQ(coordinator.store(), nullptr);
}

TEST_F(NSManagedObjectContextWithoutStore, AContextWithoutACoordinatorHasNothing) {
  NSManagedObjectContext alone;
  EXPECT_FALSE(alone.executeFetchRequest({.entity = "Event", .predicate = {}}).ok());
  EXPECT_FALSE(alone.hasChanges());
  EXPECT_TRUE(alone.commitEditing());
}

TEST_F(NSManagedObjectContextWithoutStore, AnUnknownAttributeIsNilToReadAndOurOwnFaultToSet) {
  NSManagedObject& object = context.insertNewObjectForEntityForName("Event");
  EXPECT_TRUE(object.valueForKey("colour").isNil());
  EXPECT_EQ(object.toOne("owner"), nullptr);
  EXPECT_TRUE(object.toMany("groups").empty());
  EXPECT_DEATH(context.setValueForKey(object, 1, "colour"), "no attribute colour");
  EXPECT_DEATH((void)context.insertNewObjectForEntityForName("Colour"), "No entity Colour");
}

}  // namespace
}  // namespace annivo
