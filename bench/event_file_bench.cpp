// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "codecs/icalendar/CalEvent.h"
#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventLines.h"
#include "platform/calendarstore/CalCalendarStore.h"

namespace annivo {
namespace {

constexpr const char* kTitle = "Grace Hopper's birthday (80)";

const Date kDay = kReferenceDate + std::chrono::hours{24 * 9000};

/// An event as the program writes it, with one alarm.
std::shared_ptr<CalEvent> newEvent() {
  auto event = CalEvent::event();
  event->setTitle(kTitle);
  event->setStartDate(kDay);
  event->setEndDate(kDay);
  event->setIsAllDay(true);
  event->setUrl("addressbook://6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11:ABPerson");
  event->addAlarms({{.relativeTrigger = -86400.0 + 9 * 3600}});
  event->setLedgerIdentity({.myUID = "A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34",
                            .calendarUID = "3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690",
                            .date = kDay});
  return event;
}

std::string eventText() { return EventFile::newText(*newEvent(), kDay, NSTimeZone()); }

/// What an unchanged event costs a run beyond the reading of its file.
void parseAndCompareAnEventFile(benchmark::State& state) {
  const std::string text = eventText();
  const NSTimeZone zone;
  const CalAlarm alarm{.relativeTrigger = -86400.0 + 9 * 3600};
  for (auto _ : state) {
    const auto events = EventFile::events(text, zone);
    bool same = events->front()->title() == kTitle && events->front()->alarms().front() == alarm;
    benchmark::DoNotOptimize(same);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(parseAndCompareAnEventFile);

void scanTheLinesOfAnEventFile(benchmark::State& state) {
  const std::string text = eventText();
  for (auto _ : state) {
    EventLines lines(text);
    std::size_t count = 0;
    while (lines.next()) ++count;
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(scanTheLinesOfAnEventFile);

void writeANewEventFile(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(eventText());
}
BENCHMARK(writeANewEventFile);

void retitleAnEventFile(benchmark::State& state) {
  const std::string text = eventText();
  const NSTimeZone zone;
  const auto event = EventFile::events(text, zone)->front();
  event->setTitle("Grace Hopper's birthday (81)");
  for (auto _ : state) {
    benchmark::DoNotOptimize(EventFile::edited(text, *event, kReferenceDate, zone));
  }
}
BENCHMARK(retitleAnEventFile);

/// A calendar of so many events under the temporary folder.
class CalendarFolder {
 public:
  static constexpr int kEvents = 2000;
  CalendarFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "annivo-bench-XXXXXX";
    home = ::mkdtemp(pattern.data());
    CalCalendarStore store(files, clock, log, zone, home);
    const auto calendar = CalCalendar::calendar();
    if (!store.saveCalendar(calendar)) std::abort();
    folder = calendar->path() + "/Events/";
    for (int i = 0; i < kEvents; ++i) {
      const auto event = newEvent();
      event->setCalendar(calendar);
      if (!store.saveEvent(*event, CalSpan::thisEvent)) std::abort();
      uids.push_back(event->uid());
    }
  }
  ~CalendarFolder() { std::filesystem::remove_all(home); }
  CalendarFolder(const CalendarFolder&) = delete;
  CalendarFolder& operator=(const CalendarFolder&) = delete;

  class Silence final : public Log {
   public:
    void write(std::string_view) override {}
  };
  PosixFileManager files;
  SystemClock clock;
  Silence log;
  NSTimeZone zone{"Europe/Berlin"};
  std::string home;
  std::string folder;
  std::vector<std::string> uids;
};

/// The floor under the look-up of an event: its file opened, read and closed.
void readAnEventFileOnly(benchmark::State& state) {
  const CalendarFolder calendar;
  std::size_t i = 0;
  for (auto _ : state) {
    const std::string path = calendar.folder + calendar.uids[i++ % calendar.uids.size()] + ".ics";
    benchmark::DoNotOptimize(calendar.files.contentsAtPath(path, NSFileManager::kDefaultLimit));
  }
}
BENCHMARK(readAnEventFileOnly);

void lookUpAnEventByUID(benchmark::State& state) {
  CalendarFolder calendar;
  CalCalendarStore store(calendar.files, calendar.clock, calendar.log, calendar.zone,
                         calendar.home);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(store.eventWithUID(calendar.uids[i++ % calendar.uids.size()]));
  }
}
BENCHMARK(lookUpAnEventByUID);

/// Time must grow with the length only.
void parseALongLine(benchmark::State& state) {
  const auto length = static_cast<std::size_t>(state.range(0));
  std::string text = "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:1\r\nDESCRIPTION:";
  for (std::size_t i = 0; i < length; i += 74) text += std::string(74, 'x') + "\r\n ";
  text += "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  const NSTimeZone zone;
  for (auto _ : state) benchmark::DoNotOptimize(EventFile::events(text, zone));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(parseALongLine)->RangeMultiplier(10)->Range(10'000, 10'000'000);

}  // namespace
}  // namespace annivo
