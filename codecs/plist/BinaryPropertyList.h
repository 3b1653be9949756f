// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "codecs/plist/PropertyList.h"

namespace annivo {

inline constexpr std::string_view kBinaryPropertyListMagic = "bplist00";

/// Limits on what one property list may hold.
struct PropertyListLimits {
  std::size_t bytes = std::size_t{16} << 20;    ///< of the file
  std::size_t depth = 64;                       ///< of arrays and dictionaries in each other
  std::size_t nodes = 1'000'000;                ///< keys and values, counted at each use
  std::size_t content = std::size_t{64} << 20;  ///< of texts and data, counted at each use
};

/// Reads the binary form. On failure `reason` says, in one sentence, what is wrong.
[[nodiscard]] std::optional<PropertyList> readBinaryPropertyList(std::string_view bytes,
                                                                 const PropertyListLimits& limits,
                                                                 std::string& reason);

}  // namespace annivo
