// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "tests/e2e/UpdateHome.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

using UpdateCheck = UpdateHome;

TEST_F(UpdateCheck, HandsOverToTheParentWhenAnUpdateIsFound) {
  const Date before = now();
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  EXPECT_EQ(agent.log,
            (std::vector<std::string>{"Annivo starting", "Opening Annivo to receive update."}));
  EXPECT_NE(product.waitForParent(), "");
  EXPECT_EQ(server.requests(), std::vector<std::string>{"/version/2.0.1"});

  EXPECT_GE(lastCheck(), before - std::chrono::days{365});
  EXPECT_LE(lastCheck(), now() - std::chrono::days{365});
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

TEST_F(UpdateCheck, HandsOverForAnUpdateThatFitsThisSystem) {
  feed("/version/9?minimumSystemVersion=10.7.5&maximumSystemVersion=10.7.5");
  EXPECT_EQ(run().log.back(), "Opening Annivo to receive update.");
  EXPECT_NE(product.waitForParent(), "");
}

TEST_F(UpdateCheck, GoesOnWithTheRunForAVersionThatThePersonSkipped) {
  prefer({{"SUSkippedVersion", "2.0.1"}});
  expectAFullRun(run());
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(UpdateCheck, AsksTheFeedOnceInAnInterval) {
  feed("/none");
  expectAFullRun(run());
  EXPECT_TRUE(run().logged("Annivo ending - nothing to update"));
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(UpdateCheck, HandsOverBeforeASwitchedOffAgentEmptiesItsCalendars) {
  prefer({{"appRunning", false}});
  EXPECT_EQ(run().log.back(), "Opening Annivo to receive update.");
  EXPECT_NE(product.waitForParent(), "");
}

TEST_F(UpdateCheck, GivesTheParentNoArgumentAndNoneOfItsOpenFiles) {
  const int inherited = ::open("/dev/zero", O_RDONLY);  // the agent gets it, its parent must not
  ASSERT_GE(inherited, 0);
  EXPECT_EQ(run().status, 0);
  ::close(inherited);
  EXPECT_EQ(product.waitForParent(),
            "Annivo 2 []\nfiles 0=/dev/null 1=/dev/null 2=/dev/null\nsession of its own True\n");
}

TEST_F(UpdateCheck, EndsWhileTheParentThatItStartedGoesOn) {
  product.holdParent();
  EXPECT_EQ(run().status, 0);
  EXPECT_FALSE(product.parentWasStarted());
  product.releaseParent();
  EXPECT_NE(product.waitForParent(), "") << "it outlives the agent";
}

TEST_F(UpdateCheck, StartsTheParentOfThePersonsApplicationsWhereTheEnclosingIsAnother) {
  product.replace("Info.plist", xmlPropertyList(PropertyList::Dictionary{
                                    {"CFBundleIdentifier", "org.example.Renamed"},
                                    {"CFBundleVersion", "2.0.0"},
                                    {"SUFeedURL", server.url("/version/2.0.1")}}));
  const std::string contents = "Applications/Elsewhere.app/Contents/";
  home.folder.writeFile(contents + "Info.plist", xmlPropertyList(PropertyList::Dictionary{
                                                     {"CFBundleIdentifier", "org.annivo.Annivo2"},
                                                     {"CFBundleExecutable", "Starter"}}));
  home.folder.makeFolder(contents + "Linux");
  fs::rename(product.path("Linux/Annivo 2"), home.folder.path(contents + "Linux/Starter"));
  EXPECT_EQ(run().status, 0);
  EXPECT_TRUE(product.waitForParent().starts_with("Starter []\n"));
}

TEST_F(UpdateCheck, EndsWhenThereIsNoParentToStart) {
  product.replace("Info.plist", xmlPropertyList(PropertyList::Dictionary{
                                    {"CFBundleIdentifier", "org.example.Renamed"},
                                    {"CFBundleVersion", "2.0.0"},
                                    {"SUFeedURL", server.url("/version/2.0.1")}}));
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  EXPECT_EQ(agent.log.back(), "Opening Annivo to receive update.");
  EXPECT_TRUE(home.titles(kCalendar).empty());
  EXPECT_FALSE(home.own().contains("lastUpdate"));
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
  const Date before = now();
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_FALSE(server.requests().empty());
  EXPECT_EQ(agent.mentions("No update check of"), GetParam().isLogged) << agent.errors;
  // The next check waits for the interval, a week, or, where this one failed, for a day of it.
  const std::chrono::days skipped{GetParam().isLogged ? 6 : 0};
  EXPECT_GE(lastCheck(), before - skipped);
  EXPECT_LE(lastCheck(), now() - skipped);
  EXPECT_TRUE(home.own().contains("lastUpdate"));
}

INSTANTIATE_TEST_SUITE_P(
    Feeds, UpdateCheckWithout,
    testing::Values(Feed{"Equal", "/version/2.0.0", false}, Feed{"Older", "/version/1.9", false},
                    Feed{"None", "/none", false},
                    Feed{"ForANewerSystem", "/version/9?minimumSystemVersion=10.7.6", false},
                    Feed{"ForAnOlderSystem", "/version/9?maximumSystemVersion=10.7.4", false},
                    Feed{"OfAnotherChannel", "/version/9?channel=beta", false},
                    Feed{"Broken", "/broken", true}, Feed{"Empty", "/empty", true},
                    Feed{"FiftyMegabytes", "/size/50000000", true},
                    Feed{"FiftyMegabytesInChunks", "/chunks/50000000", true},
                    Feed{"Endless", "/endless", true}, Feed{"RedirectLoop", "/loop", true},
                    Feed{"CutShort", "/short", true}, Feed{"NotFound", "/status/404", true},
                    Feed{"RedirectToDisk", "/redirect?to=file:///etc/passwd", true}),
    [](const auto& feedInfo) { return feedInfo.param.name; });

/// The time at the front of the first line with `text`, in seconds of the day.
double secondsAt(const AgentRun& run, const std::string& text) {
  const std::size_t line = run.errors.rfind('\n', run.errors.find(text)) + 1;  // npos + 1 is 0
  int hours = 0, minutes = 0;
  double seconds = 0;
  EXPECT_EQ(
      std::sscanf(run.errors.c_str() + line, "%*d-%*d-%*d %d:%d:%lf", &hours, &minutes, &seconds),
      3)
      << run.errors;
  return hours * 3600 + minutes * 60 + seconds;
}

TEST_F(UpdateCheck, WaitsForAServerThatNeverEndsItsAnswerUntilTheModuleGivesUp) {
  for (const char* path : {"/silent", "/drops"}) {
    prefer({{"SUFeedURL", server.url(path)}, {"SULastCheckTime", now() - std::chrono::days{8}}});
    // The clock of the agent runs fast, so that its minute is soon over.
    const AgentRun agent = run(anotherClock("+0 x20"));
    EXPECT_EQ(agent.status, 0) << agent.errors;
    EXPECT_TRUE(agent.mentions("The time limit was reached.")) << agent.errors;
    EXPECT_TRUE(agent.mentions("Annivo ending")) << agent.errors;
    EXPECT_FALSE(product.parentWasStarted());
    const double day = 24 * 3600;
    const double waited = std::fmod(
        day + secondsAt(agent, "No update check") - secondsAt(agent, "Annivo starting"), day);
    EXPECT_GE(waited, 60 - 1);
  }
}

TEST_F(UpdateCheck, RefusesAServerThatNobodyVouchesFor) {
  const TemporaryFolder folder;
  const FeedServer secure(makeCertificate(folder, "IP:127.0.0.1"));
  prefer({{"SUFeedURL", secure.url("/version/2.0.1")}});
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_TRUE(agent.mentions("certificate")) << agent.errors;
  EXPECT_TRUE(secure.requests().empty());
}

TEST_F(UpdateCheck, FindsNothingWithoutTheAddressOfAFeed) {
  prefer({{"SUFeedURL", {}}});
  product.replace("Info.plist",
                  xmlPropertyList(PropertyList::Dictionary{
                      {"CFBundleVersion", "2.0.0"}, {"CFBundleIdentifier", "org.annivo.Annivo2"}}));
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_TRUE(agent.mentions("No update check of \"\"")) << agent.errors;
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
  const auto frozen = anotherClock("2026-11-20 18:46:00");
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
              {(std::int64_t{1} << 32) + 10, 9s, false},
              {(std::int64_t{1} << 32) + 10, 10s, true},
              // What has no integer value counts as missing.
              {PropertyList::Array{1}, 604799s, false},
              {PropertyList::Dictionary{{"a", 1}}, 604800s, true}};
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

}  // namespace
}  // namespace annivo
