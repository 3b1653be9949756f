// SPDX-License-Identifier: MIT
#include "parent/sources/LastingIdentifier.h"

#include "base/UUID.h"

namespace annivo {

namespace {

constexpr const char* kNamespace = "CD91D4CF-8E78-47F0-8BDD-DB6C606408CE";

}  // namespace

JoinedFields& JoinedFields::operator<<(const std::optional<std::string>& field) {
  text_ += field ? std::to_string(field->size()) + ':' + *field : std::string("-");
  return *this;
}

JoinedFields& JoinedFields::operator<<(std::int64_t number) {
  return *this << std::optional(std::to_string(number));
}

JoinedFields& JoinedFields::operator<<(const std::optional<StoredDay>& day) {
  if (!day) return *this << std::optional<std::string>();
  return *this << std::int64_t{day->year} << std::int64_t{day->month} << std::int64_t{day->day};
}

std::string lastingIdentifier(const JoinedFields& name) {
  return nameBasedUUID(kNamespace, name.text());
}

}  // namespace annivo
