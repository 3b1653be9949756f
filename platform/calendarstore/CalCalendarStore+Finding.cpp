// SPDX-License-Identifier: MIT
#include <utility>

#include "codecs/icalendar/EventUID.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"

namespace annivo {
namespace {

Error absentEvent() {
  return calendarError(Error::Kind::absent, 0, "The event does not exist.", "");
}

}  // namespace

Result<std::shared_ptr<CalEvent>> CalCalendarStore::findEvent(const std::string& uid,
                                                              const LedgerIdentity& identity) {
  const auto name = pathComponent(uid, "event identifier");
  if (!name) {
    log_.write(name.error().text() + " \"" + uid + "\"");
    return absentEvent();
  }
  const auto own = findCalendar(identity.calendarUID);
  if (own) {
    auto event = eventInFile(*own, *name + std::string(kEventSuffix), uid);
    if (event || event.error().kind != Error::Kind::absent) return event;
  }
  auto moved = findMoved(uid, own ? *own : nullptr, &identity);
  const bool isAbsent = !moved && moved.error().kind == Error::Kind::absent;
  if (isAbsent && !own && own.error().kind != Error::Kind::absent) return own.error();
  return moved;
}

std::shared_ptr<CalEvent> CalCalendarStore::eventWithUID(const std::string& uid) {
  if (const auto name = pathComponent(uid, "event identifier"); !name) {
    log_.write(name.error().text() + " \"" + uid + "\"");
    return nullptr;
  }
  auto event = findMoved(uid, nullptr, nullptr);
  return event ? *std::move(event) : nullptr;
}

/// An event that is not in the file of its name in its own calendar (null: there is none): in other
/// files of that calendar, or in other calendars where it carries the identity (null: in any case).
Result<std::shared_ptr<CalEvent>> CalCalendarStore::findMoved(const std::string& uid,
                                                              const Calendar& own,
                                                              const LedgerIdentity* identity) {
  std::optional<Error> unread;
  const auto isIt = [&](const Result<Event>& event) {
    if (event) return !identity || (*event)->ledgerIdentity() == *identity;
    const bool isThere = event.error().kind != Error::Kind::absent;
    if (isThere && event.error().kind != Error::Kind::malformed) unread = event.error();
    return false;
  };
  if (own) {
    buildIndex(own, Indexed::notNamedByUs);
    if (auto event = findIndexed(own, uid)) return event;
  }
  Folders& all = folders();
  std::vector<Calendar> others;
  for (std::size_t i = 0; i < all.calendars.size(); ++i) {
    const std::size_t position = (all.lastFound + i) % all.calendars.size();
    const Calendar& calendar = all.calendars[position];
    if (calendar == own || (identity && calendar->isOthers())) continue;
    others.push_back(calendar);
    auto event = eventInFile(calendar, uid + std::string(kEventSuffix), uid);
    if (!isIt(event)) continue;
    all.lastFound = position;
    return event;
  }
  if (own) others.insert(others.begin(), own);
  for (const Calendar& calendar : others) {
    buildIndex(calendar, Indexed::all);
    auto event = findIndexed(calendar, uid);
    if (event ? calendar == own || isIt(event) : isIt(event)) return event;
  }
  if (unread) return *unread;
  if (all.unread) return *all.unread;
  return absentEvent();
}

/// Unreadable when it may be in a file that could not be looked at.
Result<std::shared_ptr<CalEvent>> CalCalendarStore::findIndexed(const Calendar& calendar,
                                                                const std::string& uid) {
  const Index::OfCalendar& index = index_->calendars[calendar.get()];
  const auto found = index.nameByUID.find(uid);
  if (found != index.nameByUID.end()) return eventInFile(calendar, found->second, uid);
  if (index.unread) return *index.unread;
  return absentEvent();
}

Result<std::shared_ptr<CalEvent>> CalCalendarStore::eventInFile(const Calendar& calendar,
                                                                const std::string& name,
                                                                const std::string& uid) const {
  auto events = eventsInFile(calendar, name);
  if (!events) return events.error();
  for (Event& event : *events) {
    if (event->uid_ == uid) return std::move(event);
  }
  return absentEvent();
}

void CalCalendarStore::buildIndex(const Calendar& calendar, Indexed files) {
  Index::OfCalendar& index = index_->calendars[calendar.get()];
  if (index.looked >= files) return;
  const bool othersAreDone = index.looked == Indexed::notNamedByUs;
  index.looked = files;
  const auto unread =
      forEachEventFile(calendar, [&](const std::string& name, const std::string& stem) {
        const bool isOurs = isOurEventUID(stem);
        if (isOurs ? files == Indexed::notNamedByUs : othersAreDone) return;
        const auto events = eventsInFile(calendar, name);
        if (!events && events.error().kind == Error::Kind::unreadable)
          index.unread = events.error();
        if (!events) return;
        for (const Event& event : *events) {
          if (event->uid_ != stem) index.nameByUID.try_emplace(event->uid_, name);
        }
      });
  if (unread) index.unread = unread;
}

}  // namespace annivo
