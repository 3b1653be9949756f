// SPDX-License-Identifier: MIT
//
// Writes and reads events through the calendar store, for tests that hold its files against other
// programs.
//
//   event-tool make HOME COUNT SEED      a calendar with COUNT events; prints what they mean
//   event-tool read HOME                 prints the events of ours that the store recognises
//   event-tool find HOME UID             prints the event with that UID
//   event-tool retitle HOME UID TITLE    changes a title
//   event-tool remove HOME UID           removes an event
//
// Events are printed as JSON, one a line.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "codecs/icalendar/ContentText.h"
#include "codecs/icalendar/ContentValues.h"
#include "platform/calendarstore/CalCalendarStore.h"

namespace annivo {
namespace {

class ErrorLog final : public Log {
 public:
  void write(std::string_view text) override { std::cerr << text << "\n"; }
};

const NSTimeZone kZone("Europe/Berlin");

std::string json(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || c == '"' || c == '\\') {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", byte);
      out += escape;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string json(const std::optional<std::string>& text) { return text ? json(*text) : "null"; }

void print(const CalEvent& event) {
  const std::string title = event.title().value_or("");
  std::cout << "{\"uid\": " << json(event.uid())
            << ", \"title\": " << json(unescapedText(escapedText(title)))
            << ", \"titleBytes\": " << json(percentEncoded(title, ""))
            << ", \"start\": " << json(dayText(dayOf(event.startDate().value(), kZone)))
            << ", \"after\": "
            << json(dayText(dayOf(event.endDate().value(), kZone) + std::chrono::days{1}))
            << ", \"url\": " << json(event.url()) << ", \"alarms\": [";
  const char* separator = "";
  for (const CalAlarm& alarm : event.alarms()) {
    std::cout << separator << "{\"trigger\": ";
    if (alarm.relativeTrigger) {
      std::cout << static_cast<long long>(*alarm.relativeTrigger);
    } else {
      std::cout << "null";
    }
    std::cout << ", \"email\": " << json(alarm.emailAddress) << ", \"url\": " << json(alarm.url)
              << ", \"sound\": " << json(alarm.sound) << "}";
    separator = ", ";
  }
  std::cout << "], \"identity\": ";
  if (event.ledgerIdentity()) {
    std::cout << json(identityText(*event.ledgerIdentity(), event.uid()));
  } else {
    std::cout << "null";
  }
  std::cout << "}\n";
}

[[noreturn]] void fail(const std::string& why) {
  std::cerr << why << "\n";
  std::exit(1);
}

void check(const Result<void>& result) {
  if (!result) fail(result.error().text());
}

CalAlarm alarm(std::mt19937& random) {
  CalAlarm alarm{.relativeTrigger = static_cast<double>(random() % 700000) - 600000};
  switch (random() % 4) {
    case 0:
      alarm.emailAddress = "ada+" + std::to_string(random()) + "@example.org";
      break;
    case 1:
      alarm.url = fileURLWithPath("/home/\xC3\xA4 b/" + std::to_string(random()));
      break;
    case 2:
      alarm.sound = "Basso";
      break;
    default:
      break;
  }
  return alarm;
}

std::string title(std::mt19937& random) {
  static const std::vector<std::string> pieces = {"Ada",
                                                  " ",
                                                  "Lovelace",
                                                  ", ",
                                                  "; ",
                                                  "\\ ",
                                                  "\"",
                                                  ":",
                                                  "\n",
                                                  "\xC3\xA4",
                                                  "\xE2\x82\xAC",
                                                  "\xF0\x9F\x8E\x82",
                                                  "END:VEVENT",
                                                  "\xE2\x80\xA8",
                                                  "\x0B",
                                                  "(80)",
                                                  "%41",
                                                  "\t",
                                                  "'"};
  std::string text = "T";
  for (std::size_t i = random() % 40; i > 0; --i) text += pieces[random() % pieces.size()];
  return text + "t";
}

void make(CalCalendarStore& store, int count, unsigned seed) {
  const auto calendar = CalCalendar::calendar();
  calendar->setTitle("Anniversary");
  check(store.saveCalendar(calendar));
  std::mt19937 random(seed);
  for (int i = 0; i < count; ++i) {
    const auto event = CalEvent::event();
    event->setTitle(title(random));
    event->setCalendar(calendar);
    const Date day =
        kZone.date({.year = 2026, .month = 1, .day = 1 + static_cast<int>(random() % 365)});
    event->setStartDate(day);
    event->setEndDate(day);
    event->setIsAllDay(true);
    event->setUrl("addressbook://" + std::to_string(random()) + ":ABPerson");
    std::vector<CalAlarm> alarms;
    for (std::size_t n = random() % 4; n > 0; --n) alarms.push_back(alarm(random));
    event->addAlarms(alarms);
    event->setLedgerIdentity({.myUID = title(random), .calendarUID = calendar->uid(), .date = day});
    check(store.saveEvent(*event, CalSpan::thisEvent));
    print(*event);
  }
}

std::shared_ptr<CalEvent> find(CalCalendarStore& store, const std::string& uid) {
  auto event = store.eventWithUID(uid);
  if (!event) fail("There is no event " + uid);
  return event;
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 2) fail("usage: event-tool make|read|find|retitle|remove HOME ...");
  PosixFileManager files;
  const SystemClock clock;
  ErrorLog log;
  CalCalendarStore store(files, clock, log, kZone, arguments[1]);
  const std::string& command = arguments[0];
  if (command == "make" && arguments.size() == 4) {
    make(store, std::stoi(arguments[2]), static_cast<unsigned>(std::stoul(arguments[3])));
  } else if (command == "read" && arguments.size() == 2) {
    for (const auto& event : store.ownEvents(store.calendars()).events) print(*event);
  } else if (command == "find" && arguments.size() == 3) {
    print(*find(store, arguments[2]));
  } else if (command == "retitle" && arguments.size() == 4) {
    const auto event = find(store, arguments[2]);
    event->setTitle(arguments[3]);
    check(store.saveEvent(*event, CalSpan::thisEvent));
  } else if (command == "remove" && arguments.size() == 3) {
    check(store.removeEvent(*find(store, arguments[2]), CalSpan::thisEvent));
  } else {
    fail("unknown command " + command);
  }
  return 0;
}

}  // namespace
}  // namespace annivo

int main(int argc, char** argv) { return annivo::run({argv + 1, argv + argc}); }
