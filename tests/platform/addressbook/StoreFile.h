// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/addressbook/AddressBookStoreWriter.h"
#include "platform/coredata/SQLiteDatabase.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// What the three generations call the same things.
struct GenerationFacts {
  StoreGeneration generation;
  const char* name;
  int contact, group, abstractGroup;
};

inline constexpr std::array kGenerations{
    GenerationFacts{StoreGeneration::olderA, "olderA", 19, 15, 14},
    GenerationFacts{StoreGeneration::olderB, "olderB", 21, 17, 16},
    GenerationFacts{StoreGeneration::current, "current", 22, 19, 18},
};

inline void PrintTo(const GenerationFacts& facts, std::ostream* out) { *out << facts.name; }

/// A contacts store in a temporary folder, looked into with SQL.
class StoreFile {
 public:
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }
  [[nodiscard]] const std::string& path() const { return path_; }

  void write(StoreGeneration generation, const std::vector<StoredPerson>& people,
             const std::vector<StoredGroup>& groups = {}) const {
    PosixFileManager disk;
    const auto written = AddressBookStoreWriter::write(disk, path_, generation, people, groups,
                                                       kReferenceDate + std::chrono::hours{1});
    ASSERT_TRUE(written) << written.error().text();
  }

  /// The first column of every row, nil as "nil".
  [[nodiscard]] std::vector<std::string> column(const std::string& sql) const {
    std::vector<std::string> values;
    const auto database = SQLiteDatabase::openForReading(path_);
    EXPECT_TRUE(database) << path_;
    if (!database) return values;
    auto query = database->prepare(sql);
    EXPECT_TRUE(query) << sql;
    if (!query) return values;
    for (;;) {
      const auto row = query->step();
      EXPECT_TRUE(row);
      if (!row || !*row) return values;
      if (const auto text = query->text(0)) {
        values.emplace_back(*text);
      } else if (const auto number = query->integer(0)) {
        values.push_back(std::to_string(*number));
      } else {
        values.emplace_back("nil");
      }
    }
  }
  /// The one value of the one row.
  [[nodiscard]] std::string value(const std::string& sql) const {
    const auto values = column(sql);
    EXPECT_EQ(values.size(), 1U) << sql;
    return values.empty() ? "" : values.front();
  }

 private:
  TemporaryFolder folder_;
  std::string path_ = folder_.path("AddressBook-v22.abcddb");
};

}  // namespace annivo
