// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace annivo {

/// In one line, padded.
[[nodiscard]] std::string base64(std::string_view bytes);
/// White space is passed over; nothing for what is no base64.
[[nodiscard]] std::optional<std::string> fromBase64(std::string_view text);
/// White space is passed over; decoding ends at padding or any other character.
[[nodiscard]] std::string fromBase64AsFarAsItGoes(std::string_view text);

}  // namespace annivo
