// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/foundation/NSRunLoop.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_.data()), 0); }
  ~Pipe() {
    ::close(ends_[0]);
    closeWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  [[nodiscard]] int reading() const { return ends_[0]; }
  [[nodiscard]] int writing() const { return ends_[1]; }
  void put() const { EXPECT_EQ(::write(ends_[1], "x", 1), 1); }
  void take() const {
    char c = 0;
    EXPECT_EQ(::read(ends_[0], &c, 1), 1);
  }
  void closeWriting() {
    if (ends_[1] >= 0) ::close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  std::array<int, 2> ends_{-1, -1};
};

NSRunLoop::Time in(std::chrono::milliseconds delay) { return NSRunLoop::Clock::now() + delay; }

/// How long a wait took.
std::chrono::milliseconds took(const std::function<void()>& action) {
  const auto start = NSRunLoop::Clock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(NSRunLoop::Clock::now() - start);
}

TEST(NSRunLoop, DoesNotRunAtAllWithoutASource) {
  NSRunLoop loop;
  EXPECT_LT(took([&] { EXPECT_FALSE(loop.runModeBeforeDate(in(10s))); }), 1s);
}

TEST(NSRunLoop, DoesNotRunOnceItsLastSourceIsGone) {
  NSRunLoop loop;
  const Pipe pipe;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [](unsigned) {});
  const int timer = loop.addTimer(in(10s), [] {});
  loop.unwatch(pipe.reading());
  EXPECT_TRUE(loop.runModeBeforeDate(in(0ms)));
  loop.removeTimer(timer);
  EXPECT_FALSE(loop.runModeBeforeDate(in(10s)));
}

TEST(NSRunLoop, WaitsForItsLimitWhileNothingHappens) {
  NSRunLoop loop;
  const Pipe pipe;
  bool called = false;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [&](unsigned) { called = true; });
  const auto time = took([&] { EXPECT_TRUE(loop.runModeBeforeDate(in(100ms))); });
  EXPECT_GE(time, 100ms);
  EXPECT_LT(time, 5s);
  EXPECT_FALSE(called);
}

TEST(NSRunLoop, TakesALimitInThePastAsAGlance) {
  NSRunLoop loop;
  const Pipe pipe;
  int calls = 0;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [&](unsigned) { ++calls; });
  EXPECT_TRUE(loop.runModeBeforeDate(NSRunLoop::Time::min()));
  EXPECT_EQ(calls, 0);
  pipe.put();
  EXPECT_TRUE(loop.runModeBeforeDate(in(-1s)));
  EXPECT_EQ(calls, 1);
}

TEST(NSRunLoop, WakesForADescriptorLongBeforeItsLimit) {
  NSRunLoop loop;
  const Pipe pipe;
  unsigned got = 0;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [&](unsigned events) { got = events; });
  std::thread writer([&] {
    std::this_thread::sleep_for(50ms);
    pipe.put();
  });
  const auto time = took([&] { EXPECT_TRUE(loop.runModeBeforeDate(NSRunLoop::Time::max())); });
  writer.join();
  EXPECT_LT(time, 10s);
  EXPECT_EQ(got, NSRunLoop::kReadable);
}

TEST(NSRunLoop, TellsReadableFromWritable) {
  NSRunLoop loop;
  const Pipe pipe;
  unsigned got = 0;
  loop.watch(pipe.writing(), NSRunLoop::kReadable | NSRunLoop::kWritable,
             [&](unsigned events) { got = events; });
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(got, NSRunLoop::kWritable);
}

TEST(NSRunLoop, CountsAHangUpAsAllThatWasAskedFor) {
  NSRunLoop loop;
  Pipe pipe;
  unsigned got = 0;
  loop.watch(pipe.reading(), NSRunLoop::kReadable | NSRunLoop::kWritable,
             [&](unsigned events) { got = events; });
  pipe.closeWriting();
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(got, NSRunLoop::kReadable | NSRunLoop::kWritable);
}

TEST(NSRunLoop, ReplacesTheWatchOfADescriptor) {
  NSRunLoop loop;
  const Pipe pipe;
  std::string calls;
  loop.watch(pipe.writing(), NSRunLoop::kWritable, [&](unsigned) { calls += "a"; });
  loop.watch(pipe.writing(), NSRunLoop::kWritable, [&](unsigned) { calls += "b"; });
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(calls, "b");
}

TEST(NSRunLoop, CallsATimerOnceAndNotBeforeItsTime) {
  NSRunLoop loop;
  const Pipe keepsTheLoopRunning;
  loop.watch(keepsTheLoopRunning.reading(), NSRunLoop::kReadable, [](unsigned) {});
  int calls = 0;
  const auto due = in(80ms);
  loop.addTimer(due, [&] {
    ++calls;
    EXPECT_GE(NSRunLoop::Clock::now(), due);
  });
  loop.runModeBeforeDate(in(20ms));
  EXPECT_EQ(calls, 0);
  EXPECT_LT(took([&] { loop.runModeBeforeDate(in(20s)); }), 5s);
  EXPECT_EQ(calls, 1);
  loop.runModeBeforeDate(in(20ms));
  EXPECT_EQ(calls, 1);
}

TEST(NSRunLoop, CallsDueTimersInTheOrderOfTheirTimes) {
  NSRunLoop loop;
  std::string calls;
  loop.addTimer(in(-1ms), [&] { calls += "c"; });
  loop.addTimer(in(-3ms), [&] { calls += "a"; });
  loop.addTimer(in(-2ms), [&] { calls += "b"; });
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(calls, "abc");
}

TEST(NSRunLoop, DoesNotCallARemovedTimer) {
  NSRunLoop loop;
  std::string calls;
  int second = 0;
  loop.addTimer(in(-2ms), [&] {
    calls += "a";
    loop.removeTimer(second);
  });
  second = loop.addTimer(in(-1ms), [&] { calls += "b"; });
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(calls, "a");
  EXPECT_FALSE(loop.runModeBeforeDate(in(10s)));
}

TEST(NSRunLoop, ServesWhatAHandlerAddsInTheNextWait) {
  NSRunLoop loop;
  std::string calls;
  loop.addTimer(in(-1ms), [&] {
    calls += "a";
    loop.addTimer(in(-5ms), [&] { calls += "b"; });
  });
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(calls, "a");
  loop.runModeBeforeDate(in(10s));
  EXPECT_EQ(calls, "ab");
}

TEST(NSRunLoop, LetsAHandlerRemoveItselfAndOthers) {
  NSRunLoop loop;
  const Pipe first, second;
  const auto resources = std::make_shared<int>(7);
  int seen = 0;
  const auto handler = [&, resources](unsigned) {
    loop.unwatch(first.reading());
    loop.unwatch(second.reading());
    seen += *resources;  // what the handler holds lives on to its end
  };
  loop.watch(first.reading(), NSRunLoop::kReadable, handler);
  loop.watch(second.reading(), NSRunLoop::kReadable, handler);
  first.put();
  second.put();
  EXPECT_TRUE(loop.runModeBeforeDate(in(10s)));
  EXPECT_EQ(seen, 7);
  EXPECT_FALSE(loop.runModeBeforeDate(in(10s)));
}

TEST(NSRunLoop, DoesNotGiveAnOldEventToANewWatch) {
  NSRunLoop loop;
  const Pipe first, second;
  ASSERT_LT(first.reading(), second.reading());
  std::string calls;
  loop.watch(first.reading(), NSRunLoop::kReadable, [&](unsigned) {
    calls += "a";
    first.take();
    second.take();
    loop.watch(second.reading(), NSRunLoop::kReadable, [&](unsigned) { calls += "c"; });
  });
  loop.watch(second.reading(), NSRunLoop::kReadable, [&](unsigned) { calls += "b"; });
  first.put();
  second.put();
  loop.runModeBeforeDate(in(10s));
  loop.runModeBeforeDate(in(10ms));
  EXPECT_EQ(calls, "a");
}

TEST(NSRunLoop, ServesDescriptorsAndTimersInSlices) {
  NSRunLoop loop;
  const Pipe pipe;
  int reads = 0;
  bool done = false;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [&](unsigned) {
    pipe.take();
    ++reads;
  });
  loop.addTimer(in(250ms), [&] { done = true; });
  pipe.put();
  pipe.put();
  pipe.put();
  while (!done) ASSERT_TRUE(loop.runModeForInterval(100ms));
  EXPECT_EQ(reads, 3);
}

TEST(NSRunLoop, StaysUsableAfterAnExceptionInAHandler) {
  NSRunLoop loop;
  loop.addTimer(in(-2ms), [] { throw std::runtime_error("out"); });
  bool called = false;
  loop.addTimer(in(-1ms), [&] { called = true; });
  EXPECT_THROW(loop.runModeBeforeDate(in(10s)), std::runtime_error);
  EXPECT_FALSE(called);
  loop.runModeBeforeDate(in(10s));
  EXPECT_TRUE(called);
}

TEST(NSRunLoop, EndsAWaitEarlyWhenASignalInterruptsIt) {
  struct sigaction quiet {};
  struct sigaction before {};
  quiet.sa_handler = [](int) {};
  ASSERT_EQ(::sigaction(SIGUSR1, &quiet, &before), 0);
  NSRunLoop loop;
  const Pipe pipe;
  loop.watch(pipe.reading(), NSRunLoop::kReadable, [](unsigned) { FAIL(); });
  const pthread_t self = ::pthread_self();
  std::thread sender([self] {
    std::this_thread::sleep_for(50ms);
    ::pthread_kill(self, SIGUSR1);
  });
  EXPECT_LT(took([&] { EXPECT_TRUE(loop.runModeBeforeDate(in(20s))); }), 10s);
  sender.join();
  ::sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
}  // namespace annivo
