// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// "=C3=BC" to its bytes; what is no such code stays as it is.
[[nodiscard]] std::string quotedPrintableDecoded(std::string_view text);
/// `bytes` in `charset` as UTF-8. Refused for an unknown charset, malformed for bytes that it does
/// not have.
[[nodiscard]] Result<std::string> convertedToUTF8(std::string_view bytes,
                                                  const std::string& charset);
/// What a backslash may stand before in a value, beside "n" and "N".
inline constexpr std::string_view kEscapable = ",;:\\";
/// Cut at each of `separators` that no backslash precedes. Always at least one part.
[[nodiscard]] std::vector<std::string_view> unescapedParts(std::string_view text,
                                                           std::string_view separators);
/// Takes the group ("item1" of "item1.X-ABDATE") off a property's name; "" where it has none.
std::string_view takeGroup(std::string_view& name);

}  // namespace annivo
