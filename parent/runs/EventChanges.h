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
  // For a change; where neither is set, other details changed.
  std::optional<std::string> oldTitle = {};  ///< where the title changed
  bool alarmsChanged = false;
};

/// The three lists, each by date and title.
struct EventChanges {
  std::vector<EventChange> added, changed, removed;
};

/// The paths of all event files in the calendars of `files`, also behind linked folders.
[[nodiscard]] std::vector<std::string> eventFiles(Platform& platform, NSFileManager& files);

/// Compares the events in the files at `paths` as `before` and `after` have them; whose they are,
/// the ledgers of both say. An event is known by its UID, whatever its file is called. Files
/// outside the calendars, somebody else's events, and files that cannot be read are left out.
[[nodiscard]] EventChanges eventChanges(Platform& platform, NSFileManager& before,
                                        NSFileManager& after,
                                        const std::vector<std::string>& paths);

[[nodiscard]] PropertyList::Dictionary changesAsPropertyList(const EventChanges& changes,
                                                             const NSTimeZone& zone);

}  // namespace annivo
