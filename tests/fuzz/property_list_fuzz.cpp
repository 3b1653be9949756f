// SPDX-License-Identifier: MIT
// Any bytes as a property list: read without harm; what was read is written in the binary form and
// read back equal, and in the XML form and read back at all.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "codecs/plist/PropertyList.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

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
  require(annivo::parsePropertyList(annivo::xmlPropertyList(*list), "xml.plist").ok());
  return 0;
}
