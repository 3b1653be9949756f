// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/Error.h"
#include "base/StoredDay.h"
#include "codecs/vcard/VCard.h"

namespace annivo {

/// The civil day that a date property names. A date with a time is the day as it is written,
/// whatever the zone. The error's description says why there is no day, as the rest of a sentence
/// that begins with the property ("names a day without a month").
///
/// Days without a year ("--0610", the year 0000, or the year that X-APPLE-OMIT-YEAR names) have the
/// year 1604.
[[nodiscard]] Result<StoredDay> vCardDay(const VCardProperty& property, std::string_view text);

}  // namespace annivo
