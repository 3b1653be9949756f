// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace annivo {

/// The parent application's preferences over their defaults.
class AnvCalPrefs {
 public:
  explicit AnvCalPrefs(Platform& platform) : platform_(platform) {}

  /// The parent's stored values laid over the defaults; every key that the parent stores is in it,
  /// known or not, with its type as stored; a known key's value of another type is named in the
  /// log. Read from disk at the first call only.
  [[nodiscard]] const PropertyList& prefs();
  /// One value of `prefs`. Contacts are opened, for the own card, by "setEmail" alone.
  [[nodiscard]] const PropertyList& valueForKey(const std::string& key);

  /// The text under a key of `prefs`; for a value that is no text the key's default ("" where it
  /// has none).
  [[nodiscard]] std::string text(const std::string& key);
  /// The texts under a key of `prefs`, in the same way; what is no text in the array is left out.
  [[nodiscard]] std::vector<std::string> texts(const std::string& key);

 private:
  [[nodiscard]] const PropertyList::Dictionary& allButEmail();

  Platform& platform_;
  std::optional<PropertyList::Dictionary> allButEmail_;  ///< unless the parent stores it
  std::optional<PropertyList> appPrefs;
};

}  // namespace annivo
