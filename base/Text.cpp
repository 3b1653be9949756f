// SPDX-License-Identifier: MIT
#include "base/Text.h"

namespace annivo {

std::string hexDigits(std::uint64_t value, std::size_t count) {
  std::string text(count, '0');
  for (std::size_t i = count; i-- > 0; value >>= 4) text[i] = "0123456789abcdef"[value & 15];
  return text;
}

}  // namespace annivo
