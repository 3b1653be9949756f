// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "platform/calendarstore/CalEvent.h"
#include "platform/calendarstore/EventFile.h"
#include "platform/calendarstore/EventLines.h"

namespace annivo {
namespace {

constexpr const char* kTitle = "Grace Hopper's birthday (80)";

/// An event as the program writes it, with one alarm.
std::string eventText() {
  const NSTimeZone zone;
  const Date day = kReferenceDate + std::chrono::hours{24 * 9000};
  const auto event = CalEvent::event();
  event->setTitle(kTitle);
  event->setStartDate(day);
  event->setEndDate(day);
  event->setIsAllDay(true);
  event->setUrl("addressbook://6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11:ABPerson");
  event->addAlarms({{.relativeTrigger = -86400.0 + 9 * 3600}});
  event->setLedgerIdentity({.myUID = "A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34",
                            .calendarUID = "3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690",
                            .date = day});
  return EventFile::newText(*event, day, zone);
}

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
