// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "platform/coredata/NSManagedObject.h"

namespace annivo {

/// A group in the short form, "name" and "uniqueId", each "NULL" when absent.
struct GroupRecord {
  std::string name{kNull};
  std::string uniqueId{kNull};
  friend bool operator==(const GroupRecord&, const GroupRecord&) = default;
};

/// A group of one store with the groups that hold it.
struct GroupWithParents : GroupRecord {
  std::span<const NSManagedObject* const> parentGroups;
};

/// Finds the groups above groups, among the groups of one store and by their identifiers.
class GroupAncestry {
 public:
  using Groups = std::span<const NSManagedObject* const>;

  /// The number of steps after which the list of all paths is replaced by one that names each group
  /// once.
  static constexpr std::size_t kMostSteps = 1000;

  /// `groups` outlives this.
  explicit GroupAncestry(const std::vector<GroupWithParents>& groups);

  /// Appends to `result`, for each of `groups` in order, every known group of its identifier,
  /// each followed at once by its own ancestors; a group that is reached along two paths is there
  /// twice. A path ends where it would meet a group again. A store whose groups have more than
  /// kMostSteps such steps above these (a lattice of 40 levels has 2 to the 40) gives each group
  /// once, in the order in which it is first met.
  void parentsForGroups(Groups groups, std::vector<std::string>& result) const;
  /// The list of a person's groups and their ancestors, made once for the same groups.
  [[nodiscard]] const GroupIdentifiers& identifiersFor(Groups groups);

 private:
  struct Walk;
  [[nodiscard]] const std::vector<std::size_t>& sameIdentifier(const NSManagedObject& group) const;
  bool appendAllPaths(Groups groups, Walk& walk) const;
  void appendEachOnce(Groups groups, std::vector<std::string>& result) const;

  const std::vector<GroupWithParents>& groups_;
  /// Indices into groups_, ascending, by identifier.
  std::unordered_map<std::string_view, std::vector<std::size_t>> byIdentifier_;
  std::map<std::vector<const NSManagedObject*>, GroupIdentifiers> made_;
};

}  // namespace annivo
