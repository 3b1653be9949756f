// SPDX-License-Identifier: MIT
#include "base/UUID.h"

#include <sys/random.h>
#include <uuid/uuid.h>

#include <array>
#include <cstddef>
#include <cstdlib>

#include "base/Digits.h"

namespace annivo {

namespace {

using Bytes = std::array<unsigned char, 16>;

/// Never given out twice. Drawn for sixteen at a time: a request of at most 256 bytes is answered
/// whole or not at all.
Bytes randomBytes() {
  thread_local std::array<Bytes, 16> drawn;
  thread_local std::size_t left = 0;
  if (left == 0) {
    if (getrandom(drawn.data(), sizeof drawn, 0) != sizeof drawn) std::abort();
    left = drawn.size();
  }
  return drawn[--left];
}

std::string textOf(const Bytes& bytes) {
  std::string text(36, '-');
  auto at = text.begin();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) ++at;
    *at++ = kUpperHexDigits[bytes[i] >> 4];
    *at++ = kUpperHexDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace

std::string freshUUID() {
  Bytes bytes = randomBytes();
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  return textOf(bytes);
}

std::string nameBasedUUID(const char* space, std::string_view name) {
  Bytes spaceBytes;
  if (uuid_parse(space, spaceBytes.data()) != 0) std::abort();
  Bytes bytes;
  uuid_generate_sha1(bytes.data(), spaceBytes.data(), name.data(), name.size());
  return textOf(bytes);
}

}  // namespace annivo
