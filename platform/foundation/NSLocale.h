// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/plist/PropertyList.h"

namespace annivo {

/// Looks up an environment variable; the empty text when it is not set.
using Environment = std::function<std::string(const char* name)>;

/// The language of a tag or locale name without region, script, encoding and modifier, in lower
/// case: "de" of "de_AT.UTF-8" and "de-AT"; for Chinese "zh-Hant" (tags with Hant, TW, HK or MO) or
/// "zh-Hans". "" for what names no language, e.g. "C" and "POSIX".
[[nodiscard]] std::string bareLanguage(std::string_view tag);

/// The person's languages, most wanted first, never empty: `appleLanguages` (the texts of that
/// array as they stand) when it holds any; else LANGUAGE (a colon-separated list), LC_ALL,
/// LC_MESSAGES or LANG, the first that is set, each entry reduced to its bareLanguage; else "en".
[[nodiscard]] std::vector<std::string> preferredLanguages(const PropertyList& appleLanguages,
                                                          const Environment& environment);

/// The languages of texts that people read, as gettext wants them in LANGUAGE: those of LANGUAGE,
/// LC_ALL, LC_MESSAGES or LANG, the first that is set, ended by "C" at the first English one:
/// "pt_BR:fr:C".
[[nodiscard]] std::string catalogueLanguages(const Environment& environment);

}  // namespace annivo
