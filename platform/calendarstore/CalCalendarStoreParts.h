// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/calendarstore/CalCalendarStore.h"
#include "platform/foundation/HomeFolders.h"

namespace annivo {

/// The calendars that were found, in the order of the walk.
struct CalCalendarStore::Folders {
  std::vector<std::shared_ptr<CalCalendar>> calendars;
  std::size_t lastFound = 0;    ///< where an event was last found: the next is likely there too
  std::optional<Error> unread;  ///< what could not be read, so that calendars may be missing
};

/// Where the events of a calendar lie that are not found by their file's name. No contents are
/// kept.
struct CalCalendarStore::Index {
  struct OfCalendar {
    Indexed looked = Indexed::none;
    std::unordered_map<std::string, std::string> nameByUID;
    std::optional<Error> unread;  ///< a file or folder that could not be looked at
  };
  std::unordered_map<const CalCalendar*, OfCalendar> calendars;
};

inline constexpr std::string_view kEventSuffix = names::kEventSuffix;

inline std::string eventsFolder(const CalCalendar& calendar) {
  return calendar.path() + '/' + names::kEvents;
}

inline Error calendarError(Error::Kind kind, int code, std::string description,
                           std::string reason) {
  return {.kind = kind,
          .domain = "CalCalendarStoreErrorDomain",
          .code = code,
          .description = std::move(description),
          .failureReason = std::move(reason)};
}

}  // namespace annivo
