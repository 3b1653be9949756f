// SPDX-License-Identifier: MIT
#include "platform/coredata/ContentHash.h"

#include <bit>
#include <cstring>

namespace annivo {

std::uint64_t contentHash(std::string_view bytes) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint64_t kPrime = 0x100000001B3;
  std::uint64_t hash = 0xCBF29CE484222325;
  const std::uint64_t length = bytes.size();
  std::uint64_t word = 0;
  for (; bytes.size() >= sizeof word; bytes.remove_prefix(sizeof word)) {
    std::memcpy(&word, bytes.data(), sizeof word);
    hash = (hash ^ word) * kPrime;
  }
  word = 0;
  if (!bytes.empty()) std::memcpy(&word, bytes.data(), bytes.size());
  hash = (hash ^ word) * kPrime;
  hash = (hash ^ length) * kPrime;
  hash ^= hash >> 32;
  hash *= 0xD6E8FEB86659FD93;
  return hash ^ (hash >> 32);
}

}  // namespace annivo
