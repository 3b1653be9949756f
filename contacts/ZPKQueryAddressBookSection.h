// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "contacts/GroupAncestry.h"
#include "platform/Platform.h"

namespace annivo {

/// One address book store: reads its dates, groups and labels, and never changes it.
///
/// 1. Made with a path, it opens the store to read its groups.
/// 2. Each query reads what it needs; what could not be opened is tried again by the next query.
/// 3. Model, coordinator, context and groups, once there, live as long as the section.
class ZPKQueryAddressBookSection {
 public:
  /// `initWithPath:`. Throws NSInternalInconsistencyException when there is no model for this
  /// system, as every query does; an error of the store itself is presented and leaves the section
  /// empty.
  ZPKQueryAddressBookSection(Platform& platform, std::string path);

  /// What `arrayForEntity:` yields for the names that yield it.
  struct Items {
    std::vector<ContactDateRecord> dates;  ///< "ABCDContact", "ABCDContactDate"
    std::vector<GroupRecord> groups;       ///< "ABCDGroup"
    std::vector<std::string> labels;       ///< "ABCDContactDate_label", distinct, raw
  };
  /// `arrayForEntity:`. In the order of the store; empty for any other name.
  [[nodiscard]] Items arrayForEntity(const std::string& name);
  /// `fetchedItemsForEntity:`. All objects of the entity, of "ABCDContact" those with a birthday;
  /// an error is logged and yields none.
  [[nodiscard]] std::vector<NSManagedObject*> fetchedItemsForEntity(const std::string& name);
  /// All groups of this store in its order.
  [[nodiscard]] const std::vector<GroupWithParents>& abGroups();
  /// `parentsForGroups:withResultContainer:`. Appends to the container: see GroupAncestry.
  void parentsForGroupsWithResultContainer(std::span<const NSManagedObject* const> groups,
                                           std::vector<std::string>& container);
  /// `filterIfCompany:`. An organization that is there becomes the last name.
  [[nodiscard]] static ContactDateRecord filterIfCompany(ContactDateRecord record);
  [[nodiscard]] const std::string& dbPath() const { return dbPath_; }

 private:
  [[nodiscard]] const NSManagedObjectModel* managedObjectModel();
  [[nodiscard]] NSPersistentStoreCoordinator* persistentStoreCoordinator();
  [[nodiscard]] NSManagedObjectContext* managedObjectContext();
  [[nodiscard]] std::optional<std::vector<NSManagedObject*>> fetch(const std::string& name);
  [[nodiscard]] std::vector<std::string> distinctLabels();
  [[nodiscard]] ContactDateRecord recordOf(const NSManagedObject* person);
  void logNotes();

  Platform& platform_;
  std::string dbPath_;
  std::unique_ptr<NSManagedObjectModel> managedObjectModel_;
  std::unique_ptr<NSPersistentStoreCoordinator> persistentStoreCoordinator_;
  std::unique_ptr<NSManagedObjectContext> managedObjectContext_;
  std::vector<GroupWithParents> abGroups_;
  std::optional<GroupAncestry> ancestry_;  ///< there when abGroups_ is
  std::size_t notesLogged_ = 0;
};

}  // namespace annivo
