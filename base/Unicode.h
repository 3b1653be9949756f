// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace annivo {

/// `text` folded for comparison without case (Unicode default case folding of its canonical form).
/// Plain ASCII costs one pass.
[[nodiscard]] std::string caseFolded(std::string_view text);
/// Equal for texts whose folded forms are.
[[nodiscard]] std::size_t caseFoldedHash(std::string_view text);
/// Each word's first letter in upper (title) case, the rest in lower case, by the rules of
/// `language` (Turkish and Azeri i, Lithuanian left as Unicode's default; a final Greek sigma is
/// the final form). A word is a run of letters, marks and digits; an apostrophe inside a word
/// belongs to it.
[[nodiscard]] std::string capitalized(std::string_view text, std::string_view language);
/// Appends the UTF-8 form of a code point; U+FFFD for what is none or a surrogate.
void appendUTF8(std::string& out, char32_t point);
enum class ByteOrder { bigEndian, littleEndian };
/// UTF-16 as UTF-8. A lone surrogate becomes U+FFFD; a last odd byte is left out.
[[nodiscard]] std::string fromUTF16(std::string_view bytes, ByteOrder order);
[[nodiscard]] bool isValidUTF8(std::string_view text);
/// `text` with every byte that is no part of valid UTF-8 replaced by U+FFFD.
[[nodiscard]] std::string repairedUTF8(std::string_view text);
/// How many columns a terminal gives the text: two for a wide character, none for a combining mark.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

}  // namespace annivo
