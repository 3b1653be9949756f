// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Date.h"

namespace annivo {

/// Whether XML 1.0 can hold the text: valid UTF-8 without control characters other than tab, line
/// feed and carriage return, and without U+FFFE and U+FFFF.
[[nodiscard]] bool isXMLText(std::string_view text);
/// `text` as XML 1.0 can hold it: U+FFFD in the place of each character and byte that it cannot.
[[nodiscard]] std::string repairedXMLText(std::string_view text);
/// Appends `text` with &, <, > and carriage returns escaped.
void appendEscaped(std::string& out, std::string_view text);

/// Seconds since 2001 with 20 decimals, exact.
[[nodiscard]] std::string storeDateText(Date date);
/// The same read back, in any decimal form, rounded to the microsecond; nothing for what is no
/// number or lies outside the years 1 to 9999.
[[nodiscard]] std::optional<Date> dateFromStoreText(std::string_view text);

}  // namespace annivo
