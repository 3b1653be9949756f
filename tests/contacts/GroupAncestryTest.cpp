// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "contacts/GroupAncestry.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

/// Groups of one store, made by hand.
class Groups {
 public:
  Groups() {
    entity_.name = "ABCDGroup";
    entity_.attributes = {{"uniqueId", AttributeType::string}};
    entity_.relationships = {{"parentGroups", "ABCDGroup", true, ""}};
  }

  std::size_t add(std::optional<std::string> identifier) {
    const auto row = static_cast<std::uint32_t>(objects_.size());
    auto& object = objects_.emplace_back(entity_, row + 1, &relationships_, row);
    if (identifier) object.setValueForKey(*identifier, "uniqueId");
    return objects_.size() - 1;
  }
  /// Puts group `child` into group `parent`.
  void nest(std::size_t child, std::size_t parent) {
    links_.push_back({static_cast<std::uint32_t>(child), &objects_[parent]});
  }

  Texts above(const std::vector<std::size_t>& members) {
    relationships_ = {};
    relationships_.set("parentGroups", links_, objects_.size());
    std::vector<GroupWithParents> records;
    for (const auto& object : objects_) {
      records.push_back(
          {{.name = "NULL", .uniqueId = object.valueForKey("uniqueId").stringOr(kNull)},
           object.toMany("parentGroups")});
    }
    std::vector<const NSManagedObject*> objects;
    for (const std::size_t member : members) objects.push_back(&objects_[member]);
    Texts result;
    GroupAncestry(records).parentsForGroups(objects, result);
    return result;
  }

 private:
  NSEntityDescription entity_;
  std::vector<RelationshipTable::Link> links_;
  RelationshipTable relationships_;
  std::deque<NSManagedObject> objects_;
};

TEST(GroupAncestry, ListsEachGroupBeforeItsAncestors) {
  Groups groups;
  const auto a = groups.add("A");
  const auto b = groups.add("B");
  const auto c = groups.add("C");
  groups.nest(b, a);
  groups.nest(c, b);
  EXPECT_EQ(groups.above({c}), (Texts{"C", "B", "A"}));
  EXPECT_EQ(groups.above({}), Texts{});
}

TEST(GroupAncestry, ListsAGroupOncePerPath) {
  Groups groups;
  const auto a = groups.add("A");
  const auto b = groups.add("B");
  const auto c = groups.add("C");
  groups.nest(b, a);
  groups.nest(c, a);
  EXPECT_EQ(groups.above({b, c}), (Texts{"B", "A", "C", "A"}));
}

TEST(GroupAncestry, MatchesGroupsByIdentifier) {
  Groups groups;
  const auto a = groups.add("A");
  const auto b = groups.add("B");
  const auto first = groups.add("X");
  const auto second = groups.add("X");
  groups.nest(first, a);
  groups.nest(second, b);
  EXPECT_EQ(groups.above({first}), (Texts{"X", "A", "X", "B"}));
  EXPECT_EQ(groups.above({second}), (Texts{"X", "A", "X", "B"}));
}

TEST(GroupAncestry, AGroupWithoutAnIdentifierIsNeverMatched) {
  Groups groups;
  const auto nameless = groups.add(std::nullopt);
  const auto a = groups.add("A");
  groups.nest(nameless, a);
  EXPECT_EQ(groups.above({nameless}), Texts{});
}

TEST(GroupAncestry, EndsAPathThatComesBackToAGroup) {
  Groups groups;
  const auto a = groups.add("A");
  const auto b = groups.add("B");
  const auto c = groups.add("C");
  groups.nest(a, a);
  EXPECT_EQ(groups.above({a}), Texts{"A"});
  groups.nest(b, c);
  groups.nest(c, b);
  groups.nest(c, a);
  EXPECT_EQ(groups.above({b}), (Texts{"B", "C", "A"}));
  EXPECT_EQ(groups.above({c}), (Texts{"C", "A", "B"}));
}

TEST(GroupAncestry, ALatticeOfFortyLevelsGivesEachGroupOnce) {
  Groups groups;
  std::vector<std::size_t> level{groups.add("0a"), groups.add("0b")};
  for (int depth = 1; depth < 40; ++depth) {
    const std::vector<std::size_t> next{groups.add(std::to_string(depth) + "a"),
                                        groups.add(std::to_string(depth) + "b")};
    for (const auto child : level) {
      for (const auto parent : next) groups.nest(child, parent);
    }
    level = next;
  }
  Texts found = groups.above({0});
  EXPECT_EQ(found.size(), 79U);
  EXPECT_EQ(found.front(), "0a");
  EXPECT_EQ(found[1], "1a");
  std::sort(found.begin(), found.end());
  EXPECT_EQ(std::unique(found.begin(), found.end()), found.end());
  EXPECT_TRUE(std::binary_search(found.begin(), found.end(), "39b"));
}

/// One below, at and above the number of steps to which all paths are listed.
TEST(GroupAncestry, GivesUpListingPathsOnlyBeyondItsLimit) {
  for (const std::size_t count :
       {GroupAncestry::kMostSteps - 1, GroupAncestry::kMostSteps, GroupAncestry::kMostSteps + 1}) {
    Groups groups;
    const auto top = groups.add("top");
    std::vector<std::size_t> members;
    // Each member is a step and leads to the top, which is another.
    for (std::size_t i = 0; i < count / 2; ++i) {
      members.push_back(groups.add("M" + std::to_string(i)));
      groups.nest(members.back(), top);
    }
    if (count % 2 != 0) members.push_back(groups.add("last"));
    const Texts found = groups.above(members);
    const bool allPaths = count <= GroupAncestry::kMostSteps;
    EXPECT_EQ(found.size(), allPaths ? count : count / 2 + 2) << count;
    EXPECT_EQ(std::count(found.begin(), found.end(), "top"),
              allPaths ? static_cast<std::ptrdiff_t>(count / 2) : 1);
  }
}

TEST(GroupAncestry, FollowsAHundredThousandLevels) {
  Groups groups;
  for (int i = 0; i < 100000; ++i) groups.add(std::to_string(i));
  for (std::size_t i = 1; i < 100000; ++i) groups.nest(i - 1, i);
  const Texts found = groups.above({0});
  EXPECT_EQ(found.size(), 100000U);
  EXPECT_EQ(found.back(), "99999");
}

TEST(GroupAncestry, ManyGroupsOfOneIdentifierCostNoMoreThanTheirLinks) {
  Groups groups;
  for (int i = 0; i < 20000; ++i) groups.add("same");
  for (std::size_t i = 1; i < 20000; ++i) groups.nest(i - 1, i);
  EXPECT_EQ(groups.above({0}), Texts{"same"});
}

TEST(GroupAncestry, MakesOneListForTheSameGroups) {
  NSEntityDescription entity;
  entity.name = "ABCDGroup";
  entity.attributes = {{"uniqueId", AttributeType::string}};
  NSManagedObject object(entity, 1);
  object.setValueForKey("A", "uniqueId");
  const std::vector<GroupWithParents> records{{{.name = "a", .uniqueId = "A"}, {}}};
  GroupAncestry ancestry(records);
  const std::vector<const NSManagedObject*> groups{&object};
  const GroupIdentifiers& first = ancestry.identifiersFor(groups);
  EXPECT_EQ(first, GroupIdentifiers{"A"});
  EXPECT_EQ(&ancestry.identifiersFor(groups), &first);
}

}  // namespace
}  // namespace annivo
