// SPDX-License-Identifier: MIT
#include "contacts/GroupAncestry.h"

#include <set>

namespace annivo {

struct GroupAncestry::Walk {
  std::vector<std::string> found;
  std::vector<bool> onPath;  ///< by index of the group
  std::size_t steps = 0;
};

GroupAncestry::GroupAncestry(const std::vector<GroupWithParents>& groups) : groups_(groups) {
  for (std::size_t i = 0; i < groups.size(); ++i) byIdentifier_[groups[i].uniqueId].push_back(i);
}

const std::vector<std::size_t>& GroupAncestry::sameIdentifier(const NSManagedObject& group) const {
  static const std::vector<std::size_t> none;
  const std::string* identifier = group.valueForKey("uniqueId").string();
  if (identifier == nullptr) return none;
  const auto found = byIdentifier_.find(*identifier);
  return found == byIdentifier_.end() ? none : found->second;
}

void GroupAncestry::parentsForGroups(Groups groups, std::vector<std::string>& result) const {
  if (groups.empty()) return;
  Walk walk;
  walk.onPath.resize(groups_.size());
  if (appendAllPaths(groups, walk)) {
    result.insert(result.end(), walk.found.begin(), walk.found.end());
  } else {
    appendEachOnce(groups, result);
  }
}

// The recursion is bounded by the number of steps.
bool GroupAncestry::appendAllPaths(Groups groups, Walk& walk) const {
  for (const NSManagedObject* group : groups) {
    for (const std::size_t index : sameIdentifier(*group)) {
      if (++walk.steps > kMostSteps) return false;
      if (walk.onPath[index]) continue;
      walk.found.push_back(groups_[index].uniqueId);
      walk.onPath[index] = true;
      if (!appendAllPaths(groups_[index].parentGroups, walk)) return false;
      walk.onPath[index] = false;
    }
  }
  return true;
}

void GroupAncestry::appendEachOnce(Groups groups, std::vector<std::string>& result) const {
  std::vector<const NSManagedObject*> open(groups.rbegin(), groups.rend());
  std::set<const std::vector<std::size_t>*> seen;
  while (!open.empty()) {
    const auto& same = sameIdentifier(*open.back());
    open.pop_back();
    if (same.empty() || !seen.insert(&same).second) continue;
    result.push_back(groups_[same.front()].uniqueId);
    for (auto index = same.rbegin(); index != same.rend(); ++index) {
      const Groups parents = groups_[*index].parentGroups;
      open.insert(open.end(), parents.rbegin(), parents.rend());
    }
  }
}

const GroupIdentifiers& GroupAncestry::identifiersFor(Groups groups) {
  const auto [made, isNew] = made_.try_emplace({groups.begin(), groups.end()});
  if (isNew) {
    std::vector<std::string> identifiers;
    parentsForGroups(groups, identifiers);
    made->second = GroupIdentifiers(std::move(identifiers));
  }
  return made->second;
}

}  // namespace annivo
