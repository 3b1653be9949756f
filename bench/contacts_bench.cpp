// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <stdlib.h>

#include <filesystem>

#include "contacts/ZPKAddressBookDates.h"
#include "platform/addressbook/AddressBookStoreWriter.h"

namespace annivo {
namespace {

/// A home whose address book holds so many people, all with a birthday, every second with an
/// anniversary too, and a group for every ten of them, the groups in chains five deep.
class AddressBook {
 public:
  explicit AddressBook(std::size_t people) {
    std::string folder = std::filesystem::temp_directory_path() / "annivo-bench-XXXXXX";
    home_ = mkdtemp(folder.data());
    const std::string book = home_ + "/Library/Application Support/AddressBook";
    std::filesystem::create_directories(book);
    store = book + "/AddressBook-v22.abcddb";
    write(people);
    PlatformParts parts;
    parts.home = home_;
    parts.executable = ANNIVO_AGENT;
    parts.environment = [](const char* name) {
      return std::string(std::string_view(name) == "TZ" ? "Europe/Berlin" : "");
    };
    parts.clock = std::make_unique<SystemClock>();
    parts.files = std::make_unique<PosixFileManager>();
    platform = std::make_unique<Platform>(std::move(parts));
  }
  ~AddressBook() { std::filesystem::remove_all(home_); }
  AddressBook(const AddressBook&) = delete;
  AddressBook& operator=(const AddressBook&) = delete;

  std::string store;
  std::unique_ptr<Platform> platform;

 private:
  void write(std::size_t count) const {
    std::vector<StoredPerson> people(count);
    std::vector<StoredGroup> groups(count / 10);
    for (std::size_t i = 0; i < count; ++i) {
      StoredPerson& person = people[i];
      person.firstName = "First" + std::to_string(i);
      person.lastName = "Family" + std::to_string(i % 700);
      person.birthday = StoredDay{1940 + static_cast<int>(i % 80), 1 + static_cast<int>(i % 12),
                                  1 + static_cast<int>(i % 28)};
      if (i % 2 == 0) person.dates = {{"", "_$!<Anniversary>!$_", StoredDay{2000, 5, 17}}};
      groups[i % groups.size()].people.push_back(i);
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
      groups[i].name = "Group " + std::to_string(i);
      if (i % 5 != 0) groups[i].subgroups = {i - 1};
    }
    PosixFileManager disk;
    const auto written = AddressBookStoreWriter::write(disk, store, StoreGeneration::current,
                                                       people, groups, SystemClock().now());
    if (!written) std::abort();
  }

  std::string home_;
};

void readTheContacts(benchmark::State& state) {
  AddressBook book(static_cast<std::size_t>(state.range(0)));
  std::size_t records = 0;
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    ZPKAddressBookDates dates(*book.platform);
    records = dates.addressBookCustomDates().size() + dates.addressBookBirthDates().size();
    bytes = mallinfo2().uordblks + mallinfo2().hblkhd - before;
  }
  state.counters["records"] = static_cast<double>(records);
  state.counters["bytes a record"] = static_cast<double>(bytes) / static_cast<double>(records);
}
BENCHMARK(readTheContacts)
    ->Name("read the contacts")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

/// What it is held against: the same columns of the same store through SQLite's own shell.
void dumpTheContacts(benchmark::State& state) {
  const AddressBook book(static_cast<std::size_t>(state.range(0)));
  const std::string command =
      "sqlite3 '" + book.store +
      "' 'SELECT Z_PK, ZFIRSTNAME, ZMIDDLENAME, ZLASTNAME, ZNICKNAME, ZORGANIZATION, "
      "ZDISPLAYFLAGS, ZBIRTHDAY, ZUNIQUEID, ZCONTAINERWHERECONTACTISME FROM ZABCDRECORD WHERE "
      "Z_ENT IN (22, 23); "
      "SELECT Z_PK, ZDATE, ZLABEL, ZUNIQUEID, ZOWNER FROM ZABCDCONTACTDATE; "
      "SELECT Z_PK, ZNAME, ZUNIQUEID FROM ZABCDRECORD WHERE Z_ENT IN (19, 20); "
      "SELECT * FROM Z_22PARENTGROUPS; SELECT * FROM Z_18PARENTGROUPS' > /dev/null";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("needs the sqlite3 command");
  }
}
BENCHMARK(dumpTheContacts)
    ->Name("dump the contacts with sqlite3")
    ->Arg(10000)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace annivo
