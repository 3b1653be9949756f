// SPDX-License-Identifier: MIT
#include "platform/coredata/SQLiteBatch.h"

#include <algorithm>
#include <set>

#include "base/Unicode.h"
#include "platform/coredata/CivilDay.h"

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
  std::vector<std::string> toOnes;  ///< as the batch lists them
};

/// The columns that the file has, one a property however many kinds have it. Lists the to-one
/// relationships in the batch.
Columns columnsOf(SQLiteBatch& batch, const SQLiteSchema& schema) {
  Columns columns;
  std::set<std::string> seen;
  for (const auto& kind : batch.kinds) {
    for (const auto& attribute : kind.entity->attributes) {
      const auto name = schema.column(batch.table, attribute.name);
      if (!name || !seen.insert(attribute.name).second) continue;
      Column column{.name = *name, .type = attribute.type, .places = {}};
      for (const auto& other : batch.kinds) {
        column.places.push_back(other.entity->attributeIndex(attribute.name));
      }
      columns.attributes.push_back(std::move(column));
    }
    for (const auto& relationship : kind.entity->relationships) {
      const auto name = schema.column(batch.table, relationship.name);
      if (relationship.toMany || !name || !seen.insert(relationship.name).second) continue;
      columns.toOnes.push_back(*name);
      batch.toOnes.push_back({.relationship = &relationship, .links = {}});
    }
  }
  return columns;
}

std::string query(const SQLiteBatch& batch, const Columns& columns) {
  std::string sql = "SELECT Z_PK, Z_ENT";
  for (const Column& column : columns.attributes) sql += ", \"" + column.name + '"';
  for (const std::string& column : columns.toOnes) sql += ", \"" + column + '"';
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
             const NSTimeZone& zone, std::vector<NSManagedObject::Attribute>& attributes) {
  const auto objectID = row.integer(0);
  const auto kind = std::find_if(batch.kinds.begin(), batch.kinds.end(),
                                 [&](const auto& k) { return k.number == row.integer(1); });
  if (!objectID || kind == batch.kinds.end()) return;
  const auto kindIndex = static_cast<std::size_t>(kind - batch.kinds.begin());
  const auto place = static_cast<std::uint32_t>(batch.objects.size());
  NSManagedObject& object =
      batch.objects.emplace_back(*kind->entity, *objectID, &batch.relationships, place);

  int at = 2;
  for (Column& column : columns.attributes) {
    const int index = at++;
    if (!column.places[kindIndex] || row.isNull(index)) continue;
    PropertyList value = readValue(row, index, column.type, zone);
    if (value.isNil()) {
      ++column.unusable;
    } else {
      attributes.push_back({*column.places[kindIndex], std::move(value)});
    }
  }
  object.takeAttributes(attributes);
  for (SQLiteBatch::ToOne& toOne : batch.toOnes) {
    if (const auto destination = row.integer(at++)) toOne.links.push_back({place, *destination});
  }
}

}  // namespace

std::optional<std::uint32_t> SQLiteBatch::rowOf(std::int64_t objectID) const {
  const auto found = std::lower_bound(
      objects.begin(), objects.end(), objectID,
      [](const NSManagedObject& object, std::int64_t id) { return object.objectID() < id; });
  if (found == objects.end() || found->objectID() != objectID) return std::nullopt;
  return static_cast<std::uint32_t>(found - objects.begin());
}

Result<void> readBatch(SQLiteBatch& batch, const SQLiteDatabase& database,
                       const SQLiteSchema& schema, const NSTimeZone& zone,
                       std::vector<std::string>& notes) {
  Columns columns = columnsOf(batch, schema);
  auto statement = database.prepare(query(batch, columns));
  if (!statement) return statement.error();
  std::vector<NSManagedObject::Attribute> attributes;
  for (;;) {
    const auto row = statement->step();
    if (!row) return row.error();
    if (!*row) break;
    readRow(batch, columns, *statement, zone, attributes);
  }
  for (const Column& column : columns.attributes) {
    if (column.unusable == 0) continue;
    notes.push_back(std::to_string(column.unusable) + " values of " + batch.table + "." +
                    column.name + " are of another type and count as absent");
  }
  return {};
}

}  // namespace annivo
