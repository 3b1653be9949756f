// SPDX-License-Identifier: MIT
#include "parent/sources/StableUUID.h"

#include <cstddef>

namespace annivo {

namespace {

__extension__ using Number = unsigned __int128;

constexpr Number number(unsigned long long high, unsigned long long low) {
  return static_cast<Number>(high) << 64 | low;
}

constexpr Number kOffset = number(0x6C62272E07BB0142ULL, 0x62B821756295C58DULL);
constexpr Number kPrime = number(0x1000000ULL, 0x13BULL);

}  // namespace

std::string stableUUID(std::string_view text) {
  Number hash = kOffset;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= kPrime;
  }
  std::string digits(32, '0');
  for (std::size_t i = digits.size(); i-- > 0; hash >>= 4) {
    digits[i] = "0123456789ABCDEF"[static_cast<unsigned>(hash & 0xF)];
  }
  digits[12] = '8';
  digits[16] = '8';
  return digits.substr(0, 8) + '-' + digits.substr(8, 4) + '-' + digits.substr(12, 4) + '-' +
         digits.substr(16, 4) + '-' + digits.substr(20);
}

}  // namespace annivo
