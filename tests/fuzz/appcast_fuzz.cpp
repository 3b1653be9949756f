// SPDX-License-Identifier: MIT
// Any bytes as an update feed: read without harm, every item fit to be offered, and the choice
// among them is the highest version.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "frameworks/Sparkle/Appcast.h"
#include "frameworks/Sparkle/UpdateChoice.h"
#include "frameworks/Sparkle/VersionComparator.h"
#include "tests/fuzz/require.h"

namespace annivo {
namespace {

using fuzz::require;

void checkOrder(std::string_view a, std::string_view b) {
  require(compareVersions(a, a) == 0);
  require((compareVersions(a, b) < 0) == (compareVersions(b, a) > 0));
  require((compareVersions(a, b) == 0) == (compareVersions(b, a) == 0));
}

void checkTransitivity(std::string_view a, std::string_view b, std::string_view c) {
  if (compareVersions(a, b) > 0 || compareVersions(b, c) > 0) return;
  require(compareVersions(a, c) <= 0);
  require(compareVersions(a, c) != 0 || compareVersions(a, b) == 0);
}

void checkFeed(std::string_view bytes) {
  const auto items = parseAppcast(bytes);
  if (!items) return;
  for (const AppcastItem& item : *items) {
    require(!item.version.empty() && item.version.size() <= 256);
    require(isWebAddress(item.url));
    require(item.url.find(' ') == std::string::npos);
  }
  const auto choice =
      chooseUpdate(*items, {.version = "1.0", .systemVersion = "10.7.5", .skippedVersion = "1.1"});
  if (!choice) return;
  require(compareVersions(choice->version, "1.1") > 0);
  for (const AppcastItem& item : *items) {
    checkOrder(item.version, choice->version);
    const bool isOpen = item.channel.empty() && item.minimumSystemVersion.empty() &&
                        item.maximumSystemVersion.empty();
    require(!isOpen || compareVersions(item.version, choice->version) <= 0);
  }
}

}  // namespace
}  // namespace annivo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  annivo::checkFeed(bytes);
  annivo::checkOrder(bytes.substr(0, size / 2), bytes.substr(size / 2));
  const std::size_t third = size / 3;
  annivo::checkTransitivity(bytes.substr(0, third), bytes.substr(third, third),
                            bytes.substr(2 * third));
  return 0;
}
