// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace annivo {

class NSManagedObject;

/// The relationships of many objects, which know their rows in it: a list an object would take more
/// memory than what it holds.
class RelationshipTable {
 public:
  struct Link {
    std::uint32_t row;
    const NSManagedObject* member;
  };

  /// Sets a relationship of all objects; links that are there twice count once. Rows are below
  /// `rows`.
  void set(std::string relationship, std::vector<Link> links, std::size_t rows);
  /// The members of one object, ascending by objectID.
  [[nodiscard]] std::span<const NSManagedObject* const> members(std::string_view relationship,
                                                                std::uint32_t row) const;

 private:
  struct Column {
    std::string relationship;
    std::vector<std::uint32_t> ends;  ///< by row: where its members end and those of the next begin
    std::vector<const NSManagedObject*> members;
  };
  std::vector<Column> columns_;
};

}  // namespace annivo
