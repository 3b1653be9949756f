// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/ContactDateRecord.h"

namespace annivo {

/// The template elements that stand for a value, in the order of their places.
inline constexpr std::array<std::string_view, 9> kTokens{
    "First name",  "Middle name", "Last name", "nickname",    "age",
    "ordinal age", "year",        "type",      "organization"};

/// The year of a date whose year is not known.
inline constexpr std::string_view kNoYear = "1604";

/// The template as one marked-up text: each element between two "^!*", one space between elements.
[[nodiscard]] std::string masterTitle(const std::vector<std::string>& titleFormat);

/// The title of a record's events but for the ages, which stay marked for titleForAge. Values are
/// put in one after the other, so that a value which holds a marker or a marked token is changed
/// by what follows, as is one that holds "NULL", a space before punctuation or two spaces.
/// `year` is the year of the record's date, `type` its date type in the person's language.
[[nodiscard]] std::string baseTitle(std::string master, const ContactDateRecord& record,
                                    std::string_view year, std::string_view type);

/// The base title with its ages filled in, `language` choosing the form of the ordinal.
[[nodiscard]] std::string titleForAge(std::string base, std::int64_t age,
                                      std::string_view language);

}  // namespace annivo
