// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/PropertyList.h"

namespace annivo {

/// Looks up an environment variable; the empty text when it is not set.
using Environment = std::function<std::string(const char* name)>;

/// The person's languages, most wanted first, never empty: `appleLanguages` (the texts of that
/// array as they stand) when it holds any; else LANGUAGE (a colon-separated list), LC_ALL,
/// LC_MESSAGES or LANG, the first that is set, reduced to two-letter languages (zh_TW, zh_HK and
/// zh_MO to "zh-Hant", other Chinese to "zh-Hans"; "C" and "POSIX" name no language); else "en".
[[nodiscard]] std::vector<std::string> preferredLanguages(const PropertyList& appleLanguages,
                                                          const Environment& environment);

}  // namespace annivo
