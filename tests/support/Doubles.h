// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/appkit/Alerts.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/NSLog.h"

namespace annivo {

/// A moment in UTC, e.g. utc(2026, 11, 20, 18, 46).
[[nodiscard]] Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                       int second = 0);

// Copies of a double share what it records and answers, so that a test keeps one and gives a
// platform another.

/// A clock that stands still until a test moves it.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date now) : now_(std::make_shared<Date>(now)) {}
  [[nodiscard]] Date now() const override { return *now_; }
  void set(Date now) { *now_ = now; }
  void advance(std::chrono::microseconds by) { *now_ += by; }

 private:
  std::shared_ptr<Date> now_;
};

/// Keeps the lines as they were given.
class RecordingLog final : public Log {
 public:
  void write(std::string_view text) override { lines_->emplace_back(text); }
  [[nodiscard]] const std::vector<std::string>& lines() const { return *lines_; }
  /// How many lines hold `part`.
  [[nodiscard]] std::size_t count(std::string_view part) const;
  void clear() { lines_->clear(); }

 private:
  std::shared_ptr<std::vector<std::string>> lines_ = std::make_shared<std::vector<std::string>>();
};

/// Answers alerts from a queue, and, when that is empty, as their last button would.
class ScriptedAlerts final : public Alerts {
 public:
  AlertAnswer runModal(const NSAlert& alert) override;
  void answerNext(AlertAnswer answer) { state_->answers.push_back(answer); }
  [[nodiscard]] const std::vector<NSAlert>& shown() const { return state_->shown; }
  void clear() { state_->shown.clear(); }
  /// What happens while an alert waits for its answer.
  void whenShown(std::function<void()> happens) { state_->happens = std::move(happens); }

 private:
  struct State {
    std::function<void()> happens;
    std::deque<AlertAnswer> answers;
    std::vector<NSAlert> shown;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// Starts nothing.
class RecordingLauncher final : public Launcher {
 public:
  using Launch = std::pair<std::string, std::vector<std::string>>;
  Result<void> launch(const std::string& executable,
                      const std::vector<std::string>& arguments) override;
  [[nodiscard]] const std::vector<Launch>& launches() const { return *launches_; }

 private:
  std::shared_ptr<std::vector<Launch>> launches_ = std::make_shared<std::vector<Launch>>();
};

}  // namespace annivo
