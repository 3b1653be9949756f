// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frameworks/Sparkle/Appcast.h"

namespace annivo {

/// What decides which item is an update.
struct UpdateHost {
  std::string version;         ///< CFBundleVersion of the application
  std::string systemVersion;   ///< "" when unknown
  std::string skippedVersion;  ///< up to which the person wants no offer; "" for none
};

/// The item of the highest version, the first of equals, among those of the default channel that
/// fit the system version (an unknown one fits no requirement); nothing unless that version is
/// newer than the application's and the skipped one.
[[nodiscard]] std::optional<AppcastItem> chooseUpdate(const std::vector<AppcastItem>& items,
                                                      const UpdateHost& host);

}  // namespace annivo
