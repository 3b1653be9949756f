// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/Platform.h"

namespace annivo {

/// The parent application's preferences over their defaults.
class AnvCalPrefs {
 public:
  explicit AnvCalPrefs(Platform& platform) : platform_(platform) {}
  /// The parent's stored values laid over the defaults; every key that the parent stores is in it,
  /// known or not, with its type as stored. Read from disk at the first call only.
  [[nodiscard]] const PropertyList& prefs();

 private:
  [[nodiscard]] PropertyList::Dictionary defaults(const PropertyList::Dictionary& stored) const;

  Platform& platform_;
  std::optional<PropertyList> appPrefs;
};

}  // namespace annivo
