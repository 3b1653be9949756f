// SPDX-License-Identifier: MIT
#include "calendar/ZPKCalendarItems.h"
#include "platform/LoggingSwitch.h"

namespace annivo {

/// A calendar made by the run that was cut off, before its preference was stored.
void ZPKCalendarItems::adoptCalendars() {
  const auto* domain = &platform_.standardUserDefaults().persistentDomainForName(kParentDomain);
  for (const RunMark::Calendar& made : mark_.calendars()) {
    const auto type = calendarTypeOfUIDKey(made.key);
    if (!type || !myStore.calendarWithUID(made.uid)) continue;
    const PropertyList stored = *domain ? PropertyList(**domain)[made.key] : PropertyList();
    if (stored.isEqualToString(made.uid)) continue;
    const auto other = myStore.findCalendar(stored.stringOr(""));
    if (other || other.error().kind != Error::Kind::absent) continue;
    adoptedCalendars_[*type] = made.uid;
    setDefaultUIDForType(made.uid, *type);
  }
}

std::shared_ptr<CalCalendar> ZPKCalendarItems::adoptedCalendar(CalendarType type) {
  const auto found = adoptedCalendars_.find(type);
  return found == adoptedCalendars_.end() ? nullptr : myStore.calendarWithUID(found->second);
}

void ZPKCalendarItems::setThisCalendarWithUIDForType(const std::string& title,
                                                     const std::string& uid, CalendarType type) {
  calendarLocked_ = false;
  const auto found = myStore.findCalendar(uid);
  if (found) {
    thisCalendar_ = *found;
  } else if (found.error().kind != Error::Kind::absent) {
    thisCalendar_ = CalCalendar::unreadable(uid, title);
    mark_.noteFailure();
  } else {
    thisCalendar_ = adoptedCalendar(type);
  }
  if (!thisCalendar_) {
    thisCalendar_ = CalCalendar::calendar();
    thisCalendar_->setTitle(title);
    makeCalendar(type);
  }
  myStore.watch(*thisCalendar_);
  if (!thisCalendar_->isEditable()) {
    platform_.log().write("The calendar " + thisCalendar_->title() +
                          " is uneditable. No events will be added to this calendar.");
    calendarLocked_ = true;
  }
  logOptionally(platform_, "Using calendar ", thisCalendar_->title(), ".");
}

/// Saves the current target, which is new, and stores its UID in the preferences.
void ZPKCalendarItems::makeCalendar(CalendarType type) {
  if (!mark_.beginChanges({{.uid = thisCalendar_->uid(), .key = textsOf(type).uidKey}})) return;
  // The person hears of it only when saving an event fails.
  if (const auto saved = myStore.saveCalendar(thisCalendar_); !saved) {
    platform_.log().write(saved.error().text());
    mark_.noteFailure(saved.error());
  }
  setDefaultUIDForType(thisCalendar_->uid(), type);
}

void ZPKCalendarItems::setDefaultUIDForType(const std::optional<std::string>& uid,
                                            CalendarType type) {
  CFPreferences& preferences = platform_.appPreferences();
  preferences.setAppValue(textsOf(type).uidKey, uid ? PropertyList(*uid) : PropertyList(),
                          kParentDomain);
  if (const auto flushed = preferences.appSynchronize(kParentDomain); !flushed) {
    mark_.noteFailure(flushed.error());  // Logged where it fails.
  }
}

bool ZPKCalendarItems::hasCalendarBeenUpdatedSinceLastRun(const std::string& uid,
                                                          std::optional<Date> lastRun) {
  if (uid.empty()) return false;
  const std::string root = platform_.folders().calendars() + '/';
  const std::string wanted = uid + names::kCalendarSuffix;
  std::optional<std::string> folder;
  NSDirectoryEnumerator walk(platform_.fileManager(), root);
  while (const auto entry = walk.nextObject()) {
    if (entry->ends_with(names::kEvents)) walk.skipDescendents();
    const auto slash = entry->rfind('/');
    const std::string_view name =
        std::string_view(*entry).substr(slash == std::string::npos ? 0 : slash + 1);
    if (name == wanted) folder = root + *entry + '/' + names::kEvents;
  }
  std::optional<Date> modified;
  if (folder) {
    const auto attributes = platform_.fileManager().attributesAtPath(*folder, Links::follow);
    if (attributes) modified = attributes->modificationDate;
  }
  if (loggingIsOn(platform_)) {
    platform_.log().write("Calendar folder updated: " + describe(modified));
  }
  if (!modified) return true;
  return lastRun && *lastRun < *modified;
}

}  // namespace annivo
