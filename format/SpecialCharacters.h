// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace annivo {

/// `replaceSpecialCharactersIn:`. Removes the spaces that separators leave next to punctuation:
/// before closing marks and the possessive "'s ", after opening brackets, and on both sides of a
/// hyphen or slash that has one on each. Seventeen replacements, one pass each, in a fixed order.
[[nodiscard]] std::string replaceSpecialCharactersIn(std::string text);

}  // namespace annivo
