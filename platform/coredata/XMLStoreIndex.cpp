// SPDX-License-Identifier: MIT
#include "platform/coredata/XMLStoreIndex.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "base/Unicode.h"

namespace annivo {

namespace {

using Comparison = NSPredicate::Comparison;

constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

bool isHelpful(const Comparison& comparison) {
  const auto* text = comparison.value->string();
  switch (comparison.op) {
    case Comparison::Operator::equal:
      return text != nullptr || comparison.value->date() != nullptr;
    case Comparison::Operator::like:
    case Comparison::Operator::likeC:
      return text != nullptr && !hasWildcard(*text);
    default:
      return false;
  }
}

/// Equal values, and texts that differ in case only, have the same.
std::size_t hashOf(const PropertyList& value) {
  if (const auto* text = value.string()) return caseFoldedHash(*text);
  if (const auto* date = value.date()) {
    return std::hash<std::int64_t>{}(date->time_since_epoch().count());
  }
  return 0;
}

std::size_t combined(std::size_t key, std::size_t hash) {
  return (key ^ hash) * 0x9E3779B97F4A7C15 + (key >> 7);
}

}  // namespace

std::size_t XMLStoreIndex::keyOf(const XMLStoreRow& row) const {
  std::size_t key = 0;
  for (const auto& attribute : attributes_) key = combined(key, hashOf(row.valueForKey(attribute)));
  return key;
}

void XMLStoreIndex::add(XMLStoreRow& row) {
  entries_.push_back({keyOf(row), &row, kNoEntry});
  if (entries_.size() <= chains_.size()) {
    return link(static_cast<std::uint32_t>(entries_.size()) - 1);
  }
  chains_.assign(std::bit_ceil(2 * entries_.size()), kNoEntry);
  for (std::uint32_t i = 0; i < entries_.size(); ++i) link(i);
}

void XMLStoreIndex::link(std::uint32_t entry) {
  std::uint32_t& first = chain(entries_[entry].key);
  entries_[entry].next = first;
  first = entry;
}

std::optional<std::span<XMLStoreRow* const>> XMLStoreIndex::candidates(
    const std::vector<Comparison>& comparisons, std::deque<XMLStoreRow>& rows) {
  if (!std::all_of(comparisons.begin(), comparisons.end(), isHelpful)) return std::nullopt;
  if (attributes_.empty()) {
    for (const auto& comparison : comparisons) attributes_.emplace_back(comparison.attribute);
    entries_.reserve(rows.size());
    chains_.assign(std::bit_ceil(rows.size()), kNoEntry);
    for (XMLStoreRow& row : rows) add(row);
  }
  if (!std::equal(comparisons.begin(), comparisons.end(), attributes_.begin(), attributes_.end(),
                  [](const auto& a, const auto& b) { return a.attribute == b; })) {
    return std::nullopt;
  }
  for (XMLStoreRow* row : stale_) add(*row);
  stale_.clear();

  std::size_t key = 0;
  for (const auto& comparison : comparisons) key = combined(key, hashOf(*comparison.value));
  found_.clear();
  for (auto i = chains_.empty() ? kNoEntry : chain(key); i != kNoEntry; i = entries_[i].next) {
    if (entries_[i].key == key) found_.push_back(entries_[i].row);
  }
  return found_;
}

}  // namespace annivo
