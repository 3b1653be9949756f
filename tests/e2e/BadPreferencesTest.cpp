// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "tests/e2e/AgentHome.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* kUID = "C1C1C1C1-0000-4000-8000-000000000001";
constexpr const char* kParentFile = "Library/Preferences/org.annivo.Annivo2.plist";
constexpr const char* kOwnFile = "Library/Preferences/org.annivo.Annivo2.Agent.plist";

/// One birthday and one calendar that takes it.
class BadPreferences : public testing::Test {
 protected:
  void SetUp() override {
    home.addCalendar(kUID, "Days");
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    home.setParent(good());
  }
  static PropertyList::Dictionary good() {
    return {{"birthCalUID", kUID},
            {"birthCalTitle", "B"},
            {"aneeCalTitle", "A"},
            {"titleBirthdays", PropertyList::Array{"First name"}}};
  }
  AgentHome home;
};

TEST_F(BadPreferences, AMissingHomeIsNamedAndNothingIsMade) {
  const std::string missing = home.folder.path("not/here");
  const AgentRun run = home.run({{"HOME", missing}});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(run.mentions(missing)) << run.errors;
  EXPECT_FALSE(fs::exists(missing));
}

TEST_F(BadPreferences, AnEmptyHomeVariableIsAnError) {
  const AgentRun run = home.run({{"HOME", ""}});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(run.mentions("HOME")) << run.errors;
}

/// What may have become of a file of preferences.
struct Damage {
  const char* name;
  std::function<void(const TemporaryFolder& home, const std::string& file)> inflict;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

const Damage kDamages[] = {
    {"Text", [](const auto& home, const auto& file) { home.writeFile(file, "{ old = style; }"); }},
    {"Empty", [](const auto& home, const auto& file) { home.writeFile(file, ""); }},
    {"CutShort",
     [](const auto& home, const auto& file) {
       home.writeFile(file, home.readFile(file).substr(0, home.readFile(file).size() - 1));
     }},
    {"NoDictionary",
     [](const auto& home, const auto& file) {
       home.writeFile(file, binaryPropertyList(PropertyList::Array{1}));
     }},
    {"TooLarge",
     [](const auto& home, const auto& file) {
       fs::resize_file(home.path(file), (std::uintmax_t{16} << 20) + 1);
     }},
    {"AFolder",
     [](const auto& home, const auto& file) {
       home.remove(file);
       home.makeFolder(file);
     }},
    {"ALinkToNowhere",
     [](const auto& home, const auto& file) {
       home.remove(file);
       fs::create_symlink("/nowhere/at/all", home.path(file));
     }},
    {"ALinkToItself", [](const auto& home, const auto& file) {
       home.remove(file);
       fs::create_symlink(home.path(file), home.path(file));
     }}};

/// A file of preferences, the parent's or the agent's own, after a run that has written events.
class UnusablePreferences : public BadPreferences,
                            public testing::WithParamInterface<std::tuple<const char*, Damage>> {};

TEST_P(UnusablePreferences, ArePresentedOnceAndNothingIsChanged) {
  const auto& [file, damage] = GetParam();
  ASSERT_EQ(home.run().status, 0);
  ASSERT_EQ(home.titles(kUID).size(), 3U);
  const std::string whole = home.folder.readFile(file);
  // Contacts and updates would both have something to do.
  home.setContacts({personBorn("Bob", "Jones", {1981, 7, 11})});
  damage.inflict(home.folder, file);
  const auto before = home.fingerprint();

  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(std::count_if(run.log.begin(), run.log.end(),
                          [&](const std::string& line) {
                            return line.find(home.folder.path(file)) != std::string::npos;
                          }),
            1)
      << run.errors;
  EXPECT_TRUE(run.mentions("Nobody to ask")) << run.errors;
  EXPECT_EQ(home.fingerprint(), before);

  home.folder.remove(file);
  home.folder.writeFile(file, whole);
  EXPECT_EQ(home.run().status, 0);
  EXPECT_EQ(home.titles(kUID), (Texts{"Bob", "Bob", "Bob"}));
}

std::string nameOf(const testing::TestParamInfo<UnusablePreferences::ParamType>& row) {
  const auto& [file, damage] = row.param;
  return std::string(file == kParentFile ? "Parents" : "Own") + damage.name;
}

INSTANTIATE_TEST_SUITE_P(Each, UnusablePreferences,
                         testing::Combine(testing::Values(kParentFile, kOwnFile),
                                          testing::ValuesIn(kDamages)),
                         nameOf);

TEST_F(BadPreferences, ThatMayNotBeReadArePresentedAndNothingIsChanged) {
  ASSERT_EQ(home.run().status, 0);
  home.setContacts({});
  fs::permissions(home.folder.path(kParentFile), fs::perms::none);
  home.folder.giveTo(65534);
  const auto before = home.fingerprint();
  const pid_t child = ::fork();
  if (child == 0) {
    // The superuser may read everything, so that it becomes somebody else, who has the home.
    if (::geteuid() == 0 && ::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
    const AgentRun run = home.run();
    const bool asExpected = run.status == 1 && run.mentions(home.folder.path(kParentFile)) &&
                            run.mentions("Permission denied");
    if (!asExpected) std::fprintf(stderr, "%s\n", run.errors.c_str());
    ::_exit(asExpected ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(home.fingerprint(), before);
}

TEST_F(BadPreferences, OfEverybodyThatCannotBeUsedAreNamedAndTheRunGoesOn) {
  constexpr const char* kGlobalFile = "Library/Preferences/.GlobalPreferences.plist";
  for (const Damage& damage : kDamages) {
    home.folder.remove("Library/Preferences");
    home.setParent(good());
    home.folder.writeFile(kGlobalFile, binaryPropertyList(PropertyList::Dictionary{{"a", 1}}));
    damage.inflict(home.folder, kGlobalFile);
    const AgentRun run = home.run();
    EXPECT_EQ(run.status, 0) << damage.name << run.errors;
    EXPECT_TRUE(run.mentions(home.folder.path(kGlobalFile))) << damage.name << run.errors;
    EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"})) << damage.name;
  }
}

TEST_F(BadPreferences, ThatCannotBeWrittenAreNamedAndTheEventsStillCome) {
  // A folder in place of the temporary file refuses the write even to the superuser.
  home.folder.makeFolder("Library/Preferences/.org.annivo.Annivo2.Agent.plist.tmp/x");
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.mentions(kOwnFile)) << run.errors;
  EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"}));
}

struct TypedKey {
  const char* key;
  const char* expected;  ///< as the log names it
  PropertyList right;    ///< a value of its type
};

const PropertyList kAlarms =
    PropertyList::Array{PropertyList::Dictionary{{"type", "None"},
                                                 {"days", "0"},
                                                 {"time", utc(2026, 11, 20)},
                                                 {"birth", false},
                                                 {"anni", false}}};

const TypedKey kParentKeys[] = {{"birthCalTitle", "text", "B"},
                                {"aneeCalTitle", "text", "A"},
                                {"birthCalUID", "text", kUID},
                                {"aneeCalUID", "text", ""},
                                {"selectedGroup", "text", " "},
                                {"appRunning", "boolean", true},
                                {"titleBirthdays", "list of texts", PropertyList::Array{"age"}},
                                {"titleAnniversaries", "list of texts", PropertyList::Array{}},
                                {"alarmTable", "list of alarms", kAlarms},
                                {"setEmail", "text", "me@example.org"},
                                {"alarmFilePath", "text", "/"},
                                {"selectedSystemSound", "text", "Basso"},
                                {"SUScheduledCheckInterval", "whole number", 604800},
                                {"SULastCheckTime", "date", utc(2026, 11, 20)},
                                {"SUEnableAutomaticChecks", "boolean", false},
                                {"lastLaunched", "date", utc(2026, 11, 20)},
                                {"theLabels", "list of texts", PropertyList::Array{"x"}},
                                {"selectedGroupUID", "text", ""}};

const TypedKey kOwnKeys[] = {
    {"lastUpdate", "date", utc(2026, 11, 20)}, {"alarmSet", "text", "0"}, {"doLog", "number", 0}};

/// One value of each type, and lists and rows that hold one wrong value.
const PropertyList kValues[] = {
    "x",
    7,
    7.5,
    false,
    utc(2026, 11, 20),
    PropertyList::Data{"bytes"},
    PropertyList::Array{1},
    PropertyList::Array{"x", false},
    PropertyList::Array{PropertyList::Dictionary{{"type", "None"}, {"days", 0}}},
    PropertyList::Dictionary{{"k", "v"}}};

bool isOfType(const std::string& type, const PropertyList& value) {
  if (type == "text") return value.string();
  if (type == "boolean") return value.boolean();
  if (type == "date") return value.date();
  if (type == "whole number") return value.integer();
  if (type == "number") return value.integer() || value.real() || value.boolean() || value.string();
  return false;  // None of the lists above is a right one.
}

std::size_t timesNamed(const AgentRun& run, const std::string& file, const TypedKey& row) {
  const std::string line = file + ": the value of \"" + row.key + "\" is no " + row.expected;
  return static_cast<std::size_t>(
      std::count_if(run.log.begin(), run.log.end(),
                    [&](const std::string& each) { return each.starts_with(line); }));
}

void PrintTo(const TypedKey& row, std::ostream* out) { *out << row.key; }

/// A run over each wrong value: named once, no alert, left as it is.
class WrongTypesUnder : public BadPreferences, public testing::WithParamInterface<TypedKey> {
 protected:
  void expectNamedOnce(const char* file, PropertyList::Dictionary values) {
    const TypedKey& row = GetParam();
    values[row.key] = row.right;
    home.folder.writeFile(file, binaryPropertyList(values));
    EXPECT_EQ(timesNamed(home.run(), home.folder.path(file), row), 0U);
    for (const PropertyList& value : kValues) {
      if (isOfType(row.expected, value)) continue;
      values[row.key] = value;
      home.folder.writeFile(file, binaryPropertyList(values));
      const AgentRun run = home.run();
      EXPECT_EQ(run.status, 0) << run.errors;
      EXPECT_FALSE(run.mentions("Nobody to ask")) << run.errors;
      EXPECT_EQ(timesNamed(run, home.folder.path(file), row), 1U) << run.errors;
    }
  }
};

class WrongTypesUnderAKeyOfTheParent : public WrongTypesUnder {};

TEST_P(WrongTypesUnderAKeyOfTheParent, AreNamedOnceAndLeftAsTheyAre) {
  expectNamedOnce(kParentFile, good());
  const std::string key = GetParam().key;
  // What is not the boolean true switches the agent off, which it stores.
  EXPECT_EQ(home.parent()[key], key == "appRunning" ? PropertyList(false) : std::end(kValues)[-1]);
}

INSTANTIATE_TEST_SUITE_P(EachKey, WrongTypesUnderAKeyOfTheParent, testing::ValuesIn(kParentKeys),
                         [](const auto& row) { return row.param.key; });

class WrongTypesUnderAnOwnKey : public WrongTypesUnder {};

TEST_P(WrongTypesUnderAnOwnKey, AreNamedOnce) { expectNamedOnce(kOwnFile, {}); }

INSTANTIATE_TEST_SUITE_P(EachKey, WrongTypesUnderAnOwnKey, testing::ValuesIn(kOwnKeys),
                         [](const auto& row) { return row.param.key; });

TEST_F(BadPreferences, OwnKeysOfAnotherTypeCountAsTheirDefaults) {
  home.setOwn({{"lastUpdate", "yesterday"}, {"alarmSet", 1}, {"doLog", PropertyList::Array{1}}});
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"}));
}

}  // namespace
}  // namespace annivo
