// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>
#include <set>

#include "tests/calendar/FaultyMachine.h"

namespace annivo {
namespace {

using Input = FaultyMachine::Input;

Date day(int number) { return utc(2026, 12, 1, 12) + std::chrono::hours{24 * number}; }

const Input kBefore{.anniversaries = {eventOn(day(1), "W-1", "Wedding"),
                                      eventOn(day(400), "W-1", "Wedding, again")},
                    .birthdays = {eventOn(day(1), "B-1", "Ada"), eventOn(day(2), "B-2", "Grace"),
                                  eventOn(day(3), "B-3", "Alan")},
                    .alarms = {message(-60)}};
/// One is retitled, one goes, one comes, one moves, all get another alarm.
const Input kAfter{.anniversaries = {eventOn(day(1), "W-1", "Wedding day"),
                                     eventOn(day(400), "W-1", "Wedding, again")},
                   .birthdays = {eventOn(day(1), "B-1", "Ada"), eventOn(day(4), "B-3", "Alan"),
                                 eventOn(day(9), "B-4", "Edsger")},
                   .alarms = {message(-120)}};
const std::string kForeign =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:own\r\nSUMMARY:Mine\r\n"
    "DTSTART;VALUE=DATE:20261201\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";

/// A run on a machine as it was before, and what it leads to when nothing disturbs it.
struct Scenario {
  const char* name;
  bool hasRunBefore;
  bool empties;

  void run(FaultyMachine& machine) const {
    if (empties) {
      machine.empty();
    } else {
      machine.pass(hasRunBefore ? kAfter : kBefore);
    }
  }
};
const Scenario kScenarios[] = {
    {"first run", false, false}, {"changes", true, false}, {"switched off", true, true}};

class InterruptedRun : public testing::TestWithParam<Scenario> {
 protected:
  InterruptedRun() : before_(home_) {
    if (GetParam().hasRunBefore) before_.pass(kBefore);
    before_.memory().makeFolders(home_.path("Library/Calendars/N.calendar/Events"));
    write(before_.memory(), "Library/Calendars/N.calendar/Info.plist",
          xmlPropertyList(PropertyList::Dictionary{{"Key", "N"}, {"Title", "Neighbour"}}));
    write(before_.memory(), kForeignPath, kForeign);
    (void)before_.memory().synchronize("/").ok();
    home_.clock.advance(std::chrono::hours{1});
    FaultyMachine undisturbed(before_);
    GetParam().run(undisturbed);
    expected_ = undisturbed.state();
    changes_ = undisturbed.faults().changes().size();
  }
  void write(NSFileManager& files, const std::string& path, const std::string& bytes) {
    ASSERT_TRUE(files.writeDurably(home_.path(path), bytes).ok());
  }
  /// The next run, which nothing disturbs.
  void expectRecovery(FaultyMachine& machine) {
    machine.faults().failNoMore();
    GetParam().run(machine);
    EXPECT_EQ(machine.state(), expected_);
    EXPECT_EQ(machine.memory().files(home_.path())[home_.path(kForeignPath)], kForeign);
  }

  static constexpr const char* kForeignPath = "Library/Calendars/N.calendar/Events/own.ics";
  TestHome home_;
  FaultyMachine before_;
  std::string expected_;
  std::size_t changes_ = 0;
};

TEST_P(InterruptedRun, TheScenarioIsOne) {
  EXPECT_GT(changes_, 5U);
  EXPECT_EQ(expected_.find("stray"), std::string::npos) << expected_;
  FaultyMachine again(before_);
  GetParam().run(again);
  const auto once = again.memory().files(home_.path());
  GetParam().run(again);
  EXPECT_EQ(again.memory().files(home_.path()), once) << "a second run changes nothing";
}

TEST_P(InterruptedRun, ARunKilledAtAnyChangeIsMadeGoodByTheNext) {
  for (std::size_t number = 1; number <= changes_; ++number) {
    FaultyMachine machine(before_);
    machine.faults().killAtChange(number);
    GetParam().run(machine);
    SCOPED_TRACE("killed at change " + std::to_string(number) + ", " +
                 machine.faults().changes()[number - 1].operation + " " +
                 machine.faults().changes()[number - 1].path);
    expectRecovery(machine);
  }
}

TEST_P(InterruptedRun, APowerLossAtAnyChangeIsMadeGoodByTheNext) {
  for (std::size_t number = 1; number <= changes_ + 1; ++number) {
    for (std::uint64_t seed = 0; seed < 10; ++seed) {
      FaultyMachine machine(before_);
      machine.faults().killAtChange(number);
      GetParam().run(machine);
      const PowerLoss loss = seed == 0   ? PowerLoss::nothingKept
                             : seed == 1 ? PowerLoss::namesKept
                                         : PowerLoss::somethingKept;
      machine.memory().cutPower(loss, seed * 1000 + number);
      SCOPED_TRACE("power cut at change " + std::to_string(number) + ", seed " +
                   std::to_string(seed));
      expectRecovery(machine);
      if (HasFailure()) return;
    }
  }
}

TEST_P(InterruptedRun, AFailureOfAnyChangeIsToldAndMadeGoodByTheNextRun) {
  for (const int code : {ENOSPC, EIO, EACCES}) {
    for (std::size_t number = 1; number <= changes_; ++number) {
      FaultyMachine machine(before_);
      machine.forgetMessages();
      machine.faults().failChange(number, code);
      GetParam().run(machine);
      const auto& change = machine.faults().changes()[number - 1];
      SCOPED_TRACE("errno " + std::to_string(code) + " at change " + std::to_string(number) + ", " +
                   change.operation + " " + change.path);
      EXPECT_TRUE(machine.told(change.path));
      expectRecovery(machine);
    }
  }
}

TEST_P(InterruptedRun, ADiskThatStaysFullIsMadeGoodByTheNextRun) {
  for (std::size_t number = 1; number <= changes_; ++number) {
    FaultyMachine machine(before_);
    machine.forgetMessages();
    machine.faults().failChangesFrom(number, ENOSPC);
    GetParam().run(machine);
    SCOPED_TRACE("disk full from change " + std::to_string(number));
    EXPECT_TRUE(machine.told(machine.faults().changes()[number - 1].path));
    expectRecovery(machine);
  }
}

TEST_P(InterruptedRun, AFileOrFolderOfTheCalendarsThatCannotBeReadIsMadeGoodByTheNextRun) {
  std::set<std::string> paths;
  const std::string root = home_.path("Library/Calendars");
  for (const auto& [path, content] : before_.memory().files(root)) {
    for (auto above = path; above.size() >= root.size(); above.resize(above.rfind('/'))) {
      paths.insert(above);
    }
  }
  EXPECT_GT(paths.size(), 3U);
  for (const std::string& path : paths) {
    FaultyMachine machine(before_);
    machine.faults().makeUnreadable(path);
    GetParam().run(machine);
    machine.faults().makeReadable(path);
    SCOPED_TRACE("unreadable: " + path);
    expectRecovery(machine);
  }
}

TEST_P(InterruptedRun, TwoInterruptionsInARowAreMadeGood) {
  for (std::size_t number = 1; number <= changes_; ++number) {
    for (std::size_t second = 1; second <= changes_; second += 2) {
      FaultyMachine machine(before_);
      machine.faults().killAtChange(number);
      GetParam().run(machine);
      machine.faults().killAtChange(second);
      GetParam().run(machine);
      machine.memory().cutPower(PowerLoss::somethingKept, number * 100 + second);
      SCOPED_TRACE("killed at change " + std::to_string(number) + ", then at " +
                   std::to_string(second));
      expectRecovery(machine);
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, InterruptedRun, testing::ValuesIn(kScenarios),
                         [](const auto& scenario) {
                           std::string name = scenario.param.name;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

}  // namespace
}  // namespace annivo
