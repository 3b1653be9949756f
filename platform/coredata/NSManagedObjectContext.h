// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/NSCalendarDate.h"
#include "platform/coredata/NSManagedObject.h"
#include "platform/coredata/NSManagedObjectModel.h"
#include "platform/coredata/NSPredicate.h"
#include "platform/coredata/StoreReadings.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

enum class StoreType { sqlite, xml };

struct NSFetchRequest {
  std::string entity;
  std::optional<NSPredicate> predicate;
};

/// One store behind a coordinator. Objects belong to the store and live as long as it does.
class NSPersistentStore {
 public:
  virtual ~NSPersistentStore() = default;
  /// Reads the content, if that has not been done; every other operation does it first.
  virtual Result<void> load() = 0;
  /// Starts load()'s work on another thread where that is possible.
  virtual void beginLoading() {}
  /// After load: why a file that was found has to be set aside, which the first save or close does
  /// (the store then lacks what it held); nothing when all is well.
  [[nodiscard]] virtual const std::optional<Error>& damage() const = 0;
  /// After load: whether nothing was found, neither a file nor what is left of one.
  [[nodiscard]] virtual bool isNew() const { return false; }
  /// Notes for the log about values that had to be read as nil. They hold no contact data.
  [[nodiscard]] virtual std::vector<std::string> notes() const { return {}; }
  /// Why a to-many relationship of objects fetched so far could not be read; such a one reads as
  /// empty.
  [[nodiscard]] virtual const std::optional<Error>& unreadRelationship() const {
    static const std::optional<Error> none;
    return none;
  }
  /// Objects of the entity and its sub-entities, in ascending objectID, that match.
  virtual Result<std::vector<NSManagedObject*>> execute(const NSFetchRequest& request) = 0;
  /// A new, empty object; null in a read-only store.
  virtual NSManagedObject* insert(const NSEntityDescription& entity) = 0;
  /// Tells the store that an attribute of one of its objects is about to change to `value`.
  virtual void set(NSManagedObject& object, std::string_view attribute,
                   const PropertyList& value) = 0;
  virtual void remove(NSManagedObject& object) = 0;
  [[nodiscard]] virtual bool hasChanges() const = 0;
  /// Writes what changed since the last save; on failure the changes stay pending.
  virtual Result<void> save() = 0;
  /// Writes all saved changes into the store's file. Does nothing while changes are pending. The
  /// last operation on a store.
  virtual Result<void> close() { return {}; }
};

/// The services that a store works with.
struct StoreEnvironment {
  NSFileManager& files;
  const Clock& clock;
  NSTimeZone zone;
  std::shared_ptr<StoreReadings> readings = std::make_shared<StoreReadings>();
};

/// Holds the store of one file for a model.
class NSPersistentStoreCoordinator {
 public:
  NSPersistentStoreCoordinator(const NSManagedObjectModel& model, StoreEnvironment environment);
  ~NSPersistentStoreCoordinator();

  /// Opens a store. SQLite stores are opened read-only and must exist. An XML store is created at
  /// its first save. The error names the file; nothing is changed by a failure.
  Result<void> addPersistentStore(StoreType type, const std::string& path);
  /// Null before a store was added.
  [[nodiscard]] NSPersistentStore* store() const { return store_.get(); }
  [[nodiscard]] const NSManagedObjectModel& model() const { return model_; }

 private:
  const NSManagedObjectModel& model_;
  StoreEnvironment environment_;
  std::unique_ptr<NSPersistentStore> store_;
};

class NSUndoManager;

/// Fetches, inserts, changes, deletes and saves objects. Over a coordinator without a store every
/// fetch and save fails, and inserted objects live in the context alone.
class NSManagedObjectContext {
 public:
  void setPersistentStoreCoordinator(NSPersistentStoreCoordinator* coordinator) {
    coordinator_ = coordinator;
  }
  Result<std::vector<NSManagedObject*>> executeFetchRequest(const NSFetchRequest& request);
  NSManagedObject& insertNewObjectForEntityForName(const std::string& entity);
  void setValueForKey(NSManagedObject& object, PropertyList value, std::string_view attribute);
  void deleteObject(NSManagedObject& object);
  [[nodiscard]] bool hasChanges() const;
  /// Whether pending edits could be taken in; there are no editors, so always true.
  [[nodiscard]] bool commitEditing() const { return true; }
  /// Null: without editors there is nothing to undo.
  [[nodiscard]] NSUndoManager* undoManager() const { return nullptr; }
  Result<void> save();

 private:
  [[nodiscard]] NSPersistentStore* store() const;

  NSPersistentStoreCoordinator* coordinator_ = nullptr;
  /// Where there is no store, or one that takes nothing in.
  std::unordered_map<const NSManagedObject*, std::unique_ptr<NSManagedObject>> unsaved_;
};

}  // namespace annivo
