// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/run/ControllerHome.h"

namespace annivo {
namespace {

using Decision = myController::Decision;
using Texts = std::vector<std::string>;

constexpr const char* kParentFile = "org.annivo.Annivo2.plist";

/// After a first run over Ann's birthday and Bob's anniversary.
class myControllerTest : public ControllerHome {
 protected:
  void SetUp() override {
    setPeople({born("Ann", {1980, 6, 10}), married("Bob", {2001, 3, 4})});
    ASSERT_EQ(run(), 0);
    home.clock.advance(std::chrono::hours{1});
  }
};

// The decision.

TEST_F(myControllerTest, FindsNothingToUpdateAfterARun) {
  EXPECT_EQ(decide(), Decision::nothingToUpdate);
  EXPECT_FALSE(isMarked());
}

struct Question {
  const char* name;
  const char* changed;
  Texts asked;  ///< folders, in their order
};

class Questions : public myControllerTest, public testing::WithParamInterface<Question> {
 protected:
  /// Which folders' times the decision asked for, in order.
  [[nodiscard]] Texts asked() const {
    const std::pair<const char*, std::string> folders[] = {
        {"birthdays", "examine " + home.path(eventsOf("B"))},
        {"anniversaries", "examine " + home.path(eventsOf("A"))},
        {"contacts", "list " + home.path("Library/Application Support/AddressBook")}};
    Texts asked;
    for (const auto& operation : files.operations()) {
      for (const auto& [name, wanted] : folders) {
        if (operation == wanted) asked.emplace_back(name);
      }
    }
    return asked;
  }
};

TEST_P(Questions, AreAskedInTheirOrderUntilTheFirstYes) {
  const bool changed = GetParam().changed[0] != '\0';
  if (changed) home.touch(GetParam().changed, home.clock.now());
  EXPECT_EQ(decide(), changed ? Decision::pass : Decision::nothingToUpdate);
  EXPECT_EQ(asked(), GetParam().asked);
}

INSTANTIATE_TEST_SUITE_P(
    OfTheDecision, Questions,
    testing::Values(Question{"NothingChanged", "", {"birthdays", "anniversaries", "contacts"}},
                    Question{
                        "BirthdaysChanged", "Library/Calendars/B.calendar/Events", {"birthdays"}},
                    Question{"AnniversariesChanged",
                             "Library/Calendars/A.calendar/Events",
                             {"birthdays", "anniversaries"}},
                    Question{"ContactsChanged",
                             "Library/Application Support/AddressBook/Metadata",
                             {"birthdays", "anniversaries", "contacts"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(myControllerTest, PassesWhereAnEarlierRunLeftItsMark) {
  home.writeFile(kMark, xmlPropertyList(PropertyList::Dictionary{}));
  EXPECT_EQ(decide(), Decision::pass);
  home.endRun();
  EXPECT_EQ(run(), 0);
  EXPECT_FALSE(isMarked());
}

TEST_F(myControllerTest, TakesALastUpdateThatIsStillToComeForNone) {
  const struct {
    std::chrono::microseconds ahead;
    Decision decision;
  } rows[] = {{std::chrono::microseconds{-1}, Decision::nothingToUpdate},
              {std::chrono::microseconds{0}, Decision::nothingToUpdate},
              {std::chrono::microseconds{1}, Decision::pass},
              {std::chrono::hours{24 * 3650}, Decision::pass}};
  for (const auto& row : rows) {
    home.ownPreferences({{"lastUpdate", home.clock.now() + row.ahead}});
    EXPECT_EQ(decide(), row.decision) << row.ahead.count();
    home.endRun();
  }
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(lastUpdate(), PropertyList(home.clock.now())) << "and it is put right";
}

// The pass.

TEST_F(myControllerTest, SkipsThePassOfALockedCalendarWithoutAFailure) {
  makeCalendar("A", "Anniversaries", false);
  setPeople({born("Ann", {1980, 6, 10}), born("Sue", {1990, 1, 2}), married("Bob", {2001, 3, 4}),
             married("Joe", {2002, 3, 4})});
  home.ownPreferences({{"doLog", 1}});
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(home.alerts.shown().empty());
  EXPECT_EQ(home.log.count("anni Ended"), 0U);
  EXPECT_EQ(home.log.count("birth Ended"), 1U);
  EXPECT_EQ(titles("B"), (Texts{"Ann", "Ann", "Ann", "Sue", "Sue", "Sue"}));
  EXPECT_EQ(eventOf("A", "Joe"), "");
}

TEST_F(myControllerTest, EqualTitlesAndEqualIdentifiersLeaveTheBirthdaysPreferenceAlone) {
  prefer({{"birthCalTitle", "Days"},
          {"aneeCalTitle", "Days"},
          {"birthCalUID", "none yet"},
          {"aneeCalUID", "none yet"}});
  setPeople({born("Ann", {1980, 6, 10})});
  EXPECT_EQ(run(), 0);
  const auto parent = home.storedPreferences(kParentDomain);
  const std::string made = parent["aneeCalUID"].stringOr("");
  EXPECT_EQ(titles(made), (Texts{"Ann", "Ann", "Ann"}));
  EXPECT_NE(made, "none yet");
  EXPECT_TRUE(parent["birthCalUID"].isEqualToString("none yet"));
}

TEST_F(myControllerTest, SwitchedOffStoresSoBeforeTheFirstEventGoes) {
  home.ownPreferences({{"alarmSet", "1"}});
  files.forget();
  EXPECT_EQ(run(), 0);
  const auto stored = files.firstOf("write", kParentFile);
  const auto removed = files.firstOf("remove", ".ics");
  ASSERT_GE(stored, 0);
  ASSERT_GE(removed, 0);
  EXPECT_LT(stored, removed);
  EXPECT_EQ(home.storedPreferences(kParentDomain)["appRunning"], PropertyList(false));
  EXPECT_EQ(titles("B"), Texts{});
}

// Failures.

TEST_F(myControllerTest, WithoutAMarkChangesNothingAndIsFollowedByARunThatPasses) {
  setPeople({born("Anna", {1980, 6, 10}), born("Sue", {1990, 1, 2})});
  prefer({{"aneeCalUID", "none yet"}});
  const auto calendars = home.folder().fingerprint("Library/Calendars");
  const auto ledger = home.readFile(kLedger);
  const PropertyList before = lastUpdate();
  files.hook = [](const std::string& operation, const std::string& path) {
    return operation == "write" && path.ends_with("Annivo 2.unfinished") ? ENOSPC : 0;
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(home.alerts.shown().size(), 1U);
  EXPECT_EQ(home.folder().fingerprint("Library/Calendars"), calendars);
  EXPECT_EQ(home.readFile(kLedger), ledger);
  EXPECT_EQ(lastUpdate(), before);

  files.hook = nullptr;
  EXPECT_EQ(runLater(), 0);
  EXPECT_EQ(titles("B"), (Texts{"Anna", "Anna", "Anna", "Sue", "Sue", "Sue"}));
  EXPECT_EQ(titles("A"), Texts{});
}

TEST_F(myControllerTest, WithoutAMarkTakesNothingOutWhereItIsSwitchedOff) {
  home.ownPreferences({{"alarmSet", "1"}});
  files.hook = [](const std::string& operation, const std::string& path) {
    return operation == "write" && path.ends_with("Annivo 2.unfinished") ? ENOSPC : 0;
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(titles("B").size(), 3U);
  files.hook = nullptr;
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(titles("B"), Texts{});
}

TEST_F(myControllerTest, ALedgerReplacedByOneOfAHigherGenerationIsNotSavedAndTheMarkStays) {
  const auto theirs = [&] {
    std::string text = home.readFile(kLedger);
    const std::string key = "<key>AnnivoGeneration</key>";
    const auto at = text.find("<integer>", text.find(key)) + 9;
    text.replace(at, text.find('<', at) - at, "99");
    return text;
  }();
  setPeople({born("Ann", {1980, 6, 10}), born("Sue", {1990, 1, 2}), married("Bob", {2001, 3, 4})});
  files.hook = [&](const std::string& operation, const std::string&) {
    if (operation == "synchronize") home.writeFile(kLedger, theirs);
    return 0;
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(home.readFile(kLedger), theirs);
  EXPECT_TRUE(isMarked());

  files.hook = nullptr;
  EXPECT_EQ(runLater(), 0);
  EXPECT_FALSE(isMarked());
  EXPECT_EQ(titles("B"), (Texts{"Ann", "Ann", "Ann", "Sue", "Sue", "Sue"}));
  EXPECT_EQ(ledgerRecords(), 9U);
}

}  // namespace
}  // namespace annivo
