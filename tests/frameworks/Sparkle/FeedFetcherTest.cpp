// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "frameworks/Sparkle/FeedFetcher.h"
#include "tests/support/FeedServer.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMiB = std::size_t{1024} * 1024;

/// Fetches on a run loop of its own to the end and holds the fetcher to its contract.
Result<std::string> fetch(const std::string& address, const FeedLimits& limits = {}) {
  NSRunLoop loop;
  FeedFetcher fetcher(loop, limits);
  std::optional<Result<std::string>> answer;
  int calls = 0;
  fetcher.fetch(address, [&](const Result<std::string>& content) {
    ++calls;
    answer = content;
  });
  EXPECT_EQ(calls, 0) << "answered before the run loop ran";
  while (!answer) {
    if (!loop.runModeForInterval(100ms)) {
      ADD_FAILURE() << "the run loop has no source while a fetch is under way";
      return Error{};
    }
  }
  EXPECT_FALSE(loop.runModeForInterval(0ms)) << "a source is left behind";
  EXPECT_EQ(calls, 1);
  return *answer;
}

std::string reasonFor(const std::string& address, const FeedLimits& limits = {}) {
  const auto answer = fetch(address, limits);
  return answer ? "(fetched)" : answer.error().failureReason;
}

TEST(FeedFetcher, FetchesAFeed) {
  const FeedServer server;
  const auto feed = fetch(server.url("/version/2.1"));
  ASSERT_TRUE(feed) << feed.error().text();
  EXPECT_NE(feed->find("sparkle:version=\"2.1\""), std::string::npos);
  EXPECT_EQ(server.requests(), std::vector<std::string>{"/version/2.1"});
}

TEST(FeedFetcher, FetchesAnEmptyAnswer) {
  const FeedServer server;
  const auto feed = fetch(server.url("/empty"));
  ASSERT_TRUE(feed);
  EXPECT_EQ(*feed, "");
}

TEST(FeedFetcher, FetchesTwice) {
  const FeedServer server;
  NSRunLoop loop;
  FeedFetcher fetcher(loop);
  int fetched = 0;
  for (int i = 0; i < 2; ++i) {
    bool done = false;
    fetcher.fetch(server.url("/none"), [&](const Result<std::string>& feed) {
      done = true;
      if (feed) ++fetched;
    });
    while (!done) ASSERT_TRUE(loop.runModeForInterval(100ms));
  }
  EXPECT_EQ(fetched, 2);
}

TEST(FeedFetcher, RefusesAddressesThatAreNotOfTheWeb) {
  for (const char* address : {"", "file:///etc/passwd", "ftp://127.0.0.1/feed", "feed.xml",
                              "http:", "gopher://127.0.0.1/"}) {
    EXPECT_EQ(reasonFor(address), "The address is neither http nor https.") << address;
  }
}

TEST(FeedFetcher, FailsWhenNobodyListens) {
  std::string url;
  {
    const FeedServer server;
    url = server.url("/none");
  }
  EXPECT_NE(reasonFor(url).find("Failed to connect"), std::string::npos) << reasonFor(url);
}

TEST(FeedFetcher, FailsForAnAddressThatIsNone) {
  EXPECT_NE(reasonFor("http://[::1"), "(fetched)");
  EXPECT_NE(reasonFor("http://127.0.0.1:99999/"), "(fetched)");
}

TEST(FeedFetcher, TakesNothingButStatus200) {
  const FeedServer server;
  EXPECT_EQ(reasonFor(server.url("/status/404")), "The server answered 404.");
  EXPECT_EQ(reasonFor(server.url("/status/500")), "The server answered 500.");
  EXPECT_EQ(reasonFor(server.url("/status/203")), "The server answered 203.");
}

TEST(FeedFetcher, FailsWhenTheAnswerIsCutShort) {
  const FeedServer server;
  EXPECT_NE(reasonFor(server.url("/short")), "(fetched)");
}

TEST(FeedFetcher, HoldsAnswersToTheirLimitBelowAtAndAbove) {
  const FeedServer server;
  const auto answer = fetch(server.url("/size/1000"));
  ASSERT_TRUE(answer);
  // The headers count too. What they come to, the limit itself tells.
  std::size_t limit = 1000;
  while (!fetch(server.url("/size/1000"), {.bytes = limit})) ASSERT_LT(++limit, 2000u);
  EXPECT_GT(limit, 1000u);
  EXPECT_EQ(fetch(server.url("/size/1000"), {.bytes = limit + 1})->size(), 1000u);
  EXPECT_EQ(reasonFor(server.url("/size/1001"), {.bytes = limit}), "The answer is too long.");
}

TEST(FeedFetcher, StopsAtFiveMebibytesByItself) {
  const FeedServer server;
  EXPECT_TRUE(fetch(server.url("/size/" + std::to_string(5 * kMiB - 4096))));
  EXPECT_NE(reasonFor(server.url("/size/50000000")), "(fetched)");
  EXPECT_EQ(reasonFor(server.url("/chunks/50000000")), "The answer is too long.");
}

TEST(FeedFetcher, StopsAnAnswerThatNeverEnds) {
  const FeedServer server;
  EXPECT_EQ(reasonFor(server.url("/endless")), "The answer is too long.");
}

TEST(FeedFetcher, StopsHeadersThatNeverEnd) {
  const FeedServer server;
  EXPECT_NE(reasonFor(server.url("/headers")), "(fetched)");
}

TEST(FeedFetcher, GivesUpOnAServerThatNeverAnswers) {
  const FeedServer server;
  const auto start = NSRunLoop::Clock::now();
  EXPECT_EQ(reasonFor(server.url("/silent"), {.time = 400ms}), "The time limit was reached.");
  const auto took = NSRunLoop::Clock::now() - start;
  EXPECT_GE(took, 400ms);
  EXPECT_LT(took, 5s);
}

TEST(FeedFetcher, GivesUpOnAnAnswerThatComesInDrops) {
  const FeedServer server;
  EXPECT_EQ(reasonFor(server.url("/drops"), {.time = 400ms}), "The time limit was reached.");
}

TEST(FeedFetcher, FollowsRedirectsToTheirLimit) {
  const FeedServer server;
  EXPECT_TRUE(fetch(server.url("/hops/10")));
  EXPECT_EQ(reasonFor(server.url("/hops/11")), "There are too many redirects.");
}

TEST(FeedFetcher, LeavesALoopOfRedirects) {
  const FeedServer server;
  EXPECT_EQ(reasonFor(server.url("/loop")), "There are too many redirects.");
  EXPECT_EQ(server.requests().size(), 11u);
}

TEST(FeedFetcher, FollowsNoRedirectOutOfTheWeb) {
  const FeedServer server;
  EXPECT_EQ(reasonFor(server.url("/redirect?to=file:///etc/passwd")),
            "The server redirects to an address that is not secure.");
  EXPECT_EQ(reasonFor(server.url("/redirect?to=ftp://127.0.0.1/feed")),
            "The server redirects to an address that is not secure.");
}

TEST(FeedFetcher, AllowsRedirectsByTheirSchemes) {
  EXPECT_TRUE(redirectIsAllowed("http://a/", "http://b/"));
  EXPECT_TRUE(redirectIsAllowed("http://a/", "https://b/"));
  EXPECT_TRUE(redirectIsAllowed("https://a/", "HTTPS://b/"));
  EXPECT_FALSE(redirectIsAllowed("https://a/", "http://b/"));
  EXPECT_FALSE(redirectIsAllowed("HTTPS://a/", "http://b/"));
  EXPECT_FALSE(redirectIsAllowed("https://a/", "file:///b"));
  EXPECT_FALSE(redirectIsAllowed("http://a/", "file:///b"));
}

TEST(FeedFetcher, RefusesACertificateThatNobodyVouchesFor) {
  const TemporaryFolder folder;
  const FeedServer server(makeCertificate(folder, "IP:127.0.0.1"));
  const std::string reason = reasonFor(server.url("/version/2.1"));
  EXPECT_NE(reason.find("certificate"), std::string::npos) << reason;
  EXPECT_TRUE(server.requests().empty());
}

TEST(FeedFetcher, RefusesACertificateForAnotherHost) {
  const TemporaryFolder folder;
  const Certificate certificate = makeCertificate(folder, "DNS:host.example");
  const FeedServer server(certificate);
  const std::string reason =
      reasonFor(server.url("/version/2.1"), {.authorities = certificate.file});
  EXPECT_NE(reason, "(fetched)");
  EXPECT_TRUE(server.requests().empty());
}

TEST(FeedFetcher, FetchesOverHttpsAndStaysThere) {
  const TemporaryFolder folder;
  const Certificate certificate = makeCertificate(folder, "IP:127.0.0.1");
  const FeedServer secure(certificate);
  const FeedServer plain;
  const FeedLimits limits{.authorities = certificate.file};
  EXPECT_TRUE(fetch(secure.url("/version/2.1"), limits));
  EXPECT_TRUE(fetch(secure.url("/hops/2"), limits));
  EXPECT_TRUE(fetch(plain.url("/redirect?to=" + secure.url("/version/3")), limits));
  EXPECT_EQ(reasonFor(secure.url("/redirect?to=" + plain.url("/version/3")), limits),
            "The server redirects to an address that is not secure.");
  EXPECT_EQ(reasonFor(plain.url("/redirect?to=" + secure.url("/redirect?to=" + plain.url("/none"))),
                      limits),
            "The server redirects to an address that is not secure.")
      << "once secure, a road stays so";
}

TEST(FeedFetcher, ForgetsAFetchThatItsEndCancels) {
  const FeedServer server;
  NSRunLoop loop;
  {
    FeedFetcher fetcher(loop);
    fetcher.fetch(server.url("/silent"), [](const auto&) { FAIL() << "called after its end"; });
    loop.runModeForInterval(100ms);
  }
  EXPECT_FALSE(loop.runModeForInterval(0ms));
}

TEST(FeedFetcher, LetsItsCompletionThrow) {
  const FeedServer server;
  NSRunLoop loop;
  {
    FeedFetcher fetcher(loop);
    fetcher.fetch(server.url("/none"), [](const auto&) { throw std::runtime_error("out"); });
    EXPECT_THROW(
        {
          while (loop.runModeForInterval(100ms)) {
          }
        },
        std::runtime_error);
  }
  EXPECT_FALSE(loop.runModeForInterval(0ms));
}

TEST(FeedFetcher, LetsItsCompletionEndIt) {
  const FeedServer server;
  NSRunLoop loop;
  auto fetcher = std::make_unique<FeedFetcher>(loop);
  fetcher->fetch(server.url("/none"), [&](const auto&) { fetcher.reset(); });
  while (fetcher) ASSERT_TRUE(loop.runModeForInterval(100ms));
  EXPECT_FALSE(loop.runModeForInterval(0ms));
}

}  // namespace
}  // namespace annivo
