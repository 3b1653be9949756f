// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/addressbook/AddressBookStoreWriter.h"

namespace annivo {

/// The entities and tables of the contacts store in one generation.
///
/// Numbers run from 1 over the root entities in name order, each followed at once by those that
/// inherit from it; an entity that a generation does not have yet makes all later numbers smaller.
class StoreSchema {
 public:
  struct Entity {
    int number = 0;
    std::string_view name;
    int super = 0;  ///< 0 for a root
  };

  explicit StoreSchema(StoreGeneration generation);

  [[nodiscard]] StoreGeneration generation() const { return generation_; }
  [[nodiscard]] const std::vector<Entity>& entities() const { return entities_; }
  /// The number of an entity; 0 when the generation does not have it.
  [[nodiscard]] int number(std::string_view entity) const;
  /// `text` with the entity number of contacts in place of "{contact}", and so on for
  /// "{group}" and "{abstractGroup}": names of columns and join tables hold such numbers.
  [[nodiscard]] std::string withNumbers(std::string text) const;
  /// CREATE TABLE of every table, the bookkeeping ones included.
  [[nodiscard]] std::string tables() const;
  /// CREATE INDEX statements; quicker to run when the rows are there.
  [[nodiscard]] std::string indices() const;

 private:
  StoreGeneration generation_;
  std::vector<Entity> entities_;
};

}  // namespace annivo
