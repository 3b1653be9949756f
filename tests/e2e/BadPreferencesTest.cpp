// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/AgentHome.h"

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

TEST_F(BadPreferences, ParentPreferencesThatAreNoPropertyListYieldTheDefaultsAndStay) {
  home.folder.writeFile(kParentFile, "this is no property list");
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.mentions(kParentFile)) << run.errors;
  EXPECT_EQ(home.folder.readFile(kParentFile), "this is no property list");
  EXPECT_EQ(home.titles(kUID), Texts{});
}

TEST_F(BadPreferences, ADamagedParentFileIsSetAsideBeforeItIsReplaced) {
  home.folder.writeFile(kParentFile, "this is no property list");
  home.setOwn({{"alarmSet", "1"}});
  EXPECT_EQ(home.run().status, 0);
  EXPECT_EQ(home.parent()["appRunning"], PropertyList(false));
  std::size_t kept = 0;
  for (const auto& entry : fs::directory_iterator(home.folder.path("Library/Preferences"))) {
    const std::string name = entry.path().filename().string();
    if (name.find("Annivo2.plist.damaged-") == std::string::npos) continue;
    ++kept;
    EXPECT_EQ(home.folder.readFile("Library/Preferences/" + name), "this is no property list");
  }
  EXPECT_EQ(kept, 1U);
}

TEST_F(BadPreferences, OwnPreferencesThatAreNoPropertyListAreSetAsideAndTheRunGoesOn) {
  home.folder.writeFile(kOwnFile, "{ old = style; }");
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.mentions(kOwnFile)) << run.errors;
  EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"}));
  EXPECT_TRUE(home.own()["lastUpdate"].date());
}

TEST_F(BadPreferences, APreferencesFolderThatCannotBeWrittenIsNamedAndTheEventsStillCome) {
  // A folder in the file's place refuses the write even to the superuser.
  fs::create_directories(home.folder.path(std::string(kOwnFile) + "/x"));
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.mentions(kOwnFile)) << run.errors;
  EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"}));
  EXPECT_TRUE(fs::is_directory(home.folder.path(std::string(kOwnFile) + "/x")));
}

struct WrongType {
  const char* key;
  PropertyList value;
};

class WrongTypes : public BadPreferences, public testing::WithParamInterface<WrongType> {};

TEST_P(WrongTypes, UnderAKeyOfTheParentAreKeptAndTheRunEndsWell) {
  PropertyList::Dictionary values = good();
  values[GetParam().key] = GetParam().value;
  home.setParent(values);
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0) << run.errors;
  if (std::string(GetParam().key) == "appRunning") {
    EXPECT_EQ(home.parent()["appRunning"], PropertyList(false));  // not true: switched off
  } else {
    EXPECT_EQ(home.parent()[GetParam().key], GetParam().value);
  }
}

std::vector<WrongType> wrongTypes() {
  std::vector<WrongType> rows;
  const PropertyList number = 7;
  const PropertyList text = "x";
  const PropertyList list = PropertyList::Array{1, PropertyList::Dictionary{{"a", false}}};
  const PropertyList dictionary = PropertyList::Dictionary{{"k", "v"}};
  for (const char* key :
       {"birthCalTitle", "aneeCalTitle", "birthCalUID", "aneeCalUID", "selectedGroup", "appRunning",
        "titleBirthdays", "titleAnniversaries", "alarmTable", "setEmail", "alarmFilePath",
        "selectedSystemSound", "SUScheduledCheckInterval", "SULastCheckTime",
        "SUEnableAutomaticChecks", "lastLaunched", "theLabels", "selectedGroupUID"}) {
    for (const PropertyList& value : {number, list, dictionary}) rows.push_back({key, value});
    if (std::string(key) == "alarmTable" || std::string(key) == "theLabels" ||
        std::string(key) == "titleBirthdays") {
      rows.push_back({key, text});
    }
  }
  return rows;
}

INSTANTIATE_TEST_SUITE_P(EachKey, WrongTypes, testing::ValuesIn(wrongTypes()));

TEST_F(BadPreferences, TextKeysOfAnotherTypeAreReportedWithTheFileAndTheKey) {
  PropertyList::Dictionary values = good();
  values["aneeCalUID"] = 7;
  values["titleBirthdays"] = "First name";
  home.setParent(values);
  const AgentRun run = home.run();
  EXPECT_TRUE(run.mentions(std::string(kParentFile) + ": the value of \"aneeCalUID\" is no text"))
      << run.errors;
  EXPECT_TRUE(run.mentions("the value of \"titleBirthdays\" is no list of texts")) << run.errors;
  EXPECT_EQ(home.titles(kUID).size(), 3U);
}

TEST_F(BadPreferences, OwnKeysOfAnotherTypeCountAsTheirDefaults) {
  home.setOwn({{"lastUpdate", "yesterday"}, {"alarmSet", 1}, {"doLog", PropertyList::Array{1}}});
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(home.titles(kUID), (Texts{"Ann", "Ann", "Ann"}));
}

}  // namespace
}  // namespace annivo
