// SPDX-License-Identifier: MIT
#include "platform/foundation/UUID.h"

#include <sys/random.h>

#include <array>
#include <cstdlib>

namespace annivo {

std::string freshUUID() {
  std::array<unsigned char, 16> bytes{};
  // A request of at most 256 bytes is answered whole or not at all.
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);

  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace annivo
