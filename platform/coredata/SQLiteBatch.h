// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/NSCalendarDate.h"
#include "platform/coredata/NSManagedObject.h"
#include "platform/coredata/SQLiteDatabase.h"
#include "platform/coredata/SQLiteSchema.h"

namespace annivo {

/// What one query of a store gave: all objects of some kinds that share a table.
struct SQLiteBatch {
  /// A to-one relationship that was read and waits for the objects it leads to.
  struct ToOne {
    struct Link {
      std::uint32_t row;
      std::int64_t destination;
    };
    const NSRelationshipDescription* relationship;
    std::vector<Link> links;
  };

  std::string table;
  std::vector<SQLiteSchema::Kind> kinds;
  std::deque<NSManagedObject> objects;  ///< ascending by objectID
  std::vector<ToOne> toOnes;
  RelationshipTable relationships;  ///< by place in `objects`

  SQLiteBatch() = default;
  SQLiteBatch(const SQLiteBatch&) = delete;
  SQLiteBatch& operator=(const SQLiteBatch&) = delete;

  /// The place of an object in it.
  [[nodiscard]] std::optional<std::uint32_t> rowOf(std::int64_t objectID) const;
};

/// Fills a batch of which table and kinds are set. A value that its column should not hold is read
/// as nil, with one line in `notes` a column.
Result<void> readBatch(SQLiteBatch& batch, const SQLiteDatabase& database,
                       const SQLiteSchema& schema, const NSTimeZone& zone,
                       std::vector<std::string>& notes);

}  // namespace annivo
