// SPDX-License-Identifier: MIT
#include "parent/runs/EventChanges.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "codecs/icalendar/EventFile.h"
#include "parent/runs/OurEvents.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

std::string eventFolder(const CalCalendar& calendar) {
  return calendar.path() + '/' + names::kEvents;
}

CalCalendarStore storeOver(Platform& platform, NSFileManager& files) {
  return {files, platform.clock(), platform.log(), platform.defaultTimeZone(),
          platform.homeDirectory()};
}

bool isEventFile(std::string_view name) {
  return name.ends_with(names::kEventSuffix) && !name.starts_with('.');
}

struct EventFileContent {
  std::string text;
  std::vector<std::shared_ptr<CalEvent>> events;
};

/// An event and the text of its file.
struct FoundEvent {
  std::shared_ptr<CalEvent> event;
  std::string calendar;  ///< title
  std::string text;
};

/// The events of ours that one state has in some files, by calendar folder and UID.
class State {
 public:
  State(Platform& platform, NSFileManager& files, OurEvents& ours)
      : platform_(platform), files_(files), ours_(ours) {
    CalCalendarStore store = storeOver(platform, files);
    for (const auto& calendar : store.calendars()) {
      titles_.emplace(eventFolder(*calendar), calendar->title());
    }
  }

  using Key = std::pair<std::string, std::string>;
  [[nodiscard]] const std::map<Key, FoundEvent>& events() const { return events_; }
  /// The title of the calendar whose folder of events that is; null for another folder.
  [[nodiscard]] const std::string* titleOf(const std::string& folder) const {
    const auto found = titles_.find(folder);
    return found == titles_.end() ? nullptr : &found->second;
  }
  /// What a file holds, nothing of one that is not there; no result where it cannot be read.
  [[nodiscard]] std::optional<EventFileContent> read(const std::string& path) const {
    auto text = files_.contentsAtPath(path, EventFile::kLimit);
    if (!text && text.error().kind == Error::Kind::absent) return EventFileContent();
    auto events = text ? EventFile::events(*text, platform_.defaultTimeZone()) : std::nullopt;
    if (!events) return std::nullopt;
    return EventFileContent{*std::move(text), *std::move(events)};
  }
  void add(const EventFileContent& file, const std::string& folder, const std::string& title) {
    for (const auto& event : file.events) {
      if (!ours_.contains(*event)) continue;
      events_.emplace(Key{folder, event->uid()}, FoundEvent{event, title, file.text});
    }
  }

 private:
  Platform& platform_;
  NSFileManager& files_;
  OurEvents& ours_;
  std::map<std::string, std::string> titles_;
  std::map<Key, FoundEvent> events_;
};

EventChange changeOf(const FoundEvent& found) {
  return {.date = found.event->startDate().value_or(Date()),
          .title = found.event->title().value_or(""),
          .calendar = found.calendar,
          .uid = found.event->uid()};
}

EventChange changeOf(const FoundEvent& found, const CalEvent& before) {
  EventChange change = changeOf(found);
  if (before.title() != found.event->title()) change.oldTitle = before.title().value_or("");
  change.alarmsChanged = before.alarms() != found.event->alarms();
  return change;
}

void sort(std::vector<EventChange>& list) {
  std::sort(list.begin(), list.end(), [](const EventChange& left, const EventChange& right) {
    return std::tie(left.date, left.title, left.uid) < std::tie(right.date, right.title, right.uid);
  });
}

PropertyList listValue(const std::vector<EventChange>& list, const NSTimeZone& zone) {
  PropertyList::Array values;
  for (const EventChange& change : list) {
    PropertyList::Dictionary value{{"date", isoDay(change.date, zone)},
                                   {"title", change.title},
                                   {"calendar", change.calendar},
                                   {"uid", change.uid}};
    if (change.oldTitle) value.emplace("oldTitle", *change.oldTitle);
    if (change.alarmsChanged) value.emplace("alarmsChanged", true);
    values.emplace_back(std::move(value));
  }
  return values;
}

}  // namespace

std::vector<std::string> eventFiles(Platform& platform, NSFileManager& files) {
  std::vector<std::string> paths;
  CalCalendarStore store = storeOver(platform, files);
  for (const auto& calendar : store.calendars()) {
    const std::string folder = eventFolder(*calendar);
    const auto entries = files.contentsOfDirectory(folder);
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      if (isEventFile(entry.name)) paths.push_back(folder + '/' + entry.name);
    }
  }
  return paths;
}

EventChanges eventChanges(Platform& platform, NSFileManager& before, NSFileManager& after,
                          const std::vector<std::string>& paths) {
  OurEvents ours(platform, {&before, &after});
  State old(platform, before, ours);
  State now(platform, after, ours);
  for (const std::string& path : paths) {
    const auto slash = path.rfind('/');
    const std::string folder = path.substr(0, slash);
    const std::string* title = now.titleOf(folder);
    if (!title) title = old.titleOf(folder);
    if (!title || !isEventFile(std::string_view(path).substr(slash + 1))) continue;
    // Where one state of a file is not known, neither is what happened to its events.
    const auto was = old.read(path);
    const auto is = now.read(path);
    if (!was || !is) continue;
    old.add(*was, folder, *title);
    now.add(*is, folder, *title);
  }
  EventChanges changes;
  for (const auto& [key, is] : now.events()) {
    const auto was = old.events().find(key);
    if (was == old.events().end()) {
      changes.added.push_back(changeOf(is));
    } else if (was->second.text != is.text) {
      changes.changed.push_back(changeOf(is, *was->second.event));
    }
  }
  for (const auto& [key, was] : old.events()) {
    if (!now.events().contains(key)) changes.removed.push_back(changeOf(was));
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
