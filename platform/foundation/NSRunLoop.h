// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <vector>

namespace annivo {

/// The run loop of the main thread: waits on file descriptors and timers and calls their handlers.
/// Handlers may add and remove sources. Times are of the monotonic clock.
class NSRunLoop {
 public:
  using Time = std::chrono::steady_clock::time_point;
  enum Events : unsigned { kReadable = 1, kWritable = 2 };

  /// Watches a descriptor for `events` (a combination of Events); replaces an earlier watch. The
  /// handler gets the events that happened; an error or hang-up counts as all those asked for.
  void watch(int descriptor, unsigned events, std::function<void(unsigned)> handler);
  void unwatch(int descriptor);
  /// Calls `handler` once at or soon after `time`; returns the timer's number.
  int addTimer(Time time, std::function<void()> handler);
  void removeTimer(int number);

  /// Waits until a source fires or `limit` comes, whichever is first, and serves what is ready.
  /// False, at once, when there is no source to wait for.
  bool runModeBeforeDate(Time limit);
  /// The same with a limit counted from now.
  bool runModeForInterval(std::chrono::milliseconds interval) {
    return runModeBeforeDate(std::chrono::steady_clock::now() + interval);
  }

 private:
  struct Watch {
    unsigned events;
    std::function<void(unsigned)> handler;
  };
  struct Timer {
    Time time;
    std::function<void()> handler;
  };
  std::map<int, Watch> watches_;
  std::map<int, Timer> timers_;
  int nextTimer_ = 1;
};

}  // namespace annivo
