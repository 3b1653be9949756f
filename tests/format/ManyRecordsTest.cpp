// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "format/ZPKAnvCCalendarItemsFormat.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

/// Twice as many records as are made ready together, and more.
class ManyRecords : public testing::Test {
 protected:
  static constexpr std::size_t kCount = 600;

  ManyRecords() {
    home.ownPreferences({{"doLog", 1}});
    for (std::size_t i = 0; i < kCount; ++i) {
      ContactDateRecord record;
      record.firstName = "Person " + std::to_string(i);
      record.dateType = "birthday";
      record.dateUID = "D-" + std::to_string(i);
      // So far ahead that each has one event only.
      if (i % 97 != 5) record.thisDate = utc(2029, 1, 1, 12) + std::chrono::days{i / 2};
      people.push_back(record);
    }
  }
  using Hand = std::function<void(ZPKAnvCCalendarItemsFormat&)>;
  /// A run over the calendar; returns what it logged.
  std::vector<std::string> run(const Hand& hand) {
    const std::size_t before = home.log.lines().size();
    {
      ZPKCalendarItems writer(home.platform());
      writer.setThisCalendarWithUIDForType("B", calendar, CalendarType::birthdays);
      calendar = writer.thisCalendar()->uid();
      ZPKAnvCCalendarItemsFormat formatter(home.platform(), writer, {"First name", "age"});
      hand(formatter);
      writer.removeOtherEvents();
    }
    home.endRun();
    auto lines = home.log.lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    return lines;
  }
  std::vector<std::string> runTogether() {
    const std::vector<std::reference_wrapper<const ContactDateRecord>> records(people.begin(),
                                                                               people.end());
    return run([&](auto& formatter) { formatter.setEventsWithOriginals(records); });
  }
  std::vector<std::string> runSettled() {
    const std::vector<std::reference_wrapper<const ContactDateRecord>> records(people.begin(),
                                                                               people.end());
    return run([&](auto& formatter) {
      formatter.settleTitles(records);
      formatter.setEventsWithOriginals(records);
    });
  }
  std::vector<std::string> runOneByOne() {
    return run([&](auto& formatter) {
      for (const auto& record : people) formatter.setEventsWithOriginal(record);
    });
  }
  [[nodiscard]] auto fingerprint() const { return home.folder().fingerprint("Library"); }
  [[nodiscard]] std::size_t eventFiles() const {
    std::size_t count = 0;
    for (const auto& [path, status] : fingerprint()) count += path.ends_with(".ics") ? 1 : 0;
    return count;
  }

  TestHome home{{.now = utc(2026, 11, 15, 9)}};
  std::string calendar = "no such calendar";
  std::vector<ContactDateRecord> people;
};

TEST_F(ManyRecords, OfOneDateEndWithTheTitleOfTheLastAndAreThenLeftAlone) {
  people[kCount - 10].dateUID = "d-1";
  people[kCount - 10].thisDate = people[1].thisDate;
  people[kCount - 20].dateUID = people[3].dateUID;  // on another day
  runSettled();
  const auto titles = [&](const std::string& title) {
    std::size_t count = 0;
    for (const auto& [path, text] : home.snapshot("Library/Calendars")) {
      if (text.find("SUMMARY:" + title + " ") != std::string::npos) ++count;
    }
    return count;
  };
  EXPECT_EQ(titles("Person 1"), 0U);
  EXPECT_EQ(titles("Person " + std::to_string(kCount - 10)), 1U);
  EXPECT_EQ(titles("Person 3"), 1U);
  EXPECT_EQ(titles("Person " + std::to_string(kCount - 20)), 1U);
  EXPECT_EQ(home.log.count("Title changed"), 0U);
  const auto before = fingerprint();
  runSettled();
  EXPECT_EQ(fingerprint(), before);
}

TEST_F(ManyRecords, AreWrittenOnceAndThenLeftAlone) {
  runTogether();
  const std::size_t withoutDate = (kCount - 5 + 96) / 97;
  EXPECT_EQ(eventFiles(), kCount - withoutDate);
  const auto before = fingerprint();
  runTogether();
  EXPECT_EQ(fingerprint(), before);
}

TEST_F(ManyRecords, GiveTheSameLinesInTheSameOrderAsOneByOne) {
  runTogether();
  const auto oneByOne = runOneByOne();
  EXPECT_GT(oneByOne.size(), kCount);
  EXPECT_EQ(runTogether(), oneByOne);
}

TEST_F(ManyRecords, AreBroughtUpToDateWhereverTheyChanged) {
  runTogether();
  const auto before = fingerprint();
  const std::size_t changed[] = {0, 255, 256, 257, 511, 599};
  for (const std::size_t i : changed) people[i].firstName = "Renamed " + std::to_string(i);
  people.erase(people.begin() + 300);
  runTogether();
  const auto after = fingerprint();
  std::size_t rewritten = 0;
  std::size_t removed = 0;
  for (const auto& [path, status] : before) {
    if (!path.ends_with(".ics")) continue;
    const auto now = after.find(path);
    removed += now == after.end() ? 1 : 0;
    rewritten += now != after.end() && now->second != status ? 1 : 0;
  }
  EXPECT_EQ(rewritten, std::size(changed));
  EXPECT_EQ(removed, 1U);
  EXPECT_EQ(after.size(), before.size() - 1);
}

TEST_F(ManyRecords, OfTheSameEventsSeeWhatTheFirstOfThemChanged) {
  runTogether();
  // Two dates of one identifier and day: both stand for the same event.
  people[400].dateUID = people[10].dateUID;
  people[400].thisDate = people[10].thisDate;
  runOneByOne();
  const auto oneByOne = runOneByOne();
  EXPECT_EQ(runTogether(), oneByOne);
}

}  // namespace
}  // namespace annivo
