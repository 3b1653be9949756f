// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "platform/coredata/NSManagedObjectModel.h"
#include "platform/coredata/RelationshipTable.h"

namespace annivo {

/// One object of a store: attributes by name (nil when absent) and, in stores that have them,
/// relationships. Owned by its context; pointers to it live as long as that.
///
/// A day attribute of the value 12:00:00 UTC exactly, in a zone where that instant falls on
/// another local day, is given as noon of the same civil day in that zone; every other value and
/// zone: the stored instant. (The store does this when it reads.)
class NSManagedObject {
 public:
  /// `relationships`, where there are any, outlives the object; `row` is its place in it.
  NSManagedObject(const NSEntityDescription& entity, std::int64_t objectID,
                  const RelationshipTable* relationships = nullptr, std::uint32_t row = 0)
      : entity_(&entity), objectID_(objectID), relationships_(relationships), row_(row) {}

  [[nodiscard]] const NSEntityDescription& entity() const { return *entity_; }
  [[nodiscard]] std::int64_t objectID() const { return objectID_; }

  /// An attribute; nil when the object has no value or the entity no such attribute.
  [[nodiscard]] const PropertyList& valueForKey(std::string_view attribute) const;
  /// Sets an attribute that the entity has (anything else is our own bug and aborts).
  void setValueForKey(PropertyList value, std::string_view attribute);
  /// The destination of a to-one relationship, or null.
  [[nodiscard]] const NSManagedObject* toOne(std::string_view relationship) const;
  /// The members of a to-many relationship, ascending by objectID.
  [[nodiscard]] std::span<const NSManagedObject* const> toMany(std::string_view relationship) const;

  // For stores. Attributes by their index in the entity's description.
  struct Attribute {
    std::size_t index;
    PropertyList value = {};
  };
  [[nodiscard]] PropertyList& attributeAt(std::size_t index);
  [[nodiscard]] const PropertyList& attributeAt(std::size_t index) const;
  void reserveAttributes(std::size_t count) { attributes_.reserve(count); }
  /// Replaces all attributes of the object by `attributes`, which ascend by index.
  void takeAttributes(std::vector<Attribute>& attributes);

 private:
  const NSEntityDescription* entity_;
  std::int64_t objectID_;
  /// Ascending by index. Nil attributes are left out: most cards leave most fields empty.
  std::vector<Attribute> attributes_;
  const RelationshipTable* relationships_;
  std::uint32_t row_;
};

}  // namespace annivo
