// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace annivo {

/// `ordinalNumberFormat:`. The number as an ordinal of `language`, a code compared as it stands:
/// "es", "it", "pt", "de" and "fr" have a rule of their own, every other code takes the English
/// one. Zero is the empty text.
[[nodiscard]] std::string ordinalNumberFormat(std::int64_t number, std::string_view language);

}  // namespace annivo
