// SPDX-License-Identifier: MIT
#include "platform/foundation/NSRunLoop.h"

#include <poll.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace annivo {

namespace {

timespec remaining(NSRunLoop::Time limit) {
  using namespace std::chrono;
  // A wait is held at a day: a limit at the end of time would overflow.
  const nanoseconds left =
      std::clamp<nanoseconds>(limit - std::min(limit, NSRunLoop::Clock::now()), 0ns, 24h);
  const auto whole = duration_cast<seconds>(left);
  return {.tv_sec = static_cast<time_t>(whole.count()), .tv_nsec = (left - whole).count()};
}

unsigned happened(short revents, unsigned asked) {
  if (revents & (POLLERR | POLLHUP | POLLNVAL)) return asked;
  return ((revents & POLLIN) ? NSRunLoop::kReadable : 0u) |
         ((revents & POLLOUT) ? NSRunLoop::kWritable : 0u);
}

}  // namespace

void NSRunLoop::watch(int descriptor, unsigned events, std::function<void(unsigned)> handler) {
  watches_.insert_or_assign(
      descriptor, Watch{.events = events, .serial = nextSerial_++, .handler = std::move(handler)});
}

void NSRunLoop::unwatch(int descriptor) { watches_.erase(descriptor); }

int NSRunLoop::addTimer(Time time, std::function<void()> handler) {
  timers_.emplace(nextSerial_, Timer{.time = time, .handler = std::move(handler)});
  return nextSerial_++;
}

void NSRunLoop::removeTimer(int number) { timers_.erase(number); }

bool NSRunLoop::runModeBeforeDate(Time limit) {
  if (watches_.empty() && timers_.empty()) return false;
  for (const auto& [number, timer] : timers_) limit = std::min(limit, timer.time);
  for (const Ready& ready : waitForDescriptors(limit)) {
    const auto found = watches_.find(ready.descriptor);
    if (found == watches_.end() || found->second.serial != ready.serial) continue;
    const auto handler = found->second.handler;  // it may unwatch itself
    handler(ready.events);
  }
  serveTimers();
  return true;
}

std::vector<NSRunLoop::Ready> NSRunLoop::waitForDescriptors(Time limit) const {
  std::vector<pollfd> polled;
  for (const auto& [descriptor, watch] : watches_) {
    const int asked =
        ((watch.events & kReadable) ? POLLIN : 0) | ((watch.events & kWritable) ? POLLOUT : 0);
    polled.push_back({.fd = descriptor, .events = static_cast<short>(asked), .revents = 0});
  }
  const timespec left = remaining(limit);
  std::vector<Ready> ready;
  // An interruption by a signal ends the wait early, with nothing ready; so does a failure.
  if (::ppoll(polled.data(), polled.size(), &left, nullptr) <= 0) return ready;
  for (const pollfd& item : polled) {
    const Watch& watch = watches_.at(item.fd);
    const unsigned events = happened(item.revents, watch.events);
    if (events) ready.push_back({.descriptor = item.fd, .serial = watch.serial, .events = events});
  }
  return ready;
}

void NSRunLoop::serveTimers() {
  const Time now = Clock::now();
  std::vector<std::pair<Time, int>> due;
  for (const auto& [number, timer] : timers_) {
    if (timer.time <= now) due.emplace_back(timer.time, number);
  }
  std::sort(due.begin(), due.end());
  for (const auto& [time, number] : due) {
    auto timer = timers_.extract(number);
    if (timer) timer.mapped().handler();
  }
}

}  // namespace annivo
