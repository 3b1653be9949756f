// SPDX-License-Identifier: MIT
#include "parent/runs/EventChanges.h"

#include <algorithm>
#include <tuple>

#include "parent/settings/Session.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

using Event = std::shared_ptr<CalEvent>;

/// The UID that the name of an event file gives; "" for another file.
std::string uidOf(const std::string& path) {
  constexpr std::string_view kSuffix = ".ics";
  const std::string name = path.substr(path.rfind('/') + 1);
  if (!name.ends_with(kSuffix) || name.starts_with('.')) return "";
  return name.substr(0, name.size() - kSuffix.size());
}

Event ourEvent(CalCalendarStore& store, NSFileManager& files, const std::string& path) {
  if (!files.fileExistsAtPath(path)) return nullptr;
  Event event = store.eventWithUID(uidOf(path));
  return event && event->ledgerIdentity() ? event : nullptr;
}

EventChange changeOf(const CalEvent& event, std::string what = {}) {
  return {.date = event.startDate().value_or(Date()),
          .title = event.title().value_or(""),
          .calendar = event.calendar() ? event.calendar()->title() : "",
          .uid = event.uid(),
          .what = std::move(what)};
}

std::string differences(const CalEvent& before, const CalEvent& after) {
  std::string what;
  if (before.title() != after.title()) what = "was \"" + before.title().value_or("") + '"';
  if (before.alarms() != after.alarms()) what += what.empty() ? "alarms" : ", alarms";
  return what.empty() ? "details" : what;
}

void sort(std::vector<EventChange>& list) {
  std::sort(list.begin(), list.end(), [](const EventChange& left, const EventChange& right) {
    return std::tie(left.date, left.title, left.uid) < std::tie(right.date, right.title, right.uid);
  });
}

PropertyList listValue(const std::vector<EventChange>& list, const NSTimeZone& zone) {
  PropertyList::Array values;
  for (const EventChange& change : list) {
    PropertyList::Dictionary value{{"date", shownDay(change.date, zone)},
                                   {"title", change.title},
                                   {"calendar", change.calendar},
                                   {"uid", change.uid}};
    if (!change.what.empty()) value.emplace("what", change.what);
    values.emplace_back(std::move(value));
  }
  return values;
}

}  // namespace

EventChanges eventChanges(Platform& platform, NSFileManager& before, NSFileManager& after,
                          const std::vector<std::string>& paths) {
  const auto storeOver = [&](NSFileManager& files) {
    return CalCalendarStore(files, platform.clock(), platform.log(), platform.defaultTimeZone(),
                            platform.homeDirectory());
  };
  CalCalendarStore old = storeOver(before);
  CalCalendarStore now = storeOver(after);
  EventChanges changes;
  for (const std::string& path : paths) {
    if (uidOf(path).empty()) continue;
    const Event was = ourEvent(old, before, path);
    const Event is = ourEvent(now, after, path);
    if (was && is) {
      changes.changed.push_back(changeOf(*is, differences(*was, *is)));
    } else if (is) {
      changes.added.push_back(changeOf(*is));
    } else if (was) {
      changes.removed.push_back(changeOf(*was));
    }
  }
  for (auto* list : {&changes.added, &changes.changed, &changes.removed}) sort(*list);
  return changes;
}

PropertyList::Dictionary changesAsPropertyList(const EventChanges& changes,
                                               const NSTimeZone& zone) {
  return {{"added", listValue(changes.added, zone)},
          {"changed", listValue(changes.changed, zone)},
          {"removed", listValue(changes.removed, zone)}};
}

}  // namespace annivo
