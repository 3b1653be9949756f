// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/calendarstore/CalCalendarStore.h"
#include "platform/foundation/HomeFolders.h"

namespace annivo {

/// The calendars that were found, in the order of the walk.
struct CalCalendarStore::Folders {
  std::vector<std::shared_ptr<CalCalendar>> calendars;
  std::size_t lastFound = 0;  ///< where an event was last found: the next is likely there too
};

/// Where events lie that are not found by their file's name. No contents are kept.
struct CalCalendarStore::Index {
  struct Place {
    std::shared_ptr<CalCalendar> calendar;
    std::string name;
  };
  bool builtUIDs = false;
  std::unordered_map<std::string, Place> byUID;  ///< only of files not named after their event
  bool builtIdentities = false;
  std::unordered_multimap<std::size_t, Place> byIdentity;  ///< by hashOf
};

inline std::size_t hashOf(const LedgerIdentity& identity) {
  const std::hash<std::string> hash;
  const auto microseconds = static_cast<std::size_t>(identity.date.time_since_epoch().count());
  return (hash(identity.myUID) * 31 + hash(identity.calendarUID)) * 31 + microseconds;
}

inline std::string eventsFolder(const CalCalendar& calendar) {
  return calendar.path() + '/' + names::kEvents;
}

}  // namespace annivo
