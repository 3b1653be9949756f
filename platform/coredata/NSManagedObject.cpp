// SPDX-License-Identifier: MIT
#include "platform/coredata/NSManagedObject.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>

namespace annivo {

namespace {

const PropertyList kNil;

}  // namespace

const PropertyList& NSManagedObject::valueForKey(std::string_view attribute) const {
  const auto index = entity_->attributeIndex(attribute);
  return index ? attributeAt(*index) : kNil;
}

void NSManagedObject::setValueForKey(PropertyList value, std::string_view attribute) {
  const auto index = entity_->attributeIndex(attribute);
  if (!index) {
    std::cerr << "Entity " << entity_->name << " has no attribute " << attribute << '\n';
    std::abort();
  }
  attributeAt(*index) = std::move(value);
}

PropertyList& NSManagedObject::attributeAt(std::size_t index) {
  auto place = attributes_.begin();
  while (place != attributes_.end() && place->index < index) ++place;
  if (place == attributes_.end()) return attributes_.emplace_back(Attribute{index}).value;
  if (place->index != index) place = attributes_.insert(place, Attribute{index});
  return place->value;
}

const PropertyList& NSManagedObject::attributeAt(std::size_t index) const {
  for (const Attribute& attribute : attributes_) {
    if (attribute.index == index) return attribute.value;
  }
  return kNil;
}

void NSManagedObject::takeAttributes(std::vector<Attribute>& attributes) {
  attributes_ = std::vector<Attribute>(std::make_move_iterator(attributes.begin()),
                                       std::make_move_iterator(attributes.end()));
  attributes.clear();
}

const NSManagedObject* NSManagedObject::toOne(std::string_view relationship) const {
  const auto members = toMany(relationship);
  return members.empty() ? nullptr : members.front();
}

std::span<const NSManagedObject* const> NSManagedObject::toMany(
    std::string_view relationship) const {
  if (relationships_ == nullptr || !entity_->relationshipIndex(relationship)) return {};
  return relationships_->members(relationship, row_);
}

}  // namespace annivo
