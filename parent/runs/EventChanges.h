// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace annivo {

/// One event of ours that differs between two states of the calendars.
struct EventChange {
  Date date{};
  std::string title;
  std::string calendar;  ///< its title
  std::string uid;
  std::string what;  ///< for a change: what changed, "was \"Ann: 45th birthday\"", "alarms"
};

/// The three lists, each by date and title.
struct EventChanges {
  std::vector<EventChange> added, changed, removed;
};

/// Compares the event files at `paths` as `before` and `after` have them. Events that carry no
/// ledger identity are somebody else's and left out.
[[nodiscard]] EventChanges eventChanges(Platform& platform, NSFileManager& before,
                                        NSFileManager& after,
                                        const std::vector<std::string>& paths);

[[nodiscard]] PropertyList::Dictionary changesAsPropertyList(const EventChanges& changes,
                                                             const NSTimeZone& zone);

}  // namespace annivo
