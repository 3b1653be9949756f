// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "calendar/CalendarType.h"
#include "platform/Platform.h"

namespace annivo {

/// The title template that a person's words stand for: "{first name} {last name}: {ordinal age}",
/// or one word each ("first-name" "last-name" ":" "ordinal-age"). Tokens are known in any case and
/// with "-" or "_" for a space. The error names what is no token.
[[nodiscard]] Result<std::vector<std::string>> templateFromWords(
    const std::vector<std::string>& words);
/// A template in the form with braces.
[[nodiscard]] std::string templateText(const std::vector<std::string>& titleFormat);
/// The words for the tokens, "first-name" and so on.
[[nodiscard]] std::vector<std::string> tokenWords();

/// The title that a template gives to the next birthday or anniversary of Ann Marie Smith.
[[nodiscard]] std::string exampleTitle(Platform& platform, CalendarType type,
                                       const std::vector<std::string>& titleFormat);

}  // namespace annivo
