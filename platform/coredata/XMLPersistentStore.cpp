// SPDX-License-Identifier: MIT
#include "platform/coredata/XMLPersistentStore.h"

#include <algorithm>

#include "platform/coredata/XMLStore.h"

namespace annivo {

Result<std::unique_ptr<NSPersistentStore>> openXMLStore(const NSManagedObjectModel& model,
                                                        const StoreEnvironment& environment,
                                                        const std::string& path) {
  return std::unique_ptr<NSPersistentStore>(
      std::make_unique<XMLPersistentStore>(model, environment, path));
}

XMLPersistentStore::XMLPersistentStore(const NSManagedObjectModel& model,
                                       StoreEnvironment environment, std::string path)
    : model_(model),
      environment_(std::move(environment)),
      files_(environment_.files),
      givenPath_(std::move(path)),
      path_(givenPath_),
      journalPath_(givenPath_ + ".journal") {}

Result<std::vector<NSManagedObject*>> XMLPersistentStore::execute(const NSFetchRequest& request) {
  if (auto loaded = load(); !loaded) return loaded.error();
  const auto isAsked = [&](const XMLStoreRow& row) {
    return !row.removed && model_.isKindOf(row.entity(), request.entity);
  };
  std::vector<NSManagedObject*> found;
  const auto comparisons = request.predicate ? request.predicate->conjunction() : std::nullopt;
  if (comparisons) {
    if (const auto candidates = index_.candidates(*comparisons, content_.rows)) {
      for (XMLStoreRow* row : *candidates) {
        const auto holds = [&](const auto& one) {
          return one.holds(row->valueForKey(one.attribute));
        };
        if (isAsked(*row) && std::all_of(comparisons->begin(), comparisons->end(), holds)) {
          found.push_back(row);
        }
      }
      const auto byID = [](const auto* a, const auto* b) { return a->objectID() < b->objectID(); };
      std::sort(found.begin(), found.end(), byID);
      found.erase(std::unique(found.begin(), found.end()), found.end());
      return found;
    }
  }
  for (XMLStoreRow& row : content_.rows) {
    const auto valueForKey = [&](std::string_view attribute) -> const PropertyList& {
      return row.valueForKey(attribute);
    };
    if (isAsked(row) && (!request.predicate || request.predicate->evaluate(valueForKey))) {
      found.push_back(&row);
    }
  }
  return found;
}

NSManagedObject* XMLPersistentStore::insert(const NSEntityDescription& entity) {
  if (!load()) return nullptr;
  XMLStoreRow& row = content_.rows.emplace_back(entity, ++content_.info.nextObjectID);
  markPending(row);
  return &row;
}

void XMLPersistentStore::set(NSManagedObject& object, std::string_view, const PropertyList&) {
  markPending(static_cast<XMLStoreRow&>(object));
}

void XMLPersistentStore::remove(NSManagedObject& object) {
  auto& row = static_cast<XMLStoreRow&>(object);
  row.removed = true;
  markPending(row);
}

void XMLPersistentStore::markPending(XMLStoreRow& row) {
  if (!row.pending) pending_.push_back(&row);
  row.pending = true;
  if (!row.removed) index_.rowChanged(row);
}

}  // namespace annivo
