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

/// The result of one query: all objects of the kinds that share a table.
struct SQLiteBatch {
  /// A to-one relationship that was read before the objects it leads to.
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

  /// The object's index in the batch.
  [[nodiscard]] std::optional<std::uint32_t> rowOf(std::int64_t objectID) const;
};

/// Fills a batch whose table and kinds are set. A value of a type that its column should not hold
/// is read as nil, and each such column adds one line to `notes`.
Result<void> readBatch(SQLiteBatch& batch, const SQLiteDatabase& database,
                       const SQLiteSchema& schema, const NSTimeZone& zone,
                       std::vector<std::string>& notes);

}  // namespace annivo
