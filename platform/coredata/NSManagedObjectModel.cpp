// SPDX-License-Identifier: MIT
#include "platform/coredata/NSManagedObjectModel.h"

#include <algorithm>

#include "codecs/plist/PropertyList.h"

namespace annivo {

namespace {

using Entities = std::map<std::string, NSEntityDescription, std::less<>>;

template <typename Described>
std::optional<std::size_t> indexByName(const std::vector<Described>& list, std::string_view name) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&](const Described& item) { return item.name == name; });
  if (found == list.end()) return std::nullopt;
  return static_cast<std::size_t>(found - list.begin());
}

/// Reads one model file. A problem met on the way is thrown as its words.
class ModelReader {
 public:
  struct Problem {
    std::string what;
  };

  Entities read(const PropertyList& file) {
    if (!file["entities"].array()) throw Problem{"it has no list of entities"};
    for (const PropertyList& item : *file["entities"].array()) {
      NSEntityDescription entity = readEntity(item);
      const std::string name = entity.name;
      if (!own_.emplace(name, std::move(entity)).second) throw Problem{"it has two " + name};
    }
    for (const auto& [name, entity] : own_) resolve(name);
    for (const auto& [name, entity] : resolved_) checkDestinations(entity);
    return std::move(resolved_);
  }

 private:
  static std::string text(const PropertyList& item, std::string_view key,
                          const std::string& where) {
    if (!item[key].string() || item[key].string()->empty()) {
      throw Problem{where + " has no text \"" + std::string(key) + "\""};
    }
    return *item[key].string();
  }

  static const PropertyList::Array& list(const PropertyList& item, std::string_view key,
                                         const std::string& where) {
    static const PropertyList::Array empty;
    if (item[key].isNil()) return empty;
    if (!item[key].array()) throw Problem{where + ": \"" + std::string(key) + "\" is no list"};
    return *item[key].array();
  }

  static AttributeType type(const std::string& name, const std::string& where) {
    if (name == "string") return AttributeType::string;
    if (name == "integer") return AttributeType::integer;
    if (name == "date") return AttributeType::date;
    if (name == "day") return AttributeType::day;
    throw Problem{where + " is of the unknown type \"" + name + "\""};
  }

  static NSEntityDescription readEntity(const PropertyList& item) {
    NSEntityDescription entity;
    entity.name = text(item, "name", "an entity");
    if (!item["superentity"].isNil()) entity.superentity = text(item, "superentity", entity.name);
    for (const PropertyList& attribute : list(item, "attributes", entity.name)) {
      const std::string name = text(attribute, "name", "an attribute of " + entity.name);
      const std::string where = entity.name + "." + name;
      entity.attributes.push_back({name, type(text(attribute, "type", where), where)});
    }
    for (const PropertyList& relationship : list(item, "relationships", entity.name)) {
      const std::string name = text(relationship, "name", "a relationship of " + entity.name);
      entity.relationships.push_back(
          {.name = name,
           .destination = text(relationship, "destination", entity.name + "." + name),
           .toMany = relationship["toMany"].boolValue(),
           .inverse = relationship["inverse"].stringOr("")});
    }
    return entity;
  }

  template <typename Described>
  static void append(const std::vector<Described>& own, std::vector<Described>& all,
                     const std::string& entity) {
    for (const Described& item : own) {
      if (indexByName(all, item.name)) throw Problem{entity + " has two " + item.name};
      all.push_back(item);
    }
  }

  /// Puts what an entity inherits before what is its own, its ancestors first. Walks upwards
  /// instead of calling itself: a file can name more ancestors than a stack holds.
  void resolve(const std::string& name) {
    std::vector<const NSEntityDescription*> open;
    for (std::string next = name; !next.empty() && resolved_.count(next) == 0;) {
      const auto found = own_.find(next);
      if (found == own_.end()) throw Problem{open.back()->name + " inherits from unknown " + next};
      if (open.size() == own_.size()) throw Problem{name + " inherits from itself"};
      open.push_back(&found->second);
      next = found->second.superentity;
    }
    for (; !open.empty(); open.pop_back()) {
      const NSEntityDescription& own = *open.back();
      NSEntityDescription all;
      if (!own.superentity.empty()) all = resolved_.at(own.superentity);
      all.name = own.name;
      all.superentity = own.superentity;
      append(own.attributes, all.attributes, own.name);
      append(own.relationships, all.relationships, own.name);
      resolved_.emplace(own.name, std::move(all));
    }
  }

  void checkDestinations(const NSEntityDescription& entity) const {
    for (const auto& relationship : entity.relationships) {
      if (resolved_.count(relationship.destination) == 0) {
        throw Problem{entity.name + "." + relationship.name + " leads to unknown " +
                      relationship.destination};
      }
    }
  }

  Entities own_;
  Entities resolved_;
};

Error malformedModel(const std::string& path, const std::string& why) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 134010,
          .description = "The object model \"" + path + "\" cannot be used: " + why + ".",
          .failureReason = ""};
}

}  // namespace

std::optional<std::size_t> NSEntityDescription::attributeIndex(std::string_view attribute) const {
  return indexByName(attributes, attribute);
}

std::optional<std::size_t> NSEntityDescription::relationshipIndex(
    std::string_view relationship) const {
  return indexByName(relationships, relationship);
}

Result<NSManagedObjectModel> NSManagedObjectModel::initWithContentsOfURL(const NSFileManager& files,
                                                                         const std::string& path) {
  const auto bytes = files.contentsAtPath(path);
  if (!bytes) return bytes.error();
  const auto file = parsePropertyList(*bytes, path);
  if (!file) return file.error();
  NSManagedObjectModel model;
  try {
    model.entities_ = ModelReader().read(*file);
  } catch (const ModelReader::Problem& problem) {
    return malformedModel(path, problem.what);
  }
  return model;
}

Result<NSManagedObjectModel> NSManagedObjectModel::mergedModelFromBundle(const NSFileManager& files,
                                                                         const NSBundle& bundle) {
  NSManagedObjectModel merged;
  for (const std::string& path : bundle.pathsForResources("mom")) {
    auto model = initWithContentsOfURL(files, path);
    if (!model) return model.error();
    merged.entities_.merge(model->entities_);
    if (!model->entities_.empty()) {
      return malformedModel(path, "another model has " + model->entities_.begin()->first);
    }
  }
  return merged;
}

const NSEntityDescription* NSManagedObjectModel::entityForName(std::string_view name) const {
  const auto found = entities_.find(name);
  return found == entities_.end() ? nullptr : &found->second;
}

bool NSManagedObjectModel::isKindOf(const NSEntityDescription& entity,
                                    std::string_view ancestor) const {
  const NSEntityDescription* kind = &entity;
  while (kind != nullptr && kind->name != ancestor) kind = entityForName(kind->superentity);
  return kind != nullptr;
}

}  // namespace annivo
