// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <string_view>

namespace annivo {

/// Orders version texts: "0.9" < "1.0a1" < "1.0b2" < "1.0b10" < "1.0" == "1.0.0" < "1.0.1".
///
/// A version is cut into numbers, separators (periods, punctuation and white space, one each) and
/// words (all else); a "-" that is not its first character ends it. The numbers and periods that it
/// begins with are compared as if both versions went on with ".0" as far as needed. Part by part, a
/// word is lower than the end of the text, the end lower than a separator, a separator lower than a
/// number; numbers compare by value (held at 64 bits), words by their bytes with case, and all
/// separators are equal. A version that begins with neither number nor period is lower than one
/// that does. This is a total order of classes of equal versions.
[[nodiscard]] std::weak_ordering compareVersions(std::string_view a, std::string_view b);

}  // namespace annivo
