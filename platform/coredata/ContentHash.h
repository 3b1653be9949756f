// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

namespace annivo {

/// FNV-1a over little-endian words of eight bytes, the last one filled up with zeros, then the
/// length, with a last mixing step. Tells damage and change, not malice. Part of a file form: see
/// docs/formats/ledger.md.
[[nodiscard]] std::uint64_t contentHash(std::string_view bytes);

}  // namespace annivo
