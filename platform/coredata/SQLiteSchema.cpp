// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteSchema.h"

#include <algorithm>

#include "base/Text.h"

namespace annivo {

namespace {

constexpr std::string_view kDigits = "0123456789";

Error malformedStore(const std::string& path, const std::string& why) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 134100,
          .description = "The database \"" + path + "\" is no store of this kind: " + why + ".",
          .failureReason = ""};
}

/// Whether a join column, "Z_<entity number><RELATIONSHIP>" with digits after it where the name was
/// taken already, is that of the relationship.
bool isColumnOf(std::string_view column, std::string_view upperRelationship) {
  if (!column.starts_with("Z_")) return false;
  column.remove_prefix(2);
  column.remove_prefix(std::min(column.find_first_not_of(kDigits), column.size()));
  if (!column.starts_with(upperRelationship)) return false;
  column.remove_prefix(upperRelationship.size());
  return column.find_first_not_of(kDigits) == std::string_view::npos;
}

}  // namespace

Result<SQLiteSchema> SQLiteSchema::probe(const SQLiteDatabase& database,
                                         const NSManagedObjectModel& model,
                                         const std::string& path) {
  SQLiteSchema schema;
  schema.model_ = &model;
  if (const auto read = schema.readTables(database); !read) return read.error();
  if (const auto read = schema.readEntities(database, path); !read) return read.error();
  if (const auto checked = schema.checkTables(path); !checked) return checked.error();
  return schema;
}

Result<void> SQLiteSchema::readTables(const SQLiteDatabase& database) {
  auto statement = database.prepare(
      "SELECT t.name, c.name FROM sqlite_schema t, pragma_table_info(t.name) c "
      "WHERE t.type = 'table' AND t.name LIKE 'Z%'");
  if (!statement) return statement.error();
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) return {};
    tables_[upperCased(statement->text(0).value_or(""))].push_back(
        upperCased(statement->text(1).value_or("")));
  }
}

Result<void> SQLiteSchema::readEntities(const SQLiteDatabase& database, const std::string& path) {
  if (tables_.count("Z_PRIMARYKEY") == 0) return malformedStore(path, "it has no Z_PRIMARYKEY");
  auto statement = database.prepare("SELECT Z_ENT, Z_NAME, Z_SUPER FROM Z_PRIMARYKEY");
  if (!statement) return statement.error();
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) break;
    const auto number = statement->integer(0);
    const auto name = statement->text(1);
    if (!number || !name) continue;
    entities_.try_emplace(
        *number, StoredEntity{std::string(*name), statement->integer(2).value_or(0), nullptr});
  }
  for (auto& [number, stored] : entities_) {
    for (const std::int64_t ancestor : ancestry(number)) {
      stored.entity = model_->entityForName(entities_.at(ancestor).name);
      if (stored.entity != nullptr) break;
    }
  }
  return {};
}

Result<void> SQLiteSchema::checkTables(const std::string& path) const {
  for (const auto& [name, entity] : model_->entities()) {
    const bool isTree = !entity.superentity.empty();
    const std::string table = tableOf(entity);
    if ((isTree || !kindsOf(entity).empty()) && tables_.count(table) == 0) {
      return malformedStore(path, "it has no " + table);
    }
  }
  return {};
}

std::vector<std::int64_t> SQLiteSchema::ancestry(std::int64_t number) const {
  std::vector<std::int64_t> chain;
  while (chain.size() < entities_.size()) {
    const auto found = entities_.find(number);
    if (found == entities_.end()) break;
    chain.push_back(number);
    number = found->second.super;
  }
  return chain;
}

std::vector<SQLiteSchema::Kind> SQLiteSchema::kindsOf(const NSEntityDescription& entity) const {
  std::vector<Kind> kinds;
  for (const auto& [number, stored] : entities_) {
    if (stored.entity != nullptr && model_->isKindOf(*stored.entity, entity.name)) {
      kinds.push_back({number, stored.entity});
    }
  }
  return kinds;
}

std::string SQLiteSchema::tableOf(const NSEntityDescription& entity) const {
  const NSEntityDescription* root = &entity;
  while (!root->superentity.empty()) root = model_->entityForName(root->superentity);
  return "Z" + upperCased(root->name);
}

std::optional<std::string> SQLiteSchema::column(const std::string& table,
                                                std::string_view property) const {
  const auto found = tables_.find(table);
  if (found == tables_.end()) return std::nullopt;
  std::string name = "Z" + upperCased(property);
  const auto& columns = found->second;
  if (std::find(columns.begin(), columns.end(), name) == columns.end()) return std::nullopt;
  return name;
}

std::optional<SQLiteSchema::JoinTable> SQLiteSchema::joinTable(
    const Kind& kind, const NSRelationshipDescription& relationship) const {
  const std::string name = upperCased(relationship.name);
  // The table is numbered after the entity that declares the relationship: this or an ancestor.
  for (const std::int64_t number : ancestry(kind.number)) {
    const std::string table = "Z_" + std::to_string(number) + name;
    if (auto join = joinTableNamed(table, name)) return join;
  }
  return std::nullopt;
}

std::optional<SQLiteSchema::JoinTable> SQLiteSchema::joinTableNamed(
    const std::string& table, std::string_view relationship) const {
  const auto found = tables_.find(table);
  if (found == tables_.end()) return std::nullopt;
  JoinTable join{.table = table, .ownColumn = "", .otherColumn = ""};
  for (const std::string& column : found->second) {
    (isColumnOf(column, relationship) ? join.otherColumn : join.ownColumn) = column;
  }
  if (join.ownColumn.empty() || join.otherColumn.empty()) return std::nullopt;
  return join;
}

}  // namespace annivo
