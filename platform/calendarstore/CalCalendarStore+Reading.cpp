// SPDX-License-Identifier: MIT
#include <functional>
#include <utility>

#include "codecs/icalendar/EventFile.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"

namespace annivo {
namespace {

constexpr std::string_view kSuffix = names::kEventSuffix;

}  // namespace

std::shared_ptr<CalEvent> CalCalendarStore::eventWithUID(const std::string& uid) {
  auto name = pathComponent(uid, "event identifier");
  if (!name) {
    log_.write(name.error().text() + " \"" + uid + "\"");
    return nullptr;
  }
  const std::string file = std::move(*name).append(kSuffix);
  Folders& all = folders();
  const std::size_t count = all.calendars.size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t position = (all.lastFound + i) % count;
    if (auto event = eventInFile(all.calendars[position], file, uid)) {
      all.lastFound = position;
      return event;
    }
  }
  buildIndex();
  const auto found = index_->byUID.find(uid);
  if (found == index_->byUID.end()) return nullptr;
  return eventInFile(found->second.calendar, found->second.name, uid);
}

/// An event file by name. Absent in a folder held open may mean that another program has put a
/// whole folder in its place.
Result<std::string> CalCalendarStore::contentsInFolder(CalCalendar& calendar,
                                                       const std::string& name) const {
  auto contents = openedEvents(calendar)->contentsOfFileItself(name, EventFile::kLimit,
                                                               std::exchange(memory_, {}));
  if (contents || contents.error().kind != Error::Kind::absent) return contents;
  return files_.contentsOfFileItself(eventsFolder(calendar) + "/" + name, EventFile::kLimit);
}

/// Nothing, with a log line, for what is there and is no event file; nothing at all where there is
/// nothing.
std::optional<std::string> CalCalendarStore::contentsOfEventFile(const std::string& path) const {
  return loggedIfUnreadable(files_.contentsOfFileItself(path, EventFile::kLimit));
}

std::optional<std::string> CalCalendarStore::loggedIfUnreadable(
    Result<std::string> contents) const {
  if (contents) return *std::move(contents);
  if (contents.error().kind != Error::Kind::absent) log_.write(contents.error().text());
  return std::nullopt;
}

std::shared_ptr<CalEvent> CalCalendarStore::eventInFile(
    const std::shared_ptr<CalCalendar>& calendar, const std::string& name,
    const std::string& uid) const {
  auto text = ahead_.claim(*openedEvents(*calendar), name);
  if (!text) {
    auto contents = loggedIfUnreadable(contentsInFolder(*calendar, name));
    if (!contents) return nullptr;
    text = memory_ = *std::move(contents);
  }
  const auto events = EventFile::events(*text, zone_);
  if (!events) {
    log_.write("Ignored, as it cannot be parsed: " + eventsFolder(*calendar) + "/" + name);
    return nullptr;
  }
  for (const auto& event : *events) {
    if (event->uid_ != uid) continue;
    event->calendar_ = calendar;
    event->path_ = eventsFolder(*calendar).append("/").append(name);
    return event;
  }
  return nullptr;
}

void CalCalendarStore::readAhead(CalCalendar& calendar, std::vector<std::string> uids) {
  if (!files_.supportsOtherThreads()) return;
  std::erase_if(uids, [](const std::string& uid) { return !pathComponent(uid, "").ok(); });
  for (std::string& uid : uids) uid += kSuffix;
  ahead_.collect();
  ahead_.prefetch(openedEvents(calendar), std::move(uids));
}

const std::shared_ptr<const ReadableFolder>& CalCalendarStore::openedEvents(
    CalCalendar& calendar) const {
  if (!calendar.events_) calendar.events_ = files_.openFolder(eventsFolder(calendar));
  return calendar.events_;
}

void CalCalendarStore::forEachFile(const std::shared_ptr<CalCalendar>& calendar,
                                   const std::function<void(const std::string&)>& visit) const {
  const auto entries = files_.contentsOfDirectory(eventsFolder(*calendar));
  if (!entries) {
    if (entries.error().kind != Error::Kind::absent) log_.write(entries.error().text());
    return;
  }
  for (const DirectoryEntry& entry : *entries) visit(entry.name);
}

void CalCalendarStore::forEachEvent(
    const std::shared_ptr<CalCalendar>& calendar,
    const std::function<void(const std::string&, const std::shared_ptr<CalEvent>&)>& visit) const {
  forEachFile(calendar, [&](const std::string& name) {
    if (name.starts_with('.') || !name.ends_with(kSuffix)) return;
    const std::string path = eventsFolder(*calendar) + "/" + name;
    const auto contents = contentsOfEventFile(path);
    if (!contents) return;
    const auto events = EventFile::events(*contents, zone_);
    if (!events) return log_.write("Ignored, as it cannot be parsed: " + path);
    for (const auto& event : *events) {
      event->calendar_ = calendar;
      event->path_ = path;
      visit(name, event);
    }
  });
}

void CalCalendarStore::buildIndex() {
  if (std::exchange(index_->builtUIDs, true)) return;
  for (const auto& calendar : calendars()) {
    forEachEvent(calendar, [&](const std::string& name, const std::shared_ptr<CalEvent>& event) {
      if (name != event->uid_ + std::string(kSuffix)) {
        index_->byUID.try_emplace(event->uid_, Index::Place{calendar, name});
      }
    });
  }
}

void CalCalendarStore::buildIdentityIndex() {
  if (std::exchange(index_->builtIdentities, true)) return;
  for (const auto& calendar : calendars()) {
    forEachEvent(calendar, [&](const std::string& name, const std::shared_ptr<CalEvent>& event) {
      if (!event->ledgerIdentity()) return;
      index_->byIdentity.emplace(hashOf(*event->ledgerIdentity()), Index::Place{calendar, name});
    });
  }
}

std::shared_ptr<CalEvent> CalCalendarStore::eventWithLedgerIdentity(
    const LedgerIdentity& identity) {
  buildIdentityIndex();
  const auto [first, last] = index_->byIdentity.equal_range(hashOf(identity));
  for (auto found = first; found != last; ++found) {
    const auto& [calendar, name] = found->second;
    std::string path = eventsFolder(*calendar) + "/" + name;
    const auto contents = contentsOfEventFile(path);
    const auto events = contents ? EventFile::events(*contents, zone_) : std::nullopt;
    if (!events) continue;
    for (const auto& event : *events) {
      if (event->ledgerIdentity() != identity) continue;
      event->calendar_ = calendar;
      event->path_ = std::move(path);
      return event;
    }
  }
  return nullptr;
}

std::vector<std::shared_ptr<CalEvent>> CalCalendarStore::eventsWithLedgerIdentity() {
  std::vector<std::shared_ptr<CalEvent>> ours;
  for (const auto& calendar : calendars()) {
    forEachEvent(calendar, [&](const std::string&, const std::shared_ptr<CalEvent>& event) {
      if (event->ledgerIdentity()) ours.push_back(event);
    });
  }
  return ours;
}

std::vector<std::shared_ptr<CalEvent>> CalCalendarStore::events(
    Date start, Date end, const std::vector<std::shared_ptr<CalCalendar>>& calendars) {
  std::vector<std::shared_ptr<CalEvent>> found;
  for (const auto& calendar : calendars) {
    forEachEvent(calendar, [&](const std::string&, const std::shared_ptr<CalEvent>& event) {
      if (!event->start_) return;
      const Date begin = event->start_->date();
      Date after = event->end_->date();
      if (event->allDay_) {
        CivilTime next = zone_.civil(after);
        next.day += 1;
        after = zone_.date(next);
      }
      if (begin <= end && (after > start || begin >= start)) found.push_back(event);
    });
  }
  return found;
}

}  // namespace annivo
