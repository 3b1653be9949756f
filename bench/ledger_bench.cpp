// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/coredata/XMLStore.h"
#include "platform/foundation/Clock.h"

namespace annivo {
namespace {

constexpr const char* kCalendar = "3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690";
constexpr const char* kModel =
    "<plist version=\"1.0\"><dict><key>entities</key><array><dict><key>name</key>"
    "<string>Event</string><key>attributes</key><array>"
    "<dict><key>name</key><string>myUID</string><key>type</key><string>string</string></dict>"
    "<dict><key>name</key><string>calendarUID</string><key>type</key><string>string</string></dict>"
    "<dict><key>name</key><string>date</string><key>type</key><string>date</string></dict>"
    "<dict><key>name</key><string>iCalUID</string><key>type</key><string>string</string></dict>"
    "</array><key>relationships</key><array/></dict></array></dict></plist>";

/// A closed ledger of `count` records in a folder of its own.
class Ledger {
 public:
  explicit Ledger(std::int64_t count) {
    std::string pattern = std::filesystem::temp_directory_path() / "annivo-ledger-XXXXXX";
    folder_ = ::mkdtemp(pattern.data());
    (void)files_.writeAtomically(folder_ + "/Ledger.mom", kModel).ok();
    model_ = std::make_unique<NSManagedObjectModel>(
        *NSManagedObjectModel::initWithContentsOfURL(files_, folder_ + "/Ledger.mom"));
    const auto store = open();
    for (std::int64_t i = 0; i < count; ++i) insert(*store, uid(i));
    (void)store->save().ok();
    (void)store->close().ok();
  }
  ~Ledger() { std::filesystem::remove_all(folder_); }
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  std::unique_ptr<NSPersistentStore> open() {
    return *openXMLStore(*model_, {files_, clock_, NSTimeZone()}, folder_ + "/Annivo 2.xml");
  }
  NSManagedObject& insert(NSPersistentStore& store, const std::string& myUID) {
    NSManagedObject& object = *store.insert(*model_->entityForName("Event"));
    set(store, object, "myUID", myUID);
    set(store, object, "calendarUID", kCalendar);
    set(store, object, "date", kReferenceDate);
    set(store, object, "iCalUID", "7A54C1E2-3C6D-4E8F-A5B7-" + myUID.substr(24));
    return object;
  }
  static void set(NSPersistentStore& store, NSManagedObject& object, const char* key,
                  PropertyList value) {
    store.set(object, key, value);
    object.setValueForKey(std::move(value), key);
  }
  static std::string uid(std::int64_t number) {
    const std::string digits = std::to_string(100'000'000'000 + number);
    return "A94F2E07-5B7C-4F0A-8E55-" + digits;
  }

 private:
  PosixFileManager files_;
  SystemClock clock_;
  std::string folder_;
  std::unique_ptr<NSManagedObjectModel> model_;
};

/// A save of one change; the two sizes must cost the same.
void saveOneChange(benchmark::State& state) {
  Ledger ledger(state.range(0));
  const auto store = ledger.open();
  NSManagedObject& object = ledger.insert(*store, Ledger::uid(0));
  std::int64_t number = 0;
  for (auto _ : state) {
    Ledger::set(*store, object, "iCalUID", Ledger::uid(++number));
    (void)store->save().ok();
  }
}
BENCHMARK(saveOneChange)->Arg(100)->Arg(100'000);

void load(benchmark::State& state) {
  Ledger ledger(state.range(0));
  for (auto _ : state) {
    const auto store = ledger.open();
    (void)store->load().ok();
    benchmark::DoNotOptimize(store.get());
  }
}
BENCHMARK(load)->Arg(4'500)->Arg(45'000)->Unit(benchmark::kMillisecond);

/// What a run does for each occurrence.
void fetchByIdentity(benchmark::State& state) {
  Ledger ledger(state.range(0));
  const auto store = ledger.open();
  const auto format =
      NSPredicateFormat::parse("(myUID LIKE[c] %@) AND (calendarUID LIKE[c] %@) AND (date == %@)");
  std::int64_t number = 0;
  for (auto _ : state) {
    const auto found = store->execute({"Event", format.with({Ledger::uid(++number % state.range(0)),
                                                             kCalendar, kReferenceDate})});
    if (!found || found->size() != 1) state.SkipWithError("not found");
  }
}
BENCHMARK(fetchByIdentity)->Arg(100)->Arg(100'000);

/// Bringing one change into the file, which rewrites it.
void closeAfterOneChange(benchmark::State& state) {
  Ledger ledger(state.range(0));
  std::int64_t number = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const auto store = ledger.open();
    const auto all = store->execute({"Event", {}});
    Ledger::set(*store, *all->front(), "iCalUID", Ledger::uid(++number));
    (void)store->save().ok();
    state.ResumeTiming();
    if (!store->close()) state.SkipWithError("not closed");
  }
}
BENCHMARK(closeAfterOneChange)->Arg(45'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace annivo
