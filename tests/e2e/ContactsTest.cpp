// SPDX-License-Identifier: MIT
// What a run makes of contacts stores: of each generation, unreadable, and on systems without a
// model for them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/ProductCopy.h"
#include "tests/support/EditDatabase.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* kResources =
    "SharedSupport/System/Library/Frameworks/AddressBook.framework/Versions/A/Resources/";
constexpr const char* kFolder = "Library/Application Support/AddressBook";

/// A home with two calendars; titles are first names.
class Contacts : public testing::Test {
 protected:
  void SetUp() override { prepare(home); }

  static void prepare(const AgentHome& home, const PropertyList::Dictionary& more = {}) {
    home.addCalendar(kBirthdays, "Birthdays");
    home.addCalendar(kAnniversaries, "Anniversaries");
    PropertyList::Dictionary parent{{"birthCalTitle", "Birthdays"},
                                    {"aneeCalTitle", "Anniversaries"},
                                    {"birthCalUID", kBirthdays},
                                    {"aneeCalUID", kAnniversaries},
                                    {"titleBirthdays", PropertyList::Array{"First name"}},
                                    {"titleAnniversaries", PropertyList::Array{"First name"}},
                                    {"setEmail", "me@example.org"},
                                    {"alarmTable", PropertyList::Array{}}};
    for (const auto& [key, value] : more) parent[key] = value;
    home.setParent(parent);
    home.setOwn({{"doLog", 1}});
  }
  /// The distinct titles of a calendar's events.
  static Texts people(const AgentHome& home, const char* calendar) {
    Texts names = home.titles(calendar);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
  }

  AgentHome home;
};

// Models.

struct NoModel {
  const char* name;
  void (*change)(const ProductCopy& product);
};

class WithoutAModel : public Contacts, public testing::WithParamInterface<NoModel> {};

TEST_P(WithoutAModel, ARunFailsAndTakesNothingAway) {
  home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10}),
                    personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4})});
  const ProductCopy product;
  ASSERT_EQ(home.run({}, product.agent()).status, 0);
  ASSERT_EQ(home.ledgerRecords(), 6U);

  GetParam().change(product);
  home.setContacts({personBorn("Sue", "Ray", {1990, 2, 28})});
  const auto before = home.fingerprint();
  const AgentRun failed = home.run({}, product.agent());
  EXPECT_GT(failed.status, 0) << failed.errors;
  EXPECT_TRUE(failed.mentions("Managed object model is nil")) << failed.errors;
  EXPECT_TRUE(failed.logged(
      "ZPKQueryAddressBookSection:persistentStoreCoordinator No model to generate a store from"));
  EXPECT_TRUE(failed.mentions("Failed to initialize the store")) << failed.errors;
  EXPECT_TRUE(failed.mentions("There was an error building up the data file."));
  EXPECT_FALSE(failed.logged("Annivo ending"));
  EXPECT_EQ(home.fingerprint(), before) << "calendars, ledger and preferences are untouched";

  ASSERT_EQ(home.run().status, 0);
  EXPECT_EQ(people(home, kBirthdays), Texts{"Sue"}) << "the next sound run makes up for it";
  EXPECT_EQ(people(home, kAnniversaries), Texts{});
}

INSTANTIATE_TEST_SUITE_P(
    Systems, WithoutAModel,
    testing::Values(NoModel{"Later", [](const ProductCopy& p) { p.setSystemVersion("10.8"); }},
                    NoModel{"MuchLater", [](const ProductCopy& p) { p.setSystemVersion("11.0"); }},
                    NoModel{"Earlier", [](const ProductCopy& p) { p.setSystemVersion("10.4.11"); }},
                    NoModel{"Unknown",
                            [](const ProductCopy& p) {
                              p.remove(
                                  "SharedSupport/System/Library/CoreServices/SystemVersion.plist");
                            }},
                    NoModel{"ModelMissing",
                            [](const ProductCopy& p) {
                              p.remove(std::string(kResources) + "ABAddressBook.momd");
                            }},
                    NoModel{"ModelMalformed",
                            [](const ProductCopy& p) {
                              p.replace(std::string(kResources) + "ABAddressBook.momd", "no model");
                            }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Contacts, TheModelOfEachFamilyReadsEveryGenerationAlone) {
  const std::pair<const char*, const char*> families[] = {{"10.5.8", "ABAddressBook.abz"},
                                                          {"10.6.8", "ABAddressBook.abmom"},
                                                          {"10.7.5", "ABAddressBook.momd"}};
  for (const auto& [version, model] : families) {
    const ProductCopy product;
    product.setSystemVersion(version);
    for (const auto& [other, file] : families) {
      if (file != model) product.remove(std::string(kResources) + file);
    }
    for (const auto generation :
         {StoreGeneration::olderA, StoreGeneration::olderB, StoreGeneration::current}) {
      SCOPED_TRACE(std::string(model) + " generation " +
                   std::to_string(static_cast<int>(generation)));
      AgentHome fresh;
      prepare(fresh, {{"selectedGroupUID", "OUTER:ABGroup"}});
      fresh.setContacts({personBorn("Ann", "Smith", {1980, 6, 10}),
                         personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4}),
                         personBorn("Out", "Side", {1980, 6, 10})},
                        {{.uniqueId = "OUTER:ABGroup", .name = "outer", .subgroups = {1}},
                         {.uniqueId = "INNER:ABGroup", .name = "inner", .people = {0, 1}}},
                        generation);
      const AgentRun run = fresh.run({}, product.agent());
      EXPECT_EQ(run.status, 0) << run.errors;
      EXPECT_EQ(people(fresh, kBirthdays), Texts{"Ann"}) << run.errors;
      EXPECT_EQ(people(fresh, kAnniversaries), Texts{"Bob"}) << run.errors;
    }
  }
}

// Stores that are not as they should be.

struct BadSource {
  const char* name;
  void (*spoil)(const AgentHome& home, const std::string& store);
};

class WithABadSource : public Contacts, public testing::WithParamInterface<BadSource> {
 protected:
  /// Lines that put a text before the person, whom there is none of.
  static std::ptrdiff_t presented(const AgentRun& run, const std::string& text) {
    return std::count_if(run.log.begin(), run.log.end(), [&](const std::string& line) {
      return line.starts_with("Nobody to ask") && line.find(text) != std::string::npos;
    });
  }
};

TEST_P(WithABadSource, ARunSaysSoOnceAndWritesTheDatesOfTheOtherStores) {
  home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
  home.setContacts({personBorn("Bad", "Store", {1980, 6, 10})}, {}, StoreGeneration::current, "A");
  home.setContacts({personWithDate("Bob", "Jones", "_$!<Anniversary>!$_", {2001, 3, 4})}, {},
                   StoreGeneration::current, "B");
  GetParam().spoil(home, AgentHome::storeOf("A"));
  const auto stores = home.folder.fingerprint(kFolder);
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 1) << run.errors;
  EXPECT_EQ(people(home, kBirthdays), Texts{"Ann"});
  EXPECT_EQ(people(home, kAnniversaries), Texts{"Bob"});
  EXPECT_EQ(presented(run, home.folder.path(AgentHome::storeOf("A"))), 1) << run.errors;
  EXPECT_EQ(presented(run, "Failed to initialize the store"), 1) << run.errors;
  EXPECT_EQ(presented(run, ""), 2) << run.errors;
  EXPECT_EQ(home.folder.fingerprint(kFolder), stores);
}

INSTANTIATE_TEST_SUITE_P(
    Sources, WithABadSource,
    testing::Values(BadSource{"NoDatabase",
                              [](const AgentHome& home, const std::string& store) {
                                home.folder.writeFile(store, std::string(8192, 'x'));
                              }},
                    BadSource{"Truncated",
                              [](const AgentHome& home, const std::string& store) {
                                const std::string whole = home.folder.readFile(store);
                                home.folder.writeFile(store, whole.substr(0, whole.size() / 2));
                              }},
                    BadSource{"WithoutRecords",
                              [](const AgentHome& home, const std::string& store) {
                                EditDatabase(home.folder.path(store)).run("DROP TABLE ZABCDRECORD");
                              }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(WithABadSource, LockedForLongTheRunGoesOnWithoutIt) {
  home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
  home.setContacts({personBorn("Locked", "Store", {1980, 6, 10})}, {}, StoreGeneration::current,
                   "A");
  EditDatabase writer(home.folder.path(AgentHome::storeOf("A")));
  writer.run("BEGIN EXCLUSIVE");
  const auto stores = home.folder.fingerprint(kFolder);
  const AgentRun run = home.run();
  EXPECT_EQ(run.status, 1) << run.errors;
  EXPECT_EQ(people(home, kBirthdays), Texts{"Ann"});
  EXPECT_EQ(presented(run, home.folder.path(AgentHome::storeOf("A"))), 1) << run.errors;
  EXPECT_TRUE(run.mentions("another program has it locked")) << run.errors;
  EXPECT_EQ(home.folder.fingerprint(kFolder), stores);
}

TEST_F(Contacts, ADateWithoutAValueYieldsNoEventAndALineUnderTheLoggingSwitch) {
  StoredPerson undated = personWithDate("Una", "Dated", "x", {2001, 3, 4});
  undated.dates[0].day.reset();
  home.setContacts({undated, personWithDate("Bob", "Jones", "x", {2001, 3, 4})});
  const AgentRun logging = home.run();
  EXPECT_EQ(logging.status, 0) << logging.errors;
  EXPECT_TRUE(logging.logged("No date in the record D-UnaDated")) << logging.errors;
  EXPECT_EQ(people(home, kAnniversaries), Texts{"Bob"});

  AgentHome quiet;
  prepare(quiet);
  quiet.setOwn({});
  quiet.setContacts({undated});
  EXPECT_FALSE(quiet.run().mentions("No date in the record"));
}

// Days.

/// "SUMMARY DTSTART" of a calendar's events, the start without its year.
Texts daysOf(const AgentHome& home, const char* calendar) {
  Texts days;
  for (const auto& entry : fs::directory_iterator(home.eventsFolder(calendar))) {
    std::ifstream in(entry.path());
    std::string title, day;
    for (std::string line; std::getline(in, line);) {
      const std::string value = line.substr(0, line.find('\r')).substr(line.find(':') + 1);
      if (line.starts_with("SUMMARY:")) title = value;
      if (line.starts_with("DTSTART;VALUE=DATE:")) day = value.substr(4);
    }
    days.push_back(title + ' ' + day);
  }
  std::sort(days.begin(), days.end());
  days.erase(std::unique(days.begin(), days.end()), days.end());
  return days;
}

class InZone : public Contacts, public testing::WithParamInterface<const char*> {};

TEST_P(InZone, EveryEventIsOnThePersonsDay) {
  const std::pair<const char*, StoredDay> rows[] = {
      {"1604 winter 0131", {1604, 1, 31}},  {"1604 summer 0701", {1604, 7, 1}},
      {"1900 winter 0101", {1900, 1, 1}},   {"1900 summer 0731", {1900, 7, 31}},
      {"1980 winter 1231", {1980, 12, 31}}, {"1980 summer 0630", {1980, 6, 30}},
      {"2026 winter 0101", {2026, 1, 1}},   {"2026 summer 0704", {2026, 7, 4}}};
  std::vector<StoredPerson> stored;
  Texts expected;
  for (const auto& [name, day] : rows) {
    StoredPerson person = personBorn(name, "", day);
    person.dates = {{.uniqueId = std::string("D") + name, .label = "x", .day = day}};
    stored.push_back(person);
    expected.push_back(name + std::string(name).substr(std::string(name).rfind(' ')));
  }
  home.setContacts(stored);
  const AgentRun run = home.run({{"TZ", GetParam()}});
  ASSERT_EQ(run.status, 0) << run.errors;
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(daysOf(home, kBirthdays), expected);
  EXPECT_EQ(daysOf(home, kAnniversaries), expected);
}

TEST_F(Contacts, ADayThatTheZoneLeftOutComesBackOnThatDay) {
  const std::pair<const char*, StoredDay> rows[] = {{"Pacific/Apia", {2011, 12, 30}},
                                                    {"Pacific/Kiritimati", {1994, 12, 31}},
                                                    {"Pacific/Kwajalein", {1993, 8, 21}},
                                                    {"Asia/Manila", {1844, 12, 31}}};
  const char* const days[] = {"Ann 1230", "Ann 1231", "Ann 0821", "Ann 1231"};
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const auto& [zone, day] = rows[i];
    AgentHome fresh;
    prepare(fresh);
    StoredPerson person = personBorn("Ann", "", day);
    person.dates = {{.uniqueId = "D-Ann", .label = "x", .day = day}};
    fresh.setContacts({person});
    const AgentRun run = fresh.run({{"TZ", zone}});
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(daysOf(fresh, kBirthdays), Texts{days[i]}) << zone;
    EXPECT_EQ(daysOf(fresh, kAnniversaries), Texts{days[i]}) << zone;
  }
}

INSTANTIATE_TEST_SUITE_P(Days, InZone,
                         testing::Values("Etc/GMT+12", "UTC", "Asia/Kolkata", "Etc/GMT-12",
                                         "Pacific/Auckland", "Pacific/Apia", "Etc/GMT-13",
                                         "Pacific/Kiritimati", "Etc/GMT-14", "America/New_York"),
                         [](const auto& row) {
                           std::string name;
                           for (const char c : std::string(row.param)) {
                             if (c == '+') name += "West";
                             if (c == '-') name += "East";
                             if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += c;
                           }
                           return name;
                         });

}  // namespace
}  // namespace annivo
