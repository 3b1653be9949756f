// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <future>
#include <string>

namespace annivo {

/// An X display without a screen (Xvfb), with the eyes and hands of a person. While it lives, it is
/// the DISPLAY of this process.
class VirtualDisplay {
 public:
  VirtualDisplay();
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  /// Waits for a window with exactly that title; its number, "" when none comes within a minute.
  [[nodiscard]] std::string waitForWindow(const std::string& title) const;
  /// Marks the window's message with the mouse and reads it from the selection, again until it
  /// reads `expected`, at most a minute; what it read last.
  [[nodiscard]] std::string waitForMessage(const std::string& window,
                                           const std::string& expected) const;
  /// Presses keys ("Return", "Escape", "Left space") in the window.
  void press(const std::string& window, const std::string& keys) const;
  /// The same, again until the answer is there and the window gone: `keys` must mean the same when
  /// pressed twice.
  template <typename Answer>
  Answer pressFor(std::future<Answer>& answer, const std::string& window,
                  const std::string& keys) const {
    do {
      press(window, keys);
    } while (answer.wait_for(std::chrono::seconds{10}) != std::future_status::ready);
    waitForEndOf(window);
    return answer.get();
  }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  void waitForEndOf(const std::string& window) const;

  pid_t process_ = -1;
  std::string name_;
};

}  // namespace annivo
