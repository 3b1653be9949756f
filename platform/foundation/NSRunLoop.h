// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <vector>

namespace annivo {

/// The run loop of the main thread: waits on file descriptors and timers and calls their handlers.
/// Handlers may add and remove sources, themselves included; a source that a handler adds is first
/// served in the next wait, one that it removes is not called any more. Times are of the monotonic
/// clock.
class NSRunLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;
  enum Events : unsigned { kReadable = 1, kWritable = 2 };

  NSRunLoop() = default;
  virtual ~NSRunLoop() = default;
  NSRunLoop(const NSRunLoop&) = delete;
  NSRunLoop& operator=(const NSRunLoop&) = delete;

  /// Watches a descriptor for `events` (a combination of Events); replaces an earlier watch. The
  /// handler gets the events that happened; an error or hang-up counts as all those asked for.
  /// The descriptor stays the caller's, who unwatches it before closing it.
  void watch(int descriptor, unsigned events, std::function<void(unsigned)> handler);
  void unwatch(int descriptor);
  /// Calls `handler` once at or soon after `time`; returns the timer's number.
  int addTimer(Time time, std::function<void()> handler);
  void removeTimer(int number);

  /// Waits until a source fires or `limit` comes, whichever is first, and serves what is ready:
  /// descriptors by number, then due timers by time. False, at once, when there is no source to
  /// wait for. An exception that leaves a handler leaves the loop usable.
  bool runModeBeforeDate(Time limit);
  /// As above, with a limit counted from now.
  virtual bool runModeForInterval(std::chrono::milliseconds interval) {
    return runModeBeforeDate(Clock::now() + interval);
  }

 private:
  struct Watch {
    unsigned events;
    int serial;  ///< tells a watch from a later one on the same descriptor
    std::function<void(unsigned)> handler;
  };
  struct Timer {
    Time time;
    std::function<void()> handler;
  };
  struct Ready {
    int descriptor;
    int serial;
    unsigned events;
  };
  [[nodiscard]] std::vector<Ready> waitForDescriptors(Time limit) const;
  void serveTimers();

  std::map<int, Watch> watches_;
  std::map<int, Timer> timers_;
  int nextSerial_ = 1;
};

}  // namespace annivo
