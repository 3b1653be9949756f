// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "run/AnvCalPrefs.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

PropertyList row(const char* type, const char* days, bool selected) {
  return PropertyList::Dictionary{{"type", type},
                                  {"days", days},
                                  {"time", utc(2026, 11, 20, 7)},  // 08:00 in Berlin
                                  {"birth", selected},
                                  {"anni", selected}};
}

TEST(AnvCalPrefs, YieldsExactlyTheDefaultsWithoutAParentDomain) {
  TestHome home({.timeZone = "Europe/Berlin"});
  AnvCalPrefs prefs(home.platform());
  const PropertyList titles =
      PropertyList::Array{"First name", "Last name", ":", "ordinal age", "type"};
  const PropertyList expected = PropertyList::Dictionary{
      {"birthCalTitle", "Anniversary"},
      {"aneeCalTitle", "Anniversary"},
      {"birthCalUID", ""},
      {"aneeCalUID", ""},
      {"selectedGroup", " "},
      {"appRunning", true},
      {"titleBirthdays", titles},
      {"titleAnniversaries", titles},
      {"alarmTable", PropertyList::Array{row("Message", "2", true), row("None", "0", false),
                                         row("None", "0", false), row("None", "0", false),
                                         row("None", "0", false)}},
      {"setEmail", "No Email Set"},
      {"alarmFilePath", home.path()},
      {"selectedSystemSound", "Basso"}};
  EXPECT_EQ(prefs.prefs(), expected);
}

TEST(AnvCalPrefs, NamesBothCalendarsAfterAnniversariesInThePersonsLanguage) {
  TestHome home({.languages = {"de"}});
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.text("birthCalTitle"), "Jahrestag");
  EXPECT_EQ(prefs.text("aneeCalTitle"), "Jahrestag");
}

TEST(AnvCalPrefs, LaysStoredValuesOverTheDefaultsAndKeepsUnknownKeys) {
  TestHome home;
  home.parentPreferences({{"birthCalTitle", "Mine"}, {"selectedGroup", 5}, {"unknown", false}});
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.prefs()["birthCalTitle"], PropertyList("Mine"));
  EXPECT_EQ(prefs.prefs()["selectedGroup"], PropertyList(5));
  EXPECT_EQ(prefs.prefs()["unknown"], PropertyList(false));
  EXPECT_EQ(prefs.prefs()["aneeCalTitle"], PropertyList("Anniversary"));
}

TEST(AnvCalPrefs, OpensTheContactsForTheEmailAddressAlone) {
  TestHome home;
  const std::string store = "Library/Application Support/AddressBook/AddressBook-v22.abcddb";
  home.writeFile(store, "no store");
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.valueForKey("appRunning"), PropertyList(true));
  EXPECT_TRUE(prefs.valueForKey("SULastCheckTime").isNil());
  EXPECT_EQ(prefs.text("birthCalUID"), "");
  EXPECT_EQ(prefs.texts("titleBirthdays").size(), 5U);
  EXPECT_EQ(home.log.count(store), 0U);
  EXPECT_EQ(prefs.valueForKey("setEmail"), PropertyList("No Email Set"));
  EXPECT_EQ(home.log.count(store), 1U);
  EXPECT_EQ(prefs.prefs()["setEmail"], PropertyList("No Email Set"));
  EXPECT_EQ(home.log.count(store), 1U) << "and once";
}

TEST(AnvCalPrefs, IgnoresFallbackValuesOfOtherDomains) {
  TestHome home;
  home.preferences(kGlobalDomain, {{"birthCalUID", "global"}});
  home.ownPreferences({{"aneeCalUID", "own"}});
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.text("birthCalUID"), "");
  EXPECT_EQ(prefs.text("aneeCalUID"), "");
}

TEST(AnvCalPrefs, DoesNotSeeWhatIsWrittenDuringTheRun) {
  TestHome home;
  home.parentPreferences({{"birthCalUID", "before"}});
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.text("birthCalUID"), "before");
  home.platform().appPreferences().setAppValue("birthCalUID", "after", kParentDomain);
  ASSERT_TRUE(home.platform().appPreferences().appSynchronize(kParentDomain).ok());
  EXPECT_EQ(prefs.text("birthCalUID"), "before");
}

TEST(AnvCalPrefs, ReportsAValueOfAnotherTypeOnceAndUsesTheDefault) {
  TestHome home;
  home.parentPreferences({{"aneeCalTitle", 5}, {"titleBirthdays", PropertyList::Array{"age", 5}}});
  AnvCalPrefs prefs(home.platform());
  EXPECT_EQ(prefs.text("aneeCalTitle"), "Anniversary");
  EXPECT_EQ(prefs.text("aneeCalTitle"), "Anniversary");
  EXPECT_EQ(prefs.texts("titleBirthdays"), std::vector<std::string>{"age"});
  EXPECT_EQ(home.log.count("org.annivo.Annivo2.plist: the value of \"aneeCalTitle\""), 1U);
  EXPECT_EQ(home.log.count("org.annivo.Annivo2.plist: the value of \"titleBirthdays\""), 1U);
  EXPECT_EQ(prefs.prefs()["aneeCalTitle"], PropertyList(5)) << "handed on as it is";
  AnvCalPrefs others(home.platform());
  (void)others.prefs();
  EXPECT_EQ(home.log.lines().size(), 2U);
}

}  // namespace
}  // namespace annivo
