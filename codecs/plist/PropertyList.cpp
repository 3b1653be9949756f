// SPDX-License-Identifier: MIT
#include "codecs/plist/PropertyList.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Digits.h"
#include "base/Text.h"

namespace annivo {

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

std::string_view withoutLeadingSpace(std::string_view text) {
  text.remove_prefix(
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isSpace) - text.begin()));
  return text;
}

/// Takes a sign off the front of `text`.
bool takeMinus(std::string_view& text) {
  const bool minus = text.starts_with('-');
  if (minus || text.starts_with('+')) text.remove_prefix(1);
  return minus;
}

std::int64_t leadingWholeNumber(std::string_view text) {
  text = withoutLeadingSpace(text);
  const bool minus = takeMinus(text);
  std::int64_t value = 0;  // kept negative, the side with the wider range
  for (const char c : text) {
    if (!isDigit(c)) break;
    const int digit = c - '0';
    if (value < (kSmallest + digit) / 10) return minus ? kSmallest : kLargest;
    value = value * 10 - digit;
  }
  if (minus) return value;
  return value == kSmallest ? kLargest : -value;
}

/// The whole part, held at the limits; 0 for what is no number.
std::int64_t wholePart(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 0x1p63) return kLargest;
  if (value < -0x1p63) return kSmallest;
  return static_cast<std::int64_t>(value);
}

}  // namespace

const PropertyList& PropertyList::operator[](std::string_view key) const {
  static const PropertyList kNil;
  if (!dictionary()) return kNil;
  const auto found = dictionary()->find(key);
  return found == dictionary()->end() ? kNil : found->second;
}

std::string PropertyList::stringOr(std::string_view otherwise) const {
  return string() ? *string() : std::string(otherwise);
}

std::int64_t PropertyList::integerValue() const {
  if (boolean()) return *boolean() ? 1 : 0;
  if (integer()) return *integer();
  if (real()) return wholePart(*real());
  if (string()) return leadingWholeNumber(*string());
  return 0;
}

std::int32_t PropertyList::intValue() const {
  const std::int64_t value = integerValue();
  if (!string()) return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

bool PropertyList::boolValue() const {
  if (real()) return *real() != 0;
  if (!string()) return integerValue() != 0;
  std::string_view text = withoutLeadingSpace(*string());
  takeMinus(text);
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return !text.empty() && std::string_view("YyTt123456789").find(text[0]) != std::string_view::npos;
}

}  // namespace annivo
