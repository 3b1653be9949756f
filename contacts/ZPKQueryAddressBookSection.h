// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "contacts/GroupAncestry.h"
#include "platform/Platform.h"

namespace annivo {

/// Whether dates are of use where the groups of their people cannot be read: not where a group is
/// chosen.
enum class GroupsAre { optional, needed };

/// One address book store: reads its dates, groups and labels, and never changes it.
///
/// 1. Made with a path, it opens the store to read its groups.
/// 2. Each query reads what it needs; what could not be opened is tried again by the next query,
///    which does not wait for a lock that was waited for.
/// 3. Model, coordinator, context and groups, once there, live as long as the section.
/// 4. What cannot be read is presented where the store could not be opened, and else logged and
/// kept
///    in failedFetches; wasReadWhole says from then on that something is lacking.
class ZPKQueryAddressBookSection {
 public:
  /// `initWithPath:`. Throws NSInternalInconsistencyException when there is no model for this
  /// system, as every query does; an error of the store itself is presented and leaves the section
  /// empty. Groups that cannot be read leave it empty where they are needed; else every person is
  /// in none.
  ZPKQueryAddressBookSection(Platform& platform, std::string path,
                             GroupsAre groups = GroupsAre::optional);

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
  /// Whether all that was asked for so far could be read.
  [[nodiscard]] bool wasReadWhole() const { return wasReadWhole_; }
  /// The errors of fetches since the last call for which the store lacks something.
  [[nodiscard]] std::vector<Error> takeFailedFetches() { return std::exchange(failedFetches_, {}); }

 private:
  [[nodiscard]] const NSManagedObjectModel* managedObjectModel();
  [[nodiscard]] NSPersistentStoreCoordinator* persistentStoreCoordinator();
  [[nodiscard]] NSManagedObjectContext* managedObjectContext();
  /// What a failed fetch is besides a line of the log.
  enum class Failure { isLogged, isLack };
  [[nodiscard]] std::optional<std::vector<NSManagedObject*>> fetch(
      const std::string& name, Failure failure = Failure::isLack);
  [[nodiscard]] std::vector<std::string> distinctLabels();
  [[nodiscard]] ContactDateRecord recordOf(const NSManagedObject* person);
  void logNotes();

  Platform& platform_;
  std::string dbPath_;
  GroupsAre groups_;
  bool wasReadWhole_ = true;
  std::vector<Error> failedFetches_;
  std::unique_ptr<NSManagedObjectModel> managedObjectModel_;
  std::unique_ptr<NSPersistentStoreCoordinator> persistentStoreCoordinator_;
  std::unique_ptr<NSManagedObjectContext> managedObjectContext_;
  std::vector<GroupWithParents> abGroups_;
  std::optional<GroupAncestry> ancestry_;  ///< there when abGroups_ is
  std::size_t notesLogged_ = 0;
};

}  // namespace annivo
