// SPDX-License-Identifier: MIT
#include "platform/coredata/RelationshipTable.h"

#include <algorithm>

#include "platform/coredata/NSManagedObject.h"

namespace annivo {

void RelationshipTable::set(std::string relationship, std::vector<Link> links, std::size_t rows) {
  std::sort(links.begin(), links.end(), [](const Link& a, const Link& b) {
    return a.row != b.row ? a.row < b.row : a.member->objectID() < b.member->objectID();
  });
  const auto isSame = [](const Link& a, const Link& b) {
    return a.row == b.row && a.member == b.member;
  };
  links.erase(std::unique(links.begin(), links.end(), isSame), links.end());

  Column column{.relationship = std::move(relationship), .ends = {}, .members = {}};
  column.ends.reserve(rows);
  column.members.reserve(links.size());
  for (const Link& link : links) {
    column.ends.resize(link.row, static_cast<std::uint32_t>(column.members.size()));
    column.members.push_back(link.member);
  }
  column.ends.resize(rows, static_cast<std::uint32_t>(column.members.size()));
  columns_.push_back(std::move(column));
}

std::span<const NSManagedObject* const> RelationshipTable::members(std::string_view relationship,
                                                                   std::uint32_t row) const {
  for (const Column& column : columns_) {
    if (column.relationship != relationship) continue;
    const std::uint32_t begin = row == 0 ? 0 : column.ends[row - 1];
    return std::span(column.members).subspan(begin, column.ends[row] - begin);
  }
  return {};
}

}  // namespace annivo
