// SPDX-License-Identifier: MIT
#include <algorithm>
#include <functional>
#include <utility>

#include "codecs/icalendar/EventFile.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"

namespace annivo {
namespace {

constexpr int kCannotBeParsed = 1027;

/// Whether a name is of the form of those that we give: an upper-case UUID.
bool isNamedLikeOurs(std::string_view stem) {
  constexpr std::string_view form = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
  if (stem.size() != form.size()) return false;
  return std::equal(stem.begin(), stem.end(), form.begin(), [](char c, char expected) {
    return expected == 'X' ? (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') : c == expected;
  });
}

}  // namespace

/// An event file by name. Absent in a folder held open may mean that another program has put a
/// whole folder in its place.
Result<std::string> CalCalendarStore::contentsInFolder(CalCalendar& calendar,
                                                       const std::string& name) const {
  auto contents = openedEvents(calendar)->contentsOfFileItself(name, EventFile::kLimit,
                                                               std::exchange(memory_, {}));
  if (contents || contents.error().kind != Error::Kind::absent) return contents;
  return files_.contentsOfFileItself(eventsFolder(calendar) + "/" + name, EventFile::kLimit);
}

Result<std::vector<std::shared_ptr<CalEvent>>> CalCalendarStore::eventsInFile(
    const Calendar& calendar, const std::string& name) const {
  auto prefetched = ahead_.claim(*openedEvents(*calendar), name);
  if (!prefetched) {
    auto contents = contentsInFolder(*calendar, name);
    if (!contents) return unusable(eventsFolder(*calendar) + "/" + name, contents.error());
    prefetched = memory_ = *std::move(contents);
  }
  auto events = EventFile::events(*prefetched, zone_);
  if (!events) return unusable(eventsFolder(*calendar) + "/" + name, std::nullopt);
  for (const Event& event : *events) {
    event->calendar_ = calendar;
    event->path_ = eventsFolder(*calendar).append("/").append(name);
  }
  return *std::move(events);
}

/// What is to be said, and is logged, of an event file that could not be read (`failure`) or
/// parsed. Nothing is logged of one that is absent.
Error CalCalendarStore::unusable(const std::string& path,
                                 const std::optional<Error>& failure) const {
  if (failure && failure->kind == Error::Kind::absent) return *failure;
  constexpr auto kBeingWritten = std::chrono::hours{24};
  const auto attributes = files_.attributesAtPath(path, Links::doNotFollow);
  const bool isOurs = attributes && attributes->type == FileType::regular &&
                      (!failure || attributes->size > EventFile::kLimit);
  const bool isOld = isOurs && clock_.now() - attributes->modificationDate >= kBeingWritten;
  Error error = failure.value_or(calendarError(Error::Kind::malformed, kCannotBeParsed,
                                               "Ignored, as it cannot be parsed: " + path, ""));
  error.kind = isOld ? Error::Kind::malformed : Error::Kind::unreadable;
  log_.write(failure ? error.text() : error.description);
  return error;
}

void CalCalendarStore::readAhead(CalCalendar& calendar, std::vector<std::string> uids) {
  if (!files_.supportsOtherThreads()) return;
  std::erase_if(uids, [](const std::string& uid) { return !pathComponent(uid, "").ok(); });
  for (std::string& uid : uids) uid += kEventSuffix;
  ahead_.collect();
  ahead_.prefetch(openedEvents(calendar), std::move(uids));
}

const std::shared_ptr<const ReadableFolder>& CalCalendarStore::openedEvents(
    CalCalendar& calendar) const {
  if (!calendar.events_) calendar.events_ = files_.openFolder(eventsFolder(calendar));
  return calendar.events_;
}

std::optional<Error> CalCalendarStore::forEachEventFile(
    const Calendar& calendar,
    const std::function<void(const std::string& name, const std::string& stem)>& visit) const {
  const auto entries = files_.contentsOfDirectory(eventsFolder(*calendar));
  if (!entries) {
    if (entries.error().kind == Error::Kind::absent) return std::nullopt;
    log_.write(entries.error().text());
    return entries.error();
  }
  for (const DirectoryEntry& entry : *entries) {
    if (entry.name.starts_with('.') || !entry.name.ends_with(kEventSuffix)) continue;
    if (entry.type != FileType::regular) continue;
    visit(entry.name, entry.name.substr(0, entry.name.size() - kEventSuffix.size()));
  }
  return std::nullopt;
}

CalCalendarStore::OwnEvents CalCalendarStore::ownEvents(
    const std::vector<std::shared_ptr<CalCalendar>>& calendars,
    const std::function<bool(const std::string& uid)>& isKnown) {
  OwnEvents own;
  for (const auto& calendar : calendars) {
    if (calendar->isOthers()) continue;
    const auto unread =
        forEachEventFile(calendar, [&](const std::string& name, const std::string& stem) {
          if (isKnown && isKnown(stem)) return;
          const auto events = eventsInFile(calendar, name);
          if (!events && isNamedLikeOurs(stem) && events.error().kind == Error::Kind::unreadable) {
            own.complete = false;
          }
          if (!events) return;
          for (const auto& event : *events) {
            if (event->ledgerIdentity()) own.events.push_back(event);
          }
        });
    if (unread) own.complete = false;
  }
  if (folders().unread) own.complete = false;
  return own;
}

std::vector<std::shared_ptr<CalEvent>> CalCalendarStore::events(
    Date start, Date end, const std::vector<std::shared_ptr<CalCalendar>>& calendars) {
  std::vector<std::shared_ptr<CalEvent>> found;
  for (const auto& calendar : calendars) {
    forEachEventFile(calendar, [&](const std::string& name, const std::string&) {
      const auto events = eventsInFile(calendar, name);
      if (!events) return;
      for (const Event& event : *events) {
        if (!event->start_) continue;
        const Date begin = event->start_->date();
        Date after = event->end_->date();
        if (event->allDay_) {
          CivilTime next = zone_.civil(after);
          next.day += 1;
          after = zone_.date(next);
        }
        if (begin <= end && (after > start || begin >= start)) found.push_back(event);
      }
    });
  }
  return found;
}

}  // namespace annivo
