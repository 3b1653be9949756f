// SPDX-License-Identifier: MIT
#include "platform/coredata/NSManagedObject.h"

#include <cstdlib>
#include <iostream>

namespace annivo {

NSManagedObject::NSManagedObject(const NSEntityDescription& entity, std::int64_t objectID)
    : entity_(&entity),
      objectID_(objectID),
      attributes_(entity.attributes.size()),
      relationships_(entity.relationships.size()) {}

const PropertyList& NSManagedObject::valueForKey(std::string_view attribute) const {
  static const PropertyList nil;
  const auto index = entity_->attributeIndex(attribute);
  return index ? attributes_[*index] : nil;
}

void NSManagedObject::setValueForKey(PropertyList value, std::string_view attribute) {
  const auto index = entity_->attributeIndex(attribute);
  if (!index) {
    std::cerr << "Entity " << entity_->name << " has no attribute " << attribute << '\n';
    std::abort();
  }
  attributes_[*index] = std::move(value);
}

const NSManagedObject* NSManagedObject::toOne(std::string_view relationship) const {
  const auto members = toMany(relationship);
  return members.empty() ? nullptr : members.front();
}

std::span<const NSManagedObject* const> NSManagedObject::toMany(
    std::string_view relationship) const {
  const auto index = entity_->relationshipIndex(relationship);
  if (!index) return {};
  return relationships_[*index];
}

}  // namespace annivo
