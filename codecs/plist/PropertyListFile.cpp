// SPDX-License-Identifier: MIT
#include "base/Text.h"
#include "base/Unicode.h"
#include "codecs/plist/BinaryPropertyList.h"
#include "codecs/plist/XMLPropertyList.h"

namespace annivo {

namespace {

bool looksLikeXML(std::string_view bytes) { return trimmed(bytes).starts_with('<'); }

/// The XML form in UTF-8, whichever of the three encodings its byte order mark names.
std::string textOf(std::string_view bytes) {
  if (bytes.starts_with("\xFE\xFF")) return fromUTF16(bytes.substr(2), ByteOrder::bigEndian);
  if (bytes.starts_with("\xFF\xFE")) return fromUTF16(bytes.substr(2), ByteOrder::littleEndian);
  return std::string(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
}

PropertyList parsed(std::string_view bytes) {
  const PropertyListLimits limits;
  if (bytes.size() > limits.bytes) throw MalformedPropertyList{"It is too large."};
  if (bytes.starts_with(kBinaryPropertyListMagic)) return readBinaryPropertyList(bytes, limits);
  std::string text = textOf(bytes);
  if (looksLikeXML(text)) return readXMLPropertyList(std::move(text), limits);
  throw MalformedPropertyList{"It is neither a binary nor an XML property list."};
}

}  // namespace

Result<PropertyList> parsePropertyList(std::string_view bytes, const std::string& name) {
  try {
    return parsed(bytes);
  } catch (const MalformedPropertyList& malformed) {
    return Error{.kind = Error::Kind::malformed,
                 .domain = "NSCocoaErrorDomain",
                 .description = name + " is not a property list.",
                 .failureReason = malformed.reason};
  }
}

}  // namespace annivo
