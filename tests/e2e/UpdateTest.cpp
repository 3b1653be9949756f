// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <thread>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/ProductCopy.h"
#include "tests/support/Doubles.h"
#include "tests/support/FeedServer.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr const char* kCalendar = "B1B1B1B1-0000-4000-8000-000000000001";
const std::string kFramework = "Frameworks/Sparkle.framework/";

Date now() {
  return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

/// The preloaded library that gives a process another clock.
std::string clockLibrary() {
  for (const auto& folder : fs::directory_iterator("/usr/lib")) {
    const fs::path library = folder.path() / "faketime/libfaketime.so.1";
    if (fs::exists(library)) return library.string();
  }
  return "";
}

/// A home with a birthday to write, a parent with automatic checks whose last one is eight days
/// old, and a server of feeds. The product is version 2.0.0.
class UpdateCheck : public testing::Test {
 protected:
  void SetUp() override {
    home.addCalendar(kCalendar, "Birthdays");
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    home.setOwn({{"doLog", 1}});
    prefer({{"birthCalTitle", "Birthdays"},
            {"birthCalUID", kCalendar},
            {"titleBirthdays", PropertyList::Array{"First name"}},
            {"setEmail", "me@example.org"},
            {"alarmTable", PropertyList::Array{}},
            {"SUEnableAutomaticChecks", true},
            {"SULastCheckTime", now() - std::chrono::days{8}},
            {"SUFeedURL", server.url("/version/2.0.1")}});
  }
  /// Changes preferences of the parent; nil removes.
  void prefer(const PropertyList::Dictionary& values) const {
    PropertyList::Dictionary parent;
    if (home.folder.exists("Library/Preferences/org.annivo.Annivo2.plist")) parent = home.parent();
    for (const auto& [key, value] : values) parent[key] = value;
    std::erase_if(parent, [](const auto& entry) { return entry.second.isNil(); });
    home.setParent(parent);
  }
  void feed(const std::string& path) const { prefer({{"SUFeedURL", server.url(path)}}); }
  [[nodiscard]] AgentRun run(const std::map<std::string, std::string>& environment = {}) const {
    return home.run(environment, product.agent());
  }
  void expectAFullRun(const AgentRun& run) const {
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(run.logged("Annivo ending")) << run.errors;
    EXPECT_EQ(home.titles(kCalendar).size(), 3u);
    EXPECT_FALSE(product.parentWasStarted());
  }

  AgentHome home;
  ProductCopy product;
  FeedServer server;
};

TEST_F(UpdateCheck, HandsOverToTheParentWhenAnUpdateIsFound) {
  const Date before = now();
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  EXPECT_EQ(agent.log,
            (std::vector<std::string>{"Annivo starting", "Opening Annivo to receive update."}));
  EXPECT_EQ(product.waitForParent(), "arguments 0\ninput /dev/null\n");
  EXPECT_EQ(server.requests(), std::vector<std::string>{"/version/2.0.1"});

  const PropertyList::Dictionary parent = home.parent();
  const Date* checked = parent.at("SULastCheckTime").date();
  ASSERT_TRUE(checked);
  EXPECT_GE(*checked, before - std::chrono::days{365});
  EXPECT_LE(*checked, now() - std::chrono::days{365});
  EXPECT_FALSE(home.own().contains("lastUpdate"));
  EXPECT_TRUE(home.titles(kCalendar).empty()) << "the rest of the run never happens";
}

TEST_F(UpdateCheck, LeavesAStoredLastUpdateUntouchedWhenHandingOver) {
  const Date last = utc(2020, 1, 2, 3, 4);
  home.setOwn({{"lastUpdate", last}});
  EXPECT_EQ(run().status, 0);
  EXPECT_NE(product.waitForParent(), "");
  EXPECT_EQ(*home.own().at("lastUpdate").date(), last);
}

TEST_F(UpdateCheck, HandsOverBeforeASwitchedOffAgentEmptiesItsCalendars) {
  prefer({{"appRunning", false}});
  EXPECT_EQ(run().log.back(), "Opening Annivo to receive update.");
  EXPECT_NE(product.waitForParent(), "");
}

TEST_F(UpdateCheck, EndsEvenWhenTheParentCannotBeStarted) {
  product.remove("Linux/Annivo 2");
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  EXPECT_TRUE(agent.logged("Opening Annivo to receive update."));
  EXPECT_TRUE(home.titles(kCalendar).empty());
}

struct Feed {
  const char* name;
  const char* path;
  bool isLogged;
};
void PrintTo(const Feed& feed, std::ostream* out) { *out << feed.name; }
class UpdateCheckWithout : public UpdateCheck, public testing::WithParamInterface<Feed> {};

TEST_P(UpdateCheckWithout, AnUpdateGoesOnWithTheRun) {
  feed(GetParam().path);
  const Date last = *home.parent().at("SULastCheckTime").date();
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_FALSE(server.requests().empty());
  EXPECT_EQ(agent.mentions("No update check of"), GetParam().isLogged) << agent.errors;
  EXPECT_EQ(*home.parent().at("SULastCheckTime").date(), last);
  EXPECT_TRUE(home.own().contains("lastUpdate"));
}

INSTANTIATE_TEST_SUITE_P(
    Feeds, UpdateCheckWithout,
    testing::Values(Feed{"Equal", "/version/2.0.0", false}, Feed{"Older", "/version/1.9", false},
                    Feed{"None", "/none", false}, Feed{"Broken", "/broken", true},
                    Feed{"Empty", "/empty", true}, Feed{"FiftyMegabytes", "/size/50000000", true},
                    Feed{"FiftyMegabytesInChunks", "/chunks/50000000", true},
                    Feed{"Endless", "/endless", true}, Feed{"RedirectLoop", "/loop", true},
                    Feed{"CutShort", "/short", true}, Feed{"NotFound", "/status/404", true},
                    Feed{"RedirectToDisk", "/redirect?to=file:///etc/passwd", true}),
    [](const auto& feedInfo) { return feedInfo.param.name; });

TEST_F(UpdateCheck, WaitsForAServerThatNeverAnswersUntilTheModuleGivesUp) {
  auto silent = std::make_unique<FeedServer>();
  prefer({{"SUFeedURL", silent->url("/silent")}});
  auto agent = std::async(std::launch::async, [this] { return run(); });
  EXPECT_EQ(agent.wait_for(3s), std::future_status::timeout) << "the agent adds no limit";
  EXPECT_TRUE(home.titles(kCalendar).empty());
  silent.reset();  // the connection ends, and with it the module's check
  const AgentRun ended = agent.get();
  expectAFullRun(ended);
  EXPECT_TRUE(ended.mentions("No update check of")) << ended.errors;
}

TEST_F(UpdateCheck, RefusesAFeedOnTheDisk) {
  home.folder.writeFile("feed.xml", "<rss><channel/></rss>");
  prefer({{"SUFeedURL", "file://" + home.folder.path("feed.xml")}});
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_TRUE(agent.mentions("neither http nor https"));
}

TEST_F(UpdateCheck, IsNotMadeUnlessItIsSwitchedOn) {
  for (const PropertyList& value : {PropertyList(), PropertyList(false), PropertyList(0)}) {
    prefer({{"SUEnableAutomaticChecks", value}});
    expectAFullRun(run());
    home.setOwn({{"doLog", 1}});
  }
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdateCheck, IsNotMadeWithoutARecordOfACheck) {
  prefer({{"SULastCheckTime", {}}});
  expectAFullRun(run());
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdateCheck, IsNotMadeWithALastCheckInTheFuture) {
  prefer({{"SULastCheckTime", now() + std::chrono::days{8}}, {"SUScheduledCheckInterval", 1}});
  expectAFullRun(run());
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdateCheck, IsMadeAtEveryRunWithAnIntervalOfZero) {
  feed("/none");
  prefer({{"SULastCheckTime", {}}, {"SUScheduledCheckInterval", 0}});
  (void)run();
  (void)run();
  EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(UpdateCheck, IsDueOnceTheIntervalHasPassedInWholeSeconds) {
  const std::string library = clockLibrary();
  ASSERT_NE(library, "") << "the package faketime is missing";
  const std::map<std::string, std::string> frozen{{"LD_PRELOAD", library},
                                                  {"FAKETIME", "2026-11-20 18:46:00"},
                                                  {"NO_FAKE_STAT", "1"},
                                                  {"FAKETIME_DONT_FAKE_MONOTONIC", "1"},
                                                  {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
  const Date frozenNow = utc(2026, 11, 20, 18, 46);
  const struct {
    PropertyList interval;
    std::chrono::seconds elapsed;
    bool due;
  } rows[] = {{{}, 604799s, false},
              {{}, 604800s, true},
              {{}, 604801s, true},
              {3600, 3599s, false},
              {3600, 3600s, true},
              {-5, 0s, true},
              {0, 0s, true},
              {0, -1s, false},
              {"3600", 3600s, true},
              {std::int64_t{1} << 32, 0s, true},
              {(std::int64_t{1} << 32) + 10, 9s, false}};
  feed("/none");
  for (const auto& row : rows) {
    prefer(
        {{"SUScheduledCheckInterval", row.interval}, {"SULastCheckTime", frozenNow - row.elapsed}});
    const std::size_t before = server.requests().size();
    const AgentRun agent = run(frozen);
    EXPECT_EQ(agent.status, 0) << agent.errors;
    EXPECT_EQ(server.requests().size() - before, row.due ? 1u : 0u)
        << row.interval.integerValue() << " " << row.elapsed.count();
  }
}

TEST_F(UpdateCheck, LoadsTheModuleAndTheNetworkLibraryOnlyWhenDue) {
  const std::map<std::string, std::string> traced{{"LD_DEBUG", "files"}};
  feed("/none");
  const AgentRun due = run(traced);
  EXPECT_NE(due.errors.find("Sparkle.framework"), std::string::npos);
  EXPECT_NE(due.errors.find("libcurl"), std::string::npos);

  prefer({{"SULastCheckTime", now()}});
  const AgentRun idle = run(traced);
  EXPECT_NE(idle.errors.find("libc.so"), std::string::npos) << "the trace itself works";
  EXPECT_EQ(idle.errors.find("Sparkle.framework"), std::string::npos);
  EXPECT_EQ(idle.errors.find("libcurl"), std::string::npos);
}

/// Each damages the framework of the copied product.
class UpdateCheckWithFramework : public UpdateCheck {
 protected:
  void expectNotLoaded() {
    const AgentRun agent = run();
    expectAFullRun(agent);
    EXPECT_TRUE(agent.logged("Sparkle framework not loaded.")) << agent.errors;
    EXPECT_TRUE(server.requests().empty());
  }
};

TEST_F(UpdateCheckWithFramework, MissingGoesOnWithTheRun) {
  product.remove(kFramework);
  expectNotLoaded();
}

TEST_F(UpdateCheckWithFramework, UnreadableGoesOnWithTheRun) {
  product.remove(kFramework + "Versions/A/Sparkle");
  fs::create_directory(product.path(kFramework + "Versions/A/Sparkle"));
  expectNotLoaded();
}

TEST_F(UpdateCheckWithFramework, ThatIsNoSharedObjectGoesOnWithTheRun) {
  product.replace(kFramework + "Versions/A/Sparkle", "not a shared object");
  expectNotLoaded();
}

TEST_F(UpdateCheckWithFramework, WithoutItsPrincipalClassGoesOnWithTheRun) {
  product.replace(kFramework + "Versions/A/Resources/Info.plist",
                  xmlPropertyList(PropertyList::Dictionary{{"CFBundleExecutable", "Sparkle"}}));
  expectNotLoaded();
}

TEST_F(UpdateCheckWithFramework, MissingSaysNothingWithoutTheLoggingSwitch) {
  product.remove(kFramework);
  home.setOwn({});
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0);
  EXPECT_FALSE(agent.mentions("Sparkle")) << agent.errors;
}

}  // namespace
}  // namespace annivo
