// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/coredata/NSManagedObjectModel.h"
#include "platform/coredata/SQLiteDatabase.h"

namespace annivo {

/// How a store file lays out a model's entities. Read from the file itself, because numbers, tables
/// and columns differ between the generations of the format.
class SQLiteSchema {
 public:
  /// Malformed when the file has no Z_PRIMARYKEY, when it lacks the table of an inheritance tree
  /// of the model, or lists an entity whose table is not there.
  static Result<SQLiteSchema> probe(const SQLiteDatabase& database,
                                    const NSManagedObjectModel& model, const std::string& path);

  /// One of the entities that the file numbers, with the entity of the model that describes it:
  /// the one of its name, else of its nearest ancestor. A subscribed contact is thus a contact.
  struct Kind {
    std::int64_t number;
    const NSEntityDescription* entity;
  };
  /// All kinds whose entity is `entity` or inherits from it; none when the file has none.
  [[nodiscard]] std::vector<Kind> kindsOf(const NSEntityDescription& entity) const;

  /// The table of an entity, "Z" and the upper-case name of its root.
  [[nodiscard]] std::string tableOf(const NSEntityDescription& entity) const;
  /// The column of an attribute or to-one relationship; nothing when this file has none.
  [[nodiscard]] std::optional<std::string> column(const std::string& table,
                                                  std::string_view property) const;

  struct JoinTable {
    std::string table;
    std::string ownColumn;    ///< Z_PK of the object that has the relationship
    std::string otherColumn;  ///< Z_PK of a member
    friend bool operator==(const JoinTable&, const JoinTable&) = default;
  };
  /// The table of a many-to-many relationship of the objects of `kind`; nothing when this file has
  /// none.
  [[nodiscard]] std::optional<JoinTable> joinTable(
      const Kind& kind, const NSRelationshipDescription& relationship) const;
  friend bool operator==(const SQLiteSchema&, const SQLiteSchema&) = default;

 private:
  struct StoredEntity {
    std::string name;
    std::int64_t super = 0;
    const NSEntityDescription* entity = nullptr;  ///< null when the model knows no ancestor
    friend bool operator==(const StoredEntity&, const StoredEntity&) = default;
  };

  Result<void> readEntities(const SQLiteDatabase& database, const std::string& path);
  Result<void> readTables(const SQLiteDatabase& database);
  Result<void> checkTables(const std::string& path) const;
  /// The number and those of its ancestors; ends where the file's own ancestry turns in a circle.
  [[nodiscard]] std::vector<std::int64_t> ancestry(std::int64_t number) const;
  [[nodiscard]] std::optional<JoinTable> joinTableNamed(const std::string& table,
                                                        std::string_view relationship) const;

  const NSManagedObjectModel* model_ = nullptr;
  std::map<std::int64_t, StoredEntity> entities_;
  std::map<std::string, std::vector<std::string>, std::less<>> tables_;  ///< all upper case
};

}  // namespace annivo
