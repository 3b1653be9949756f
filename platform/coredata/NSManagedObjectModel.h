// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// A day attribute is a civil day kept as 12:00:00 UTC: see NSManagedObject.
enum class AttributeType { string, integer, date, day };

struct NSAttributeDescription {
  std::string name;
  AttributeType type = AttributeType::string;
};

struct NSRelationshipDescription {
  std::string name;
  std::string destination;  ///< entity name
  bool toMany = false;
  std::string inverse;  ///< relationship of the destination; may be empty
};

struct NSEntityDescription {
  std::string name;
  std::string superentity;  ///< "" for a root
  /// Its own after those it inherits.
  std::vector<NSAttributeDescription> attributes;
  std::vector<NSRelationshipDescription> relationships;

  [[nodiscard]] std::optional<std::size_t> attributeIndex(std::string_view attribute) const;
  [[nodiscard]] std::optional<std::size_t> relationshipIndex(std::string_view relationship) const;
};

/// The entities of a store. A model file is a property list:
///   { "entities": [ { "name", "superentity"?, "attributes": [ {"name","type"} ],
///     "relationships": [ {"name","destination","toMany","inverse"?} ] } ] }
class NSManagedObjectModel {
 public:
  /// Malformed when the file is of another form, names an unknown super-entity, destination or
  /// attribute type, or the inheritance is circular.
  static Result<NSManagedObjectModel> initWithContentsOfURL(const NSFileManager& files,
                                                            const std::string& path);
  /// All models ("*.mom" in Resources) of a bundle in one; empty when there is none.
  static Result<NSManagedObjectModel> mergedModelFromBundle(const NSFileManager& files,
                                                            const NSBundle& bundle);

  /// Null when the model has no such entity. The pointer lives as long as the model.
  [[nodiscard]] const NSEntityDescription* entityForName(std::string_view name) const;
  [[nodiscard]] const std::map<std::string, NSEntityDescription, std::less<>>& entities() const {
    return entities_;
  }
  /// Whether `entity` is `ancestor` or inherits from it.
  [[nodiscard]] bool isKindOf(const NSEntityDescription& entity, std::string_view ancestor) const;

 private:
  std::map<std::string, NSEntityDescription, std::less<>> entities_;
};

}  // namespace annivo
