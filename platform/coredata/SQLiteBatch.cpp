// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteBatch.h"

#include <algorithm>
#include <set>

#include "platform/coredata/CivilDay.h"
#include "platform/foundation/Unicode.h"

namespace annivo {

namespace {

/// A column to read and, by kind, the place of its value (nothing where the kind has none).
struct Column {
  std::string name;
  AttributeType type = AttributeType::string;
  std::vector<std::optional<std::size_t>> places;
  std::size_t unusable = 0;  ///< values met that are not of the type
};

struct Columns {
  std::vector<Column> attributes;
  std::vector<Column> toOnes;
};

Columns columnsOf(const SQLiteBatch& batch, const SQLiteSchema& schema) {
  Columns columns;
  std::set<std::string> seen;
  const auto add = [&](const std::string& property, std::vector<Column>& list, AttributeType type,
                       auto index) {
    if (!seen.insert(property).second) return;
    const auto name = schema.column(batch.table, property);
    if (!name) return;
    Column column{.name = *name, .type = type, .places = {}};
    for (const auto& kind : batch.kinds) column.places.push_back((kind.entity->*index)(property));
    list.push_back(std::move(column));
  };
  for (const auto& kind : batch.kinds) {
    for (const auto& attribute : kind.entity->attributes) {
      add(attribute.name, columns.attributes, attribute.type, &NSEntityDescription::attributeIndex);
    }
    for (const auto& relationship : kind.entity->relationships) {
      if (relationship.toMany) continue;
      add(relationship.name, columns.toOnes, AttributeType::integer,
          &NSEntityDescription::relationshipIndex);
    }
  }
  return columns;
}

std::string query(const SQLiteBatch& batch, const Columns& columns) {
  std::string sql = "SELECT Z_PK, Z_ENT";
  for (const auto* list : {&columns.attributes, &columns.toOnes}) {
    for (const Column& column : *list) sql += ", \"" + column.name + '"';
  }
  sql += " FROM \"" + batch.table + "\" WHERE Z_ENT IN (";
  for (std::size_t i = 0; i < batch.kinds.size(); ++i) {
    if (i != 0) sql += ", ";
    sql += std::to_string(batch.kinds[i].number);
  }
  return sql + ") ORDER BY Z_PK";
}

/// Nil for what is no value of the type.
PropertyList readValue(const SQLiteStatement& row, int column, AttributeType type,
                       const NSTimeZone& zone) {
  switch (type) {
    case AttributeType::string:
      if (const auto text = row.text(column)) return repairedUTF8(*text);
      break;
    case AttributeType::integer:
      if (const auto integer = row.integer(column)) return *integer;
      break;
    case AttributeType::date:
    case AttributeType::day:
      if (const auto seconds = row.number(column)) {
        const auto date = dateFromReferenceSeconds(*seconds);
        if (!date) break;
        return type == AttributeType::day ? civilDay(*date, zone) : *date;
      }
      break;
  }
  return {};
}

void readRow(SQLiteBatch& batch, Columns& columns, const SQLiteStatement& row,
             const NSTimeZone& zone) {
  const auto objectID = row.integer(0);
  const auto kind = std::find_if(batch.kinds.begin(), batch.kinds.end(),
                                 [&](const auto& k) { return k.number == row.integer(1); });
  if (!objectID || kind == batch.kinds.end()) return;
  const auto kindIndex = static_cast<std::size_t>(kind - batch.kinds.begin());
  NSManagedObject& object = batch.objects.emplace_back(*kind->entity, *objectID);

  int index = 2;
  for (Column& column : columns.attributes) {
    const int at = index++;
    const auto place = column.places[kindIndex];
    if (!place || row.isNull(at)) continue;
    PropertyList value = readValue(row, at, column.type, zone);
    if (value.isNil()) ++column.unusable;
    object.attributeAt(*place) = std::move(value);
  }
  for (const Column& column : columns.toOnes) {
    const int at = index++;
    const auto place = column.places[kindIndex];
    const auto destination = row.integer(at);
    if (place && destination) batch.links.push_back({&object, *place, *destination});
  }
}

}  // namespace

NSManagedObject* SQLiteBatch::find(std::int64_t objectID) {
  const auto found = std::lower_bound(
      objects.begin(), objects.end(), objectID,
      [](const NSManagedObject& object, std::int64_t id) { return object.objectID() < id; });
  return found != objects.end() && found->objectID() == objectID ? &*found : nullptr;
}

Result<void> readBatch(SQLiteBatch& batch, const SQLiteDatabase& database,
                       const SQLiteSchema& schema, const NSTimeZone& zone,
                       std::vector<std::string>& notes) {
  Columns columns = columnsOf(batch, schema);
  auto statement = database.prepare(query(batch, columns));
  if (!statement) return statement.error();
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) break;
    readRow(batch, columns, *statement, zone);
  }
  for (const Column& column : columns.attributes) {
    if (column.unusable == 0) continue;
    notes.push_back(std::to_string(column.unusable) + " values of " + batch.table + "." +
                    column.name + " are of another type and count as absent");
  }
  return {};
}

}  // namespace annivo
