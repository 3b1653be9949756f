// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <set>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/TracedAgent.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

constexpr const char* kForeign =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:own\r\nSUMMARY:Mine\r\n"
    "DTSTART;VALUE=DATE:20261201\r\nX-MINE:kept\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";

const std::vector<StoredPerson> kBefore = {
    personBorn("Ann", "Smith", {1980, 6, 10}), personBorn("Joe", "Dow", {1970, 1, 31}),
    personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4})};
/// Ann has another name, Joe is gone, Sue is new.
const std::vector<StoredPerson> kAfter = {
    [] {
      auto ann = personBorn("Ann", "Smith", {1980, 6, 10});
      ann.firstName = "Anna";
      return ann;
    }(),
    personBorn("Sue", "Ray", {1990, 2, 28}),
    personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4})};

PropertyList::Dictionary preferences(bool running) {
  return {{"appRunning", running},
          {"birthCalTitle", "Birthdays"},
          {"aneeCalTitle", "Anniversaries"},
          {"birthCalUID", "none yet"},
          {"aneeCalUID", "none yet either"},
          {"titleBirthdays", PropertyList::Array{"First name", "type"}},
          {"titleAnniversaries", PropertyList::Array{"First name", "type"}},
          {"setEmail", "me@example.org"},
          {"alarmTable", PropertyList::Array{}}};
}

void makeFirstRun(const AgentHome& home) {
  home.setParent(preferences(true));
  home.setContacts(kBefore);
  home.addCalendar("N0N0N0N0-0000-4000-8000-000000000003", "Neighbour");
  home.folder.writeFile(
      "Library/Calendars/N0N0N0N0-0000-4000-8000-000000000003.calendar/Events/"
      "own.ics",
      kForeign);
}
void makeChangedContacts(const AgentHome& home) {
  makeFirstRun(home);
  ASSERT_EQ(home.run().status, 0);
  home.setContacts(kAfter);
}
/// What a server does to event files: it names them otherwise, and writes them in its own way.
void makeRewrittenEvents(const AgentHome& home) {
  makeChangedContacts(home);
  int number = 0;
  for (const auto& [path, content] : home.folder.snapshot("Library/Calendars")) {
    if (!path.ends_with(".ics") || path.ends_with("own.ics")) continue;
    const std::string text = std::regex_replace(
        std::regex_replace(content, std::regex("PRODID:[^\r]*"), "PRODID:-//Server//EN"),
        std::regex("\r\n"), "\n");
    const std::string folder = "Library/Calendars/" + path.substr(0, path.rfind('/') + 1);
    home.folder.remove("Library/Calendars/" + path);
    home.folder.writeFile(folder + "server-" + std::to_string(++number) + ".ics", text);
  }
}
/// Somebody copies both calendars, with all that is in them.
void makeCopiedCalendars(const AgentHome& home) {
  makeChangedContacts(home);
  for (const std::string& uid : home.calendars()) {
    const fs::path folder = home.folder.path("Library/Calendars/" + uid + ".calendar");
    if (uid.starts_with("N0")) continue;
    fs::copy(folder, folder.parent_path() / ("0 copy of " + uid + ".calendar"),
             fs::copy_options::recursive);
  }
}
void makeSwitchedOff(const AgentHome& home) {
  makeFirstRun(home);
  ASSERT_EQ(home.run().status, 0);
  auto parent = home.parent();
  parent["appRunning"] = false;
  home.setParent(parent);
}

std::string value(const std::string& text, const std::string& name) {
  std::smatch match;
  const std::regex pattern("name=\"" + name + "\" type=\"[a-z]+\">([^<]*)<");
  return std::regex_search(text, match, pattern) ? match[1].str() : "nil";
}

const std::regex kVarying(
    "(UID|CREATED|DTSTAMP|LAST-MODIFIED|SEQUENCE|X-ANNIVO[^:]*):[^\n]*\n(?: [^\n]*\n)*");

/// What the home holds, in words that do not depend on drawn identifiers.
std::multiset<std::string> stateOf(const AgentHome& home) {
  std::multiset<std::string> state;
  std::map<std::string, std::string> calendars;
  std::map<std::string, std::string> events;
  for (const auto& [path, content] : home.folder.snapshot()) {
    const std::string name = path.substr(path.rfind('/') + 1);
    if (path.ends_with(".calendar/Info.plist")) {
      const auto info = parsePropertyList(content, path);
      calendars[(*info)["Key"].stringOr("")] = (*info)["Title"].stringOr("?");
      state.insert("calendar " + (*info)["Title"].stringOr("?"));
    } else if (path.find("/0 copy of ") != path.npos) {
      state.insert("in a copy " + std::regex_replace(content, kVarying, ""));
    } else if (path.ends_with("own.ics")) {
      state.insert(content == kForeign ? "own event untouched" : "own event changed");
    } else if (path.ends_with(".ics") && !name.starts_with('.')) {
      std::smatch uid;
      std::regex_search(content, uid, std::regex("\nUID:([^\r\n]*)"));
      events[uid[1]] = std::regex_replace(content, kVarying, "");
    } else if (content != "/" && name != "Annivo 2.xml" && !path.starts_with("Library/Caches") &&
               path.find("/AddressBook/") == std::string::npos &&
               !path.starts_with("Library/Preferences/")) {
      state.insert("stray file " + path);
    } else if (name.ends_with(".tmp")) {
      state.insert("stray " + path);
    }
  }
  for (const auto& [uid, text] : events) state.insert("event " + text);
  if (!home.folder.exists("Library/Application Support/Annivo 2/Annivo 2.xml")) return state;
  const std::string ledger = home.ledger();
  for (auto at = ledger.find("<object"); at != std::string::npos;
       at = ledger.find("<object", at + 1)) {
    const std::string object = ledger.substr(at, ledger.find("</object>", at) - at);
    const auto event = events.find(value(object, "icaluid"));
    state.insert("record " + value(object, "myuid") + " " +
                 calendars[value(object, "calendaruid")] + " " + value(object, "date") + " -> " +
                 (event == events.end() ? "nothing" : event->second));
  }
  const auto parent = home.parent();
  for (const char* key : {"birthCalUID", "aneeCalUID"}) {
    state.insert(std::string(key) + " " + calendars[PropertyList(parent)[key].stringOr("")]);
  }
  state.insert(PropertyList(parent)["appRunning"].isTheTrueObject() ? "on" : "off");
  return state;
}

struct Scenario {
  const char* name;
  void (*make)(const AgentHome& home);
  bool failsWithEachCode = false;  ///< of a reading; else with one of them at each
};

/// The name of the file that a call is about, as a message gives it.
std::string fileOf(const std::string& change) {
  std::string name = change.substr(change.rfind('/') + 1);
  if (name.ends_with(".tmp")) name = name.substr(1, name.size() - 5);
  return name;
}

class Disturbed : public testing::TestWithParam<Scenario> {
 protected:
  void SetUp() override {
    AgentHome undisturbed;
    GetParam().make(undisturbed);
    const auto complete = traceAgent(undisturbed.folder.path());
    ASSERT_EQ(complete.status, 0);
    expected_ = stateOf(undisturbed);
    count_ = complete.changes.size();
    ASSERT_GT(count_, 10U);
    for (const auto& line : expected_) ASSERT_FALSE(line.starts_with("stray")) << line;
    GetParam().make(before_);
  }
  [[nodiscard]] std::unique_ptr<AgentHome> homeBefore() const {
    auto home = std::make_unique<AgentHome>();
    fs::copy(before_.folder.path(), home->folder.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    return home;
  }
  void expectRecovery(const AgentHome& home) const {
    const auto next = home.run();
    EXPECT_EQ(next.status, 0) << next.errors;
    EXPECT_EQ(stateOf(home), expected_) << next.errors;
  }
  AgentHome before_;
  std::multiset<std::string> expected_;
  std::size_t count_ = 0;
};

TEST_P(Disturbed, AKillAtAnyChangeOfAFileIsMadeGoodByTheNextRun) {
  for (std::size_t number = 1; number <= count_; ++number) {
    const auto home = homeBefore();
    const auto run =
        traceAgent(home->folder.path(), {.kind = Disturbance::Kind::kill, .number = number});
    ASSERT_TRUE(run.killed) << number;
    SCOPED_TRACE("killed at " + std::to_string(number) + ": " + run.changes.back());
    expectRecovery(*home);
    if (HasFailure()) return;
  }
  std::printf("killed at each of %zu file-changing system calls\n", count_);
}

TEST_P(Disturbed, AFailureOfAnyChangeOfAFileIsToldAndMadeGoodByTheNextRun) {
  if (!kCallsCanFail) GTEST_SKIP() << "calls cannot be made to fail on this machine";
  const int codes[] = {ENOSPC, EIO, EACCES};
  for (std::size_t number = 1; number <= count_; ++number) {
    const auto home = homeBefore();
    const int code = codes[number % std::size(codes)];
    const auto run = traceAgent(home->folder.path(),
                                {.kind = Disturbance::Kind::fail, .number = number, .code = code});
    ASSERT_GE(run.changes.size(), number);
    const std::string& change = run.changes[number - 1];
    SCOPED_TRACE("errno " + std::to_string(code) + " at " + std::to_string(number) + ": " + change);
    // Without its lock an agent does not run at all.
    const bool isLock = run.errors.find("/Library/Caches") != std::string::npos;
    const bool presented = run.errors.find("Nobody to ask") != std::string::npos;
    EXPECT_EQ(run.status, isLock || presented ? 1 : 0) << run.errors;
    EXPECT_NE(run.errors.find(fileOf(change)), std::string::npos) << run.errors;
    expectRecovery(*home);
  }
  std::printf("let each of %zu file-changing system calls fail\n", count_);
}

TEST_P(Disturbed, AFailureOfAnyReadingOfTheCalendarsIsMadeGoodByTheNextRun) {
  if (!kCallsCanFail) GTEST_SKIP() << "calls cannot be made to fail on this machine";
  std::size_t pairs = 0;
  const int codes[] = {EIO, EMFILE, ENOMEM};
  bool isOver = false;
  for (std::size_t number = 1; !isOver; ++number) {
    for (const int code : codes) {
      if (!GetParam().failsWithEachCode && code != codes[number % std::size(codes)]) continue;
      const auto home = homeBefore();
      const auto run = traceAgent(home->folder.path(), {.kind = Disturbance::Kind::fail,
                                                        .calls = Disturbance::Calls::readings,
                                                        .number = number,
                                                        .code = code});
      isOver = run.changes.size() < number;
      if (isOver) break;
      ++pairs;
      SCOPED_TRACE("errno " + std::to_string(code) + " at " + std::to_string(number) + ": " +
                   run.changes[number - 1]);
      EXPECT_TRUE(run.status == 0 || run.status == 1) << run.errors;
      expectRecovery(*home);
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(pairs, 20U);
  std::printf("let %zu pairs of a reading system call and an errno fail\n", pairs);
}

INSTANTIATE_TEST_SUITE_P(Agent, Disturbed,
                         testing::Values(Scenario{"InItsFirstRun", makeFirstRun},
                                         Scenario{"AfterContactsChanged", makeChangedContacts,
                                                  true},
                                         Scenario{"OverRewrittenEvents", makeRewrittenEvents},
                                         Scenario{"BesideCopiedCalendars", makeCopiedCalendars},
                                         Scenario{"WhenSwitchedOff", makeSwitchedOff}),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

TEST(Traced, TheLedgersFolderIsMadeDurableInTheOneAboveBeforeTheMarkIsWritten) {
  AgentHome home;
  makeFirstRun(home);
  const auto run = traceAgent(home.folder.path());
  ASSERT_EQ(run.status, 0) << run.errors;
  const auto placeOf = [&](const std::string& start) {
    return std::find_if(run.changes.begin(), run.changes.end(),
                        [&](const auto& change) { return change.starts_with(start); });
  };
  const std::string support = home.folder.path("Library/Application Support");
  const auto made = placeOf("mkdir " + support + "/Annivo 2");
  const auto synced = placeOf("fsync " + support);
  const auto marked = std::find_if(run.changes.begin(), run.changes.end(), [](const auto& change) {
    return change.find(".unfinished") != std::string::npos;
  });
  ASSERT_NE(marked, run.changes.end());
  EXPECT_LT(made, synced);
  EXPECT_LT(synced, marked);
}

TEST(Traced, AnUnchangedSecondRunOpensNothingForWritingButLockAndTime) {
  AgentHome home;
  makeFirstRun(home);
  ASSERT_EQ(home.run().status, 0);
  home.setContacts(kBefore);  // Touched, so that there is a pass, with the same content.
  const auto run = traceAgent(home.folder.path());
  ASSERT_EQ(run.status, 0);
  const auto expectOnly = [](const TracedRun& traced, const std::vector<std::string>& allowed) {
    for (const auto& change : traced.changes) {
      const bool folder = change.starts_with("mkdir ");  // One that is there.
      EXPECT_TRUE(folder ||
                  std::any_of(allowed.begin(), allowed.end(),
                              [&](const auto& part) { return change.find(part) != change.npos; }))
          << change;
    }
  };
  expectOnly(run, {"Library/Caches/org.annivo.Annivo2.Agent/", "org.annivo.Annivo2.Agent.",
                   "fsync " + home.folder.path("Library/Preferences")});
  const auto folders = home.fingerprint();
  expectOnly(traceAgent(home.folder.path()), {"Library/Caches/org.annivo.Annivo2.Agent/"});
  EXPECT_EQ(home.fingerprint(), folders);
}

}  // namespace
}  // namespace annivo
