// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/coredata/NSManagedObjectModel.h"
#include "platform/foundation/PropertyList.h"

namespace annivo {

/// One object of a store: attributes by name (nil when absent) and, in stores that have them,
/// relationships. Owned by its context; pointers to it live as long as that.
///
/// A day attribute of the value 12:00:00 UTC exactly, in a zone where that instant falls on
/// another local day, is given as noon of the same civil day in that zone; every other value and
/// zone: the stored instant. (The store does this when it reads.)
class NSManagedObject {
 public:
  NSManagedObject(const NSEntityDescription& entity, std::int64_t objectID);

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

  // For stores.
  [[nodiscard]] PropertyList& attributeAt(std::size_t index) { return attributes_[index]; }
  [[nodiscard]] const PropertyList& attributeAt(std::size_t index) const {
    return attributes_[index];
  }
  [[nodiscard]] std::vector<const NSManagedObject*>& relationshipAt(std::size_t index) {
    return relationships_[index];
  }

 private:
  const NSEntityDescription* entity_;
  std::int64_t objectID_;
  std::vector<PropertyList> attributes_;
  std::vector<std::vector<const NSManagedObject*>> relationships_;
};

}  // namespace annivo
