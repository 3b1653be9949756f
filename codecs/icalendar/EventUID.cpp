// SPDX-License-Identifier: MIT
#include "codecs/icalendar/EventUID.h"

#include <cstddef>
#include <cstdint>

#include "base/UUID.h"

namespace annivo {
namespace {

constexpr std::size_t kLength = 36;
constexpr std::size_t kDrawn = 24;  ///< of its characters; the others are the check

/// Twelve hexadecimal digits of a hash (FNV-1a) of the text. Files on disk depend on it.
std::string checkOf(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (unsigned shift = 60; digits.size() < kLength - kDrawn; shift -= 4) {
    digits += kDigits[(hash >> shift) & 0xF];
  }
  return digits;
}

}  // namespace

std::string freshEventUID() {
  std::string uid = freshUUID();
  uid.replace(kDrawn, std::string::npos, checkOf(uid.substr(0, kDrawn)));
  return uid;
}

bool isOurEventUID(std::string_view uid) {
  return uid.size() == kLength && uid.substr(kDrawn) == checkOf(uid.substr(0, kDrawn));
}

}  // namespace annivo
