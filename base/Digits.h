// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace annivo {

/// Appends the last `count` decimal digits of `value`, zeros in front.
inline void appendDigits(std::string& out, std::uint64_t value, std::size_t count) {
  out.append(count, '0');
  for (std::size_t i = out.size(); count > 0; --count, value /= 10) {
    out[--i] = static_cast<char>('0' + value % 10);
  }
}

}  // namespace annivo
