// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "calendar/ZPKCalendarItems.h"
#include "tests/support/TestHome.h"

namespace annivo {

/// A home in which runs of the calendar writer are made and their results looked at.
class WriterHome {
 public:
  static constexpr const char* kLedgerFolder = "Library/Application Support/Annivo 2";
  static constexpr const char* kLedger = "Library/Application Support/Annivo 2/Annivo 2.xml";
  static constexpr const char* kMark = "Library/Application Support/Annivo 2/Annivo 2.unfinished";

  explicit WriterHome(TestHome::Options options = {}) : home(std::move(options)) {}

  TestHome home;

  void logOn() const { home.ownPreferences({{"doLog", 1}}); }

  /// A calendar as the calendar application makes it.
  void makeCalendar(const std::string& uid, const std::string& title,
                    PropertyList::Dictionary more = {}, const std::string& account = "") const {
    const std::string folder = "Library/Calendars/" + account + uid + ".calendar";
    PropertyList::Dictionary info{{"Key", uid}, {"Title", title}, {"Type", "Local"}};
    more.merge(info);
    home.writeFile(folder + "/Info.plist", xmlPropertyList(std::move(more)));
    home.folder().makeFolder(folder + "/Events");
  }
  [[nodiscard]] static std::string eventFile(const std::string& calendar, const std::string& uid) {
    return "Library/Calendars/" + calendar + ".calendar/Events/" + uid + ".ics";
  }

  /// One run: a writer of its own from start to destruction.
  void run(const std::function<void(ZPKCalendarItems&)>& work) {
    {
      ZPKCalendarItems writer(home.platform());
      work(writer);
    }
    home.endRun();
  }
  /// A run that writes into one calendar and keeps everything.
  void write(const std::string& calendar, const std::vector<ZPKCalendarItems::BasicEvent>& events,
             const std::vector<ZPKCalendarItems::Alarm>& alarms = {}) {
    run([&](ZPKCalendarItems& writer) {
      writer.setThisCalendarWithUIDForType(calendar, calendar, CalendarType::birthdays);
      writer.initAlarmArray();
      for (const auto& alarm : alarms) writer.addAlarm(alarm);
      for (const auto& event : events) writer.addBasicEvent(event);
    });
  }

  /// The events of a calendar as another program finds them, by title.
  std::vector<std::shared_ptr<CalEvent>> events(const std::string& calendar) {
    home.endRun();
    CalCalendarStore& store = home.platform().defaultCalendarStore();
    const auto found = store.calendarWithUID(calendar);
    if (!found) return {};
    auto events = store.events(kEarliestDate, kLatestDate, {found});
    std::sort(events.begin(), events.end(), [](const auto& a, const auto& b) {
      return std::pair(a->title(), a->uid()) < std::pair(b->title(), b->uid());
    });
    home.endRun();
    return events;
  }
  std::vector<std::string> titles(const std::string& calendar) {
    std::vector<std::string> titles;
    for (const auto& event : events(calendar)) titles.push_back(event->title().value_or("(null)"));
    return titles;
  }

  struct Record {
    std::string myUID;
    std::string calendarUID;
    std::optional<Date> date;
    std::string iCalUID;
    friend auto operator<=>(const Record&, const Record&) = default;
  };
  /// The records of the ledger, in the order of their numbers.
  std::vector<Record> ledger() {
    home.endRun();
    std::vector<Record> records = readLedger();
    home.endRun();
    return records;
  }
  /// A ledger file with the given objects' elements in it.
  void writeLedger(const std::string& objects, const std::string& version = "134481920") const {
    home.writeFile(kLedger,
                   "<?xml version=\"1.0\"?>\n<!DOCTYPE database SYSTEM "
                   "\"file:///System/Library/DTDs/CoreData.dtd\">\n\n<database>\n"
                   "    <databaseInfo>\n        <version>" +
                       version +
                       "</version>\n        <UUID>8D6DCE5A-2F1B-4A7C-9B0E-0B4D9C1A77E2</UUID>\n"
                       "        <nextObjectID>105</nextObjectID>\n"
                       "        <metadata></metadata>\n    </databaseInfo>\n" +
                       objects + "</database>\n");
  }

 private:
  std::vector<Record> readLedger() {
    core_data_for_dates_AppDelegate store(home.platform());
    const auto fetched =
        store.managedObjectContext()->executeFetchRequest({.entity = "Event", .predicate = {}});
    std::vector<Record> records;
    if (!fetched) return records;
    for (const NSManagedObject* object : *fetched) {
      const auto* date = object->valueForKey("date").date();
      records.push_back({.myUID = object->valueForKey("myUID").stringOr("(nil)"),
                         .calendarUID = object->valueForKey("calendarUID").stringOr("(nil)"),
                         .date = date ? std::optional(*date) : std::nullopt,
                         .iCalUID = object->valueForKey("iCalUID").stringOr("(nil)")});
    }
    return records;
  }
};

/// An all-day event at noon UTC of a day.
inline ZPKCalendarItems::BasicEvent eventOn(Date date, std::string uid, std::string title) {
  return {.title = std::move(title),
          .withStartDate = date,
          .endDate = date,
          .allDay = true,
          .notes = "",
          .location = std::nullopt,
          .url = "addressbook://P-1",
          .uid = std::move(uid)};
}

inline ZPKCalendarItems::Alarm message(std::int32_t seconds) {
  return {
      .kind = "Message", .emailAddress = "", .relativeTrigger = seconds, .sound = "", .URL = ""};
}

}  // namespace annivo
