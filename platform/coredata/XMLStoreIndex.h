// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/coredata/NSPredicate.h"
#include "platform/coredata/XMLStoreFile.h"

namespace annivo {

/// Finds rows by the values of a set of attributes, which the first suitable fetch determines. The
/// result may hold a few rows too many (rows that changed since, or whose values differ only in
/// case), so the caller tests them; it never misses one.
class XMLStoreIndex {
 public:
  /// The rows, without order or with doubles, that a conjunction of equalities and of LIKEs without
  /// wildcards can match; nothing when it is another kind of condition, or about other attributes
  /// or in another order than that of the first fetch. Valid until the next call.
  [[nodiscard]] std::optional<std::span<XMLStoreRow* const>> candidates(
      const std::vector<NSPredicate::Comparison>& comparisons, std::deque<XMLStoreRow>& rows);
  /// To be called for a row that is new, or whose values have changed or are about to.
  void rowChanged(XMLStoreRow& row) {
    if (!attributes_.empty() && (stale_.empty() || stale_.back() != &row)) stale_.push_back(&row);
  }

 private:
  struct Entry {
    std::size_t key;
    XMLStoreRow* row;
    std::uint32_t next;  ///< the entry after it in its chain
  };
  [[nodiscard]] std::size_t keyOf(const XMLStoreRow& row) const;
  [[nodiscard]] std::uint32_t& chain(std::size_t key) {
    return chains_[key & (chains_.size() - 1)];
  }
  void add(XMLStoreRow& row);
  void link(std::uint32_t entry);

  std::vector<std::string> attributes_;  ///< empty before the first use
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> chains_;  ///< the first entry of each; a power of two of them
  std::vector<XMLStoreRow*> stale_;
  std::vector<XMLStoreRow*> found_;
};

}  // namespace annivo
