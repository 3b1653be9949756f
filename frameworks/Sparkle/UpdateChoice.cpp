// SPDX-License-Identifier: MIT
#include "frameworks/Sparkle/UpdateChoice.h"

#include "frameworks/Sparkle/VersionComparator.h"

namespace annivo {

namespace {

bool fitsSystem(const AppcastItem& item, const std::string& system) {
  const std::string& lowest = item.minimumSystemVersion;
  const std::string& highest = item.maximumSystemVersion;
  if (system.empty()) return lowest.empty() && highest.empty();
  return (lowest.empty() || compareVersions(lowest, system) <= 0) &&
         (highest.empty() || compareVersions(system, highest) <= 0);
}

}  // namespace

std::optional<AppcastItem> chooseUpdate(const std::vector<AppcastItem>& items,
                                        const UpdateHost& host) {
  const AppcastItem* best = nullptr;
  for (const AppcastItem& item : items) {
    if (!item.channel.empty() || !fitsSystem(item, host.systemVersion)) continue;
    if (!best || compareVersions(best->version, item.version) < 0) best = &item;
  }
  if (!best || compareVersions(host.version, best->version) >= 0) return std::nullopt;
  if (!host.skippedVersion.empty() && compareVersions(best->version, host.skippedVersion) <= 0) {
    return std::nullopt;
  }
  return *best;
}

}  // namespace annivo
