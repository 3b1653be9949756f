// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// "=C3=BC" to its bytes; what is no such code stays as it is.
[[nodiscard]] std::string quotedPrintableDecoded(std::string_view text);
/// Base64 to its bytes; white space is passed over, decoding ends at padding or any other byte.
[[nodiscard]] std::string base64Decoded(std::string_view text);
/// `bytes` in `charset` as UTF-8. Refused for an unknown charset, malformed for bytes that it does
/// not have.
[[nodiscard]] Result<std::string> convertedToUTF8(std::string_view bytes,
                                                  const std::string& charset);
/// The escapes "\n" "\N" "\," "\;" "\:" "\\" undone; any other backslash stays.
[[nodiscard]] std::string unescaped(std::string_view text);
/// Cut at each of `separators` that no backslash precedes. Always at least one part.
[[nodiscard]] std::vector<std::string_view> unescapedParts(std::string_view text,
                                                           std::string_view separators);
[[nodiscard]] std::string upperCased(std::string_view ascii);
/// Without white space at both ends.
[[nodiscard]] std::string_view trimmedText(std::string_view text);

}  // namespace annivo
