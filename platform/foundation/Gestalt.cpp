// SPDX-License-Identifier: MIT
#include "platform/foundation/Gestalt.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "codecs/plist/PropertyList.h"

namespace annivo {

namespace {

/// Takes a run of digits off the front of `text`; its value, held at 15, or nothing without one.
std::optional<std::int32_t> takeDigit(std::string_view& text) {
  const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return std::nullopt;
  std::int32_t value = 0;
  for (const char digit : text.substr(0, length)) {
    value = std::min(15, value * 10 + (digit - '0'));
  }
  text.remove_prefix(length);
  return value;
}

std::optional<std::int32_t> systemVersion(std::string_view productVersion) {
  constexpr std::string_view kFamily = "10.";
  if (!productVersion.starts_with(kFamily)) return std::nullopt;
  productVersion.remove_prefix(kFamily.size());
  const auto minor = takeDigit(productVersion);
  std::optional<std::int32_t> bugFix = 0;
  if (productVersion.starts_with('.')) {
    productVersion.remove_prefix(1);
    bugFix = takeDigit(productVersion);
  }
  if (!minor || !bugFix || !productVersion.empty()) return std::nullopt;
  return 0x1000 + 0x10 * *minor + *bugFix;
}

}  // namespace

Gestalt::Gestalt(const NSFileManager& files, std::string systemFolder)
    : files_(files), systemFolder_(std::move(systemFolder)) {}

std::optional<std::int32_t> Gestalt::query(std::uint32_t selector) const {
  if (selector != kGestaltSystemVersion) return std::nullopt;
  const std::string path = systemFolder_ + "/Library/CoreServices/SystemVersion.plist";
  const auto bytes = files_.contentsAtPath(path);
  if (!bytes) return std::nullopt;
  const auto list = parsePropertyList(*bytes, path);
  if (!list) return std::nullopt;
  return systemVersion(list.value()["ProductVersion"].stringOr(""));
}

}  // namespace annivo
