// SPDX-License-Identifier: MIT
// Any bytes as a file of cards: cut into the same cards in pieces of any size, every property read
// as valid text or refused, every day that is found one of the calendar.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tests/fuzz/vcard_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  annivo::fuzz::checkCards({reinterpret_cast<const char*>(data), size});
  return 0;
}
