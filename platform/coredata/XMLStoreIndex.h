// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/coredata/NSPredicate.h"
#include "platform/coredata/XMLStoreFile.h"

namespace annivo {

/// Finds rows by the values of a set of attributes, that of the first fetch it can help. Gives a
/// few rows too many at times (rows that have changed since, or whose values differ in case only),
/// so what it finds is still to be tested; never too few.
class XMLStoreIndex {
 public:
  /// The rows, without order or with doubles, that a conjunction of equalities and of LIKEs without
  /// wildcards can match; nothing when it is another kind of condition or about other attributes.
  [[nodiscard]] std::optional<std::vector<XMLStoreRow*>> candidates(
      std::vector<NSPredicate::Comparison> comparisons, std::deque<XMLStoreRow>& rows);
  /// Tells that a row is new or that a value of it has changed or is about to.
  void rowChanged(XMLStoreRow& row) {
    if (!attributes_.empty() && (stale_.empty() || stale_.back() != &row)) stale_.push_back(&row);
  }

 private:
  [[nodiscard]] std::size_t keyOf(const XMLStoreRow& row) const;
  void add(XMLStoreRow& row) { rows_.emplace(keyOf(row), &row); }

  std::vector<std::string> attributes_;  ///< sorted; empty before the first use
  std::unordered_multimap<std::size_t, XMLStoreRow*> rows_;
  std::vector<XMLStoreRow*> stale_;
};

}  // namespace annivo
