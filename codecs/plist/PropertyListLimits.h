// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace annivo {

/// Limits on what one property list may hold.
struct PropertyListLimits {
  std::size_t bytes = std::size_t{16} << 20;    ///< of the file
  std::size_t depth = 64;                       ///< of arrays and dictionaries in each other
  std::size_t nodes = 1'000'000;                ///< keys and values, counted at each use
  std::size_t content = std::size_t{64} << 20;  ///< of texts and data, counted at each use
};

/// Why a list cannot be read, in one sentence. Thrown by the readers of its two forms.
struct MalformedPropertyList {
  const char* reason;
};

}  // namespace annivo
