// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace annivo {

// How values are spelled in an iCalendar text. What is written is valid UTF-8 without control
// characters and without any character that some reader takes for the end of a line (CR, LF, VT,
// FF, FS to RS, NEL, LINE and PARAGRAPH SEPARATOR), so that no value can add a line.

/// Appends one property: `head` is the name with its parameters. Folded at 75 octets on character
/// borders; `lineEnd` is the text's own.
void appendContentLine(std::string& out, std::string_view head, std::string_view value,
                       std::string_view lineEnd);

/// A value of type TEXT. Line breaks become "\n"; other control characters and bytes that are no
/// UTF-8 cannot be said in it and are dropped or replaced.
[[nodiscard]] std::string escapedText(std::string_view text);
[[nodiscard]] std::string unescapedText(std::string_view value);
/// The same where a backslash escapes nothing but "n", "N" and the characters of `escapable`.
[[nodiscard]] std::string unescapedText(std::string_view value, std::string_view escapable);

/// A value of type URI: what no URI may hold is percent-encoded, all else stays.
[[nodiscard]] std::string escapedURI(std::string_view uri);

/// Every byte but letters, digits and those in `plain` percent-encoded.
[[nodiscard]] std::string percentEncoded(std::string_view bytes, std::string_view plain);
/// A "%" without two hexadecimal digits stands for itself.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// The same with "_" in the place of "%": for values of our own, since some programs decode percent
/// signs wherever they stand. Letters, digits, "-" and "." stay, and those in `plain`.
[[nodiscard]] std::string underscoreEncoded(std::string_view bytes, std::string_view plain = "");
[[nodiscard]] std::string underscoreDecoded(std::string_view text);

/// Text that its value type cannot say goes, underscore-encoded, into this parameter beside the
/// nearest value that can be said. It counts only while value and parameter agree, so that a value
/// which another program changed is believed.
inline constexpr std::string_view kExactParameter = "X-ANNIVO-EXACT";
/// What any reader finds in a value of type TEXT: it without the white space at its ends, which
/// some readers strip.
[[nodiscard]] std::string plainestReading(std::string_view value);
/// The part of a text that survives every reader.
[[nodiscard]] std::string plainestText(std::string_view text);
/// ";X-ANNIVO-EXACT=…" for that text.
[[nodiscard]] std::string exactParameter(std::string_view text);

}  // namespace annivo
