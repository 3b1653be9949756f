// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// One item of a feed that can be offered at all. Absent texts are "".
struct AppcastItem {
  std::string version;         ///< never empty
  std::string displayVersion;  ///< `version` when the feed gives no other
  std::string url;             ///< of the download or, without one, of the item's page
  std::string channel;         ///< "" is the default channel
  std::string minimumSystemVersion;
  std::string maximumSystemVersion;
};

/// Reads a feed: the items of each /rss/channel in their order, elements of the update namespace
/// told by its URI. Nothing is expanded or fetched; a feed that declares entities is malformed, as
/// is one that is no RSS.
///
/// Left out are items without a version (the enclosure's, else the item's own, else what stands
/// between the last "_" and the extension of the enclosure's file name), items with a version of
/// more than 256 bytes, items with neither an enclosure nor a link, items whose address is not
/// http or https, and items that have enclosures for other operating systems only.
[[nodiscard]] Result<std::vector<AppcastItem>> parseAppcast(std::string_view feed);

/// `address` begins with http:// or https:// (in any case).
[[nodiscard]] bool isWebAddress(std::string_view address);

}  // namespace annivo
