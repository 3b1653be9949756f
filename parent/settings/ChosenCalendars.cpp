// SPDX-License-Identifier: MIT
#include "parent/settings/ChosenCalendars.h"

#include <vector>

#include "base/Unicode.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

std::optional<ChosenCalendar> chosen(AnvCalPrefs& prefs, CalendarType type) {
  const std::string uid = prefs.text(textsOf(type).uidKey);
  if (uid.empty()) return std::nullopt;
  return ChosenCalendar{uid, prefs.text(textsOf(type).titleKey)};
}

using Calendar = std::shared_ptr<CalCalendar>;

/// By UID, else by title, else by title in any case.
Calendar findCalendar(Session& session, const std::string& wanted) {
  CalCalendarStore& store = session.platform.defaultCalendarStore();
  if (auto calendar = store.calendarWithUID(wanted)) return calendar;
  std::vector<Calendar> exact, folded;
  for (const Calendar& calendar : store.calendars()) {
    if (calendar->title() == wanted) exact.push_back(calendar);
    if (caseFolded(calendar->title()) == caseFolded(wanted)) folded.push_back(calendar);
  }
  const std::vector<Calendar>& found = exact.empty() ? folded : exact;
  if (found.empty()) {
    throw Refusal{
        translated("there is no calendar \"{1}\"; \"annivo calendars\" lists those there are, "
                   "\"annivo calendars create\" makes one",
                   wanted)};
  }
  if (found.size() > 1) {
    std::vector<std::string> uids;
    uids.reserve(found.size());
    for (const Calendar& calendar : found) uids.push_back(calendar->uid());
    throw Refusal{translated("several calendars are called \"{1}\"; give one of their UIDs: {2}",
                             wanted, listed(uids))};
  }
  return found.front();
}

void choose(Session& session, DateKind kind, const std::optional<ChosenCalendar>& calendar) {
  AnvCalPrefs prefs(session.platform);
  ChosenCalendars chosen = chosenCalendars(prefs);
  if (includes(kind, CalendarType::birthdays)) chosen.birthdays = calendar;
  if (includes(kind, CalendarType::anniversaries)) chosen.anniversaries = calendar;
  storeChoices(session, calendarPreferences(chosen));
}

}  // namespace

ChosenCalendars chosenCalendars(AnvCalPrefs& prefs) {
  return {chosen(prefs, CalendarType::birthdays), chosen(prefs, CalendarType::anniversaries)};
}

PropertyList::Dictionary calendarPreferences(const ChosenCalendars& chosen) {
  const auto& [birthdays, anniversaries] = chosen;
  PropertyList::Dictionary values{{keys::kBirthCalUID, birthdays ? birthdays->uid : ""},
                                  {keys::kAneeCalUID, anniversaries ? anniversaries->uid : ""},
                                  {keys::kBirthCalTitle, PropertyList()},
                                  {keys::kAneeCalTitle, PropertyList()}};
  if (!birthdays && !anniversaries) return values;
  const std::string title = birthdays ? birthdays->title : anniversaries->title;
  values[keys::kBirthCalTitle] = birthdays ? title : title + " (birthdays)";
  if (!anniversaries) {
    values[keys::kAneeCalTitle] = title + " (anniversaries)";
  } else if (birthdays && birthdays->uid != anniversaries->uid && title == anniversaries->title) {
    values[keys::kAneeCalTitle] = anniversaries->title + " (anniversaries)";
  } else {
    values[keys::kAneeCalTitle] =
        birthdays && birthdays->uid == anniversaries->uid ? title : anniversaries->title;
  }
  return values;
}

std::shared_ptr<CalCalendar> chooseCalendar(Session& session, DateKind kind,
                                            const std::string& calendar) {
  Calendar found = findCalendar(session, calendar);
  if (!found->isEditable()) {
    throw Refusal{
        translated("the calendar \"{1}\" cannot be written; choose another", found->title())};
  }
  choose(session, kind, ChosenCalendar{found->uid(), found->title()});
  return found;
}

void chooseNoCalendar(Session& session, DateKind kind) { choose(session, kind, std::nullopt); }

}  // namespace annivo
