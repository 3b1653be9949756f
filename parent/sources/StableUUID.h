// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace annivo {

/// A UUID (version 8) that depends on the text alone: 128 bits of FNV-1a.
[[nodiscard]] std::string stableUUID(std::string_view text);

}  // namespace annivo
