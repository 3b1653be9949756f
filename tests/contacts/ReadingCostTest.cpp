// SPDX-License-Identifier: MIT
#include <malloc.h>

#include <algorithm>

#include "contacts/ZPKAddressBookDates.h"
#include "tests/contacts/AddressBookHome.h"
#include "tests/support/SQLiteWork.h"
#include "tests/support/SampleHome.h"

#if defined(__SANITIZE_ADDRESS__)
extern "C" std::size_t
__sanitizer_get_current_allocated_bytes();  // not every compiler has a header
#endif

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

std::size_t allocatedBytes() {
#if defined(__SANITIZE_ADDRESS__)
  return __sanitizer_get_current_allocated_bytes();
#else
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
#endif
}

/// What reading all contacts of one store takes.
struct Cost {
  Texts statements;  ///< those that read objects or the links between them
  std::uint64_t steps = 0;
  std::size_t records = 0;
  std::size_t bytes = 0;  ///< held by what was read
};

Cost costOfReading(std::size_t people) {
  AddressBookHome home;
  const SampleStore store = generatedStore(people, 1);
  home.writeStore(store.people, store.groups);
  Platform& platform = home.platform();
  const SQLiteWork work;
  const std::size_t before = allocatedBytes();
  ZPKAddressBookDates dates(platform);
  Cost cost;
  cost.records = dates.addressBookBirthDates().size() + dates.addressBookCustomDates().size();
  cost.bytes = allocatedBytes() - before;
  cost.steps = work.steps();
  for (const std::string& statement : work.statements()) {
    if (statement.find("FROM \"Z") != std::string::npos) cost.statements.push_back(statement);
  }
  return cost;
}

std::string tableOf(const std::string& statement) {
  const std::size_t start = statement.find("FROM \"") + 6;
  return statement.substr(start, statement.find('"', start) - start);
}

TEST(ReadingTheContacts, AsksOneQueryForEachEntityAndJoinTableHoweverManyPeople) {
  const Cost few = costOfReading(10);
  Texts tables;
  for (const std::string& statement : few.statements) tables.push_back(tableOf(statement));
  std::sort(tables.begin(), tables.end());
  // Groups, people and containers lie in one table.
  EXPECT_EQ(tables, (Texts{"ZABCDCONTACTDATE", "ZABCDRECORD", "ZABCDRECORD", "ZABCDRECORD",
                           "Z_18PARENTGROUPS", "Z_22PARENTGROUPS"}));
  EXPECT_EQ(costOfReading(1000).statements, few.statements);
}

TEST(ReadingTheContacts, TakesTheDatabaseAHundredTimesTheStepsForAHundredTimesThePeople) {
  const Cost few = costOfReading(100);
  const Cost many = costOfReading(10000);
  ASSERT_EQ(many.records, 100 * few.records);
  EXPECT_LE(many.steps, 100 * few.steps);
  EXPECT_GE(many.steps, 50 * few.steps) << "so the steps of reading were counted";
}

TEST(ReadingTheContacts, HoldsAtMostAKibibyteForEachRecord) {
  const Cost few = costOfReading(1000);
  const Cost many = costOfReading(3000);
  const std::size_t records = many.records - few.records;
  ASSERT_GT(records, 2000U);
  EXPECT_LE((many.bytes - few.bytes) / records, 1024U);
}

}  // namespace
}  // namespace annivo
