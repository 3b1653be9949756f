// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "codecs/plist/PropertyList.h"
#include "codecs/plist/PropertyListLimits.h"

namespace annivo {

/// Reads the XML form in UTF-8. A text refers to no entities but the five of XML itself. Invalid
/// UTF-8 within texts is repaired.
[[nodiscard]] PropertyList readXMLPropertyList(std::string text, const PropertyListLimits& limits);

}  // namespace annivo
