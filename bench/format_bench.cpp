// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>

#include "format/ZPKAnvCCalendarItemsFormat.h"

namespace annivo {
namespace {

/// A platform over a home that lasts as long as the benchmark.
class Bench {
 public:
  Bench() {
    std::string folder = std::filesystem::temp_directory_path() / "annivo-bench-XXXXXX";
    home_ = mkdtemp(folder.data());
    PlatformParts parts;
    parts.home = home_;
    parts.executable = ANNIVO_AGENT;
    parts.environment = [](const char* name) {
      return std::string(std::string_view(name) == "TZ" ? "Europe/Berlin" : "");
    };
    parts.clock = std::make_unique<SystemClock>();
    parts.files = std::make_unique<PosixFileManager>();
    platform = std::make_unique<Platform>(std::move(parts));
    writer = std::make_unique<ZPKCalendarItems>(*platform);
  }
  ~Bench() {
    writer.reset();
    platform.reset();
    std::filesystem::remove_all(home_);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  std::unique_ptr<Platform> platform;
  std::unique_ptr<ZPKCalendarItems> writer;

 private:
  std::string home_;
};

/// Everything that the formatter does for a record but the calls of the writer.
void formatARecord(benchmark::State& state) {
  Bench bench;
  const ZPKAnvCCalendarItemsFormat formatter(
      *bench.platform, *bench.writer, {"First name", "Last name", ":", "ordinal age", "type"});
  ContactDateRecord record;
  record.firstName = "Annabel";
  record.lastName = "Featherstone";
  record.dateType = "birthday";
  record.dateUID = "8A1B7C52-3D3E-4F0A-9C55-2B6E1D7F9A10:ABPerson";
  record.personUID = record.dateUID;
  const Date day{std::chrono::sys_days{std::chrono::year{1980} / 6 / 10} + std::chrono::hours{12}};
  int people = 0;
  for ([[maybe_unused]] auto _ : state) {
    record.thisDate = day + std::chrono::days{++people % 15000};
    benchmark::DoNotOptimize(formatter.eventsForOriginal(record));
  }
}
BENCHMARK(formatARecord)->Name("format a record")->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace annivo
