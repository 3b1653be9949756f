// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteStore.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <set>

#include "platform/coredata/SQLiteBatch.h"

namespace annivo {

namespace {

struct OpenDatabase {
  SQLiteDatabase database;
  SQLiteSchema schema;
};

Result<OpenDatabase> openAndProbe(const NSManagedObjectModel& model, const NSFileManager& files,
                                  const std::string& path,
                                  const std::shared_ptr<StoreReadings>& readings) {
  for (int i = 0; i < SQLiteDatabase::kMostReadings; ++i) {
    auto database = SQLiteDatabase::openForReading(files, path, readings);
    if (!database) return database.error();
    auto schema = SQLiteSchema::probe(*database, model, path);
    if (database->wasChanged()) continue;
    if (!schema) return schema.error();
    return OpenDatabase{std::move(*database), std::move(*schema)};
  }
  return keepsChanging(path);
}

/// A store opened for reading.
///
/// 1. A fetch reads its entity, and whatever the model's relationships lead to, table by table:
///    one query an entity and one a join table, all in one read transaction.
/// 2. What a query gave is a batch. Objects are made once and kept: later fetches and
///    relationships find them in the batches.
/// 3. Where another program changed the file meanwhile, it is opened anew and the fetch repeated.
/// 4. A fetch that fails leaves the batches as they were before it. A to-many relationship that
///    cannot be read fails none: it reads as empty, and unreadRelationship says why.
class SQLiteStore final : public NSPersistentStore {
 public:
  SQLiteStore(const NSManagedObjectModel& model, const StoreEnvironment& environment,
              OpenDatabase open, std::string path)
      : model_(model),
        files_(environment.files),
        zone_(environment.zone),
        readings_(environment.readings),
        open_(std::make_unique<OpenDatabase>(std::move(open))),
        path_(std::move(path)) {}

  Result<void> load() override { return {}; }
  [[nodiscard]] const std::optional<Error>& damage() const override { return damage_; }
  [[nodiscard]] std::vector<std::string> notes() const override { return notes_; }
  [[nodiscard]] const std::optional<Error>& unreadRelationship() const override {
    return unreadRelationship_;
  }
  Result<std::vector<NSManagedObject*>> execute(const NSFetchRequest& request) override;

  NSManagedObject* insert(const NSEntityDescription&) override { return nullptr; }
  void set(NSManagedObject&, std::string_view, const PropertyList&) override { refuse(); }
  void remove(NSManagedObject&) override { refuse(); }
  [[nodiscard]] bool hasChanges() const override { return false; }
  Result<void> save() override { return {}; }

 private:
  /// The objects that a relationship can lead to.
  class Destinations {
   public:
    Destinations(const SQLiteStore& store, const NSRelationshipDescription& relationship);
    [[nodiscard]] const NSManagedObject* find(std::int64_t objectID) const;

   private:
    const SQLiteStore& store_;
    std::string entity_;
    std::vector<const SQLiteBatch*> batches_;
  };

  [[noreturn]] void refuse() const {
    std::cerr << "The store " << path_ << " is for reading only\n";
    std::abort();
  }

  /// What a failure takes back.
  struct Loaded {
    std::size_t batches;
    std::size_t notes;
    std::optional<Error> unreadRelationship;
  };
  [[nodiscard]] Loaded loadedSoFar() const {
    return {batches_.size(), notes_.size(), unreadRelationship_};
  }
  void takeBackTo(const Loaded& before);
  Result<void> loadSteadily(const NSEntityDescription& entity);
  Result<void> openAnew();
  Result<void> loadInOneTransaction(const NSEntityDescription& entity);
  Result<void> loadEntity(const NSEntityDescription& entity);
  [[nodiscard]] std::vector<SQLiteSchema::Kind> kindsToLoad(
      const NSEntityDescription& entity) const;
  Result<void> loadDestinations(const SQLiteBatch& batch);
  void resolveToOnes(SQLiteBatch& batch);
  void readToManys(SQLiteBatch& batch);
  Result<std::vector<RelationshipTable::Link>> readJoinTable(
      const SQLiteBatch& batch, const SQLiteSchema::JoinTable& join,
      const NSRelationshipDescription& relationship);
  [[nodiscard]] std::vector<NSManagedObject*> objectsOf(const NSEntityDescription& entity);

  const NSManagedObjectModel& model_;
  const NSFileManager& files_;
  NSTimeZone zone_;
  std::shared_ptr<StoreReadings> readings_;
  std::unique_ptr<OpenDatabase> open_;
  std::string path_;
  std::deque<SQLiteBatch> batches_;
  std::vector<std::string> notes_;
  std::optional<Error> unreadRelationship_;
  std::optional<Error> damage_;
};

Result<std::vector<NSManagedObject*>> SQLiteStore::execute(const NSFetchRequest& request) {
  const NSEntityDescription* entity = model_.entityForName(request.entity);
  if (entity == nullptr) {
    return Error{.kind = Error::Kind::absent,
                 .domain = "NSCocoaErrorDomain",
                 .code = 134070,
                 .description = "The model of \"" + path_ + "\" has no \"" + request.entity + "\".",
                 .failureReason = ""};
  }
  if (!kindsToLoad(*entity).empty()) {
    if (const auto loaded = loadSteadily(*entity); !loaded) return loaded.error();
  }
  std::vector<NSManagedObject*> objects = objectsOf(*entity);
  if (request.predicate) {
    std::erase_if(objects, [&](const NSManagedObject* object) {
      return !request.predicate->evaluate(
          [&](std::string_view key) -> const PropertyList& { return object->valueForKey(key); });
    });
  }
  return objects;
}

Result<void> SQLiteStore::loadSteadily(const NSEntityDescription& entity) {
  const Loaded before = loadedSoFar();
  for (int i = 0; i < SQLiteDatabase::kMostReadings; ++i) {
    auto loaded = loadInOneTransaction(entity);
    if (!open_->database.wasChanged()) return loaded;
    takeBackTo(before);
    if (auto opened = openAnew(); !opened) return opened;
  }
  return keepsChanging(path_);
}

/// What was read before stays, and must be of a file of the same schema.
Result<void> SQLiteStore::openAnew() {
  auto opened = openAndProbe(model_, files_, path_, readings_);
  if (!opened) return opened.error();
  if (opened->schema != open_->schema) return keepsChanging(path_);
  open_ = std::make_unique<OpenDatabase>(std::move(*opened));
  return {};
}

Result<void> SQLiteStore::loadInOneTransaction(const NSEntityDescription& entity) {
  const Loaded before = loadedSoFar();
  if (const auto begun = open_->database.execute("BEGIN"); !begun) return begun.error();
  const auto loaded = loadEntity(entity);
  const auto ended = open_->database.execute(loaded ? "COMMIT" : "ROLLBACK");
  if (loaded && ended) return {};
  takeBackTo(before);
  return loaded ? ended : loaded;
}

void SQLiteStore::takeBackTo(const Loaded& before) {
  while (batches_.size() > before.batches) batches_.pop_back();
  notes_.resize(before.notes);
  unreadRelationship_ = before.unreadRelationship;
}

std::vector<SQLiteSchema::Kind> SQLiteStore::kindsToLoad(const NSEntityDescription& entity) const {
  auto kinds = open_->schema.kindsOf(entity);
  for (const SQLiteBatch& batch : batches_) {
    for (const auto& loaded : batch.kinds) {
      std::erase_if(kinds, [&](const auto& kind) { return kind.number == loaded.number; });
    }
  }
  return kinds;
}

Result<void> SQLiteStore::loadEntity(const NSEntityDescription& entity) {
  auto kinds = kindsToLoad(entity);
  if (kinds.empty()) return {};
  SQLiteBatch& batch = batches_.emplace_back();
  batch.table = open_->schema.tableOf(entity);
  batch.kinds = std::move(kinds);
  auto read = readBatch(batch, open_->database, open_->schema, zone_, notes_);
  if (!read) return read;
  if (auto loaded = loadDestinations(batch); !loaded) return loaded;
  resolveToOnes(batch);
  readToManys(batch);
  return {};
}

Result<void> SQLiteStore::loadDestinations(const SQLiteBatch& batch) {
  for (const auto& kind : batch.kinds) {
    for (const auto& relationship : kind.entity->relationships) {
      const Loaded before = loadedSoFar();
      auto loaded = loadEntity(*model_.entityForName(relationship.destination));
      if (loaded) continue;
      if (!relationship.toMany) return loaded;
      takeBackTo(before);
      unreadRelationship_ = loaded.error();
    }
  }
  return {};
}

void SQLiteStore::resolveToOnes(SQLiteBatch& batch) {
  for (auto& [relationship, links] : batch.toOnes) {
    const Destinations destinations(*this, *relationship);
    std::vector<RelationshipTable::Link> resolved;
    resolved.reserve(links.size());
    for (const auto& [row, destination] : links) {
      if (const auto* member = destinations.find(destination)) resolved.push_back({row, member});
    }
    batch.relationships.set(relationship->name, std::move(resolved), batch.objects.size());
  }
  batch.toOnes = {};
}

SQLiteStore::Destinations::Destinations(const SQLiteStore& store,
                                        const NSRelationshipDescription& relationship)
    : store_(store), entity_(relationship.destination) {
  const std::string table = store.open_->schema.tableOf(*store.model_.entityForName(entity_));
  for (const SQLiteBatch& batch : store.batches_) {
    if (batch.table == table) batches_.push_back(&batch);
  }
}

const NSManagedObject* SQLiteStore::Destinations::find(std::int64_t objectID) const {
  for (const SQLiteBatch* batch : batches_) {
    const auto row = batch->rowOf(objectID);
    if (!row) continue;
    const NSManagedObject& object = batch->objects[*row];
    return store_.model_.isKindOf(object.entity(), entity_) ? &object : nullptr;
  }
  return nullptr;
}

void SQLiteStore::readToManys(SQLiteBatch& batch) {
  std::map<std::string, std::vector<RelationshipTable::Link>> links;
  std::set<std::string> read;
  for (const auto& kind : batch.kinds) {
    for (const auto& relationship : kind.entity->relationships) {
      if (!relationship.toMany) continue;
      const auto join = open_->schema.joinTable(kind, relationship);
      if (!join || !read.insert(join->table).second) continue;
      auto joined = readJoinTable(batch, *join, relationship);
      if (!joined) {
        unreadRelationship_ = joined.error();
        continue;
      }
      auto& all = links[relationship.name];
      all.insert(all.end(), joined->begin(), joined->end());
    }
  }
  for (auto& [name, all] : links) {
    batch.relationships.set(name, std::move(all), batch.objects.size());
  }
}

Result<std::vector<RelationshipTable::Link>> SQLiteStore::readJoinTable(
    const SQLiteBatch& batch, const SQLiteSchema::JoinTable& join,
    const NSRelationshipDescription& relationship) {
  auto statement = open_->database.prepare("SELECT \"" + join.ownColumn + "\", \"" +
                                           join.otherColumn + "\" FROM \"" + join.table + '"');
  if (!statement) return statement.error();
  const Destinations destinations(*this, relationship);
  std::vector<RelationshipTable::Link> links;
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) return links;
    const auto own = statement->integer(0);
    const auto other = statement->integer(1);
    if (!own || !other) continue;
    const auto place = batch.rowOf(*own);
    const NSManagedObject* member = destinations.find(*other);
    if (place && member != nullptr) links.push_back({*place, member});
  }
}

std::vector<NSManagedObject*> SQLiteStore::objectsOf(const NSEntityDescription& entity) {
  std::vector<NSManagedObject*> objects;
  const std::string table = open_->schema.tableOf(entity);
  for (SQLiteBatch& batch : batches_) {
    if (batch.table != table) continue;
    for (NSManagedObject& object : batch.objects) {
      if (model_.isKindOf(object.entity(), entity.name)) objects.push_back(&object);
    }
  }
  std::sort(objects.begin(), objects.end(),
            [](const auto* a, const auto* b) { return a->objectID() < b->objectID(); });
  return objects;
}

}  // namespace

Result<std::unique_ptr<NSPersistentStore>> openSQLiteStore(const NSManagedObjectModel& model,
                                                           const StoreEnvironment& environment,
                                                           const std::string& path) {
  auto open = openAndProbe(model, environment.files, path, environment.readings);
  if (!open) return open.error();
  return std::unique_ptr<NSPersistentStore>(
      std::make_unique<SQLiteStore>(model, environment, std::move(*open), path));
}

}  // namespace annivo
