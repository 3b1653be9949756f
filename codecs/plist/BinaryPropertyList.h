// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "codecs/plist/PropertyList.h"
#include "codecs/plist/PropertyListLimits.h"

namespace annivo {

inline constexpr std::string_view kBinaryPropertyListMagic = "bplist00";

[[nodiscard]] PropertyList readBinaryPropertyList(std::string_view bytes,
                                                  const PropertyListLimits& limits);

/// Appends the last `size` bytes of a number as the binary form has them.
void appendBigEndian(std::string& bytes, std::uint64_t value, unsigned size);

}  // namespace annivo
