// SPDX-License-Identifier: MIT
// Any bytes as a property list: read without harm; what was read is written in the binary form and
// read back equal, and in the XML form, read back, and written the same again.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "codecs/plist/PropertyList.h"
#include "tests/fuzz/require.h"

using annivo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto list = annivo::parsePropertyList(bytes, "fuzz.plist");
  if (!list) return 0;
  const std::string binary = annivo::binaryPropertyList(*list);
  const auto again = annivo::parsePropertyList(binary, "again.plist");
  require(again.ok());
  // By their bytes: a number that is none does not equal itself.
  require(annivo::binaryPropertyList(*again) == binary);
  if (list->foreign()) return 0;  // which has no XML form
  const std::string xml = annivo::xmlPropertyList(*list);
  const auto fromXML = annivo::parsePropertyList(xml, "xml.plist");
  require(fromXML.ok());
  require(annivo::xmlPropertyList(*fromXML) == xml);
  return 0;
}
