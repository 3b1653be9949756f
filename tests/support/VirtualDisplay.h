// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

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

  /// Waits for a window with exactly that title; its number, "" when none comes within 30 s.
  [[nodiscard]] std::string waitForWindow(const std::string& title) const;
  /// The text of the window's message, marked with the mouse and read from the selection.
  [[nodiscard]] std::string messageOf(const std::string& window) const;
  /// Presses a key ("Return", "Tab", "Escape") in the window.
  void press(const std::string& window, const std::string& key) const;
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  pid_t process_ = -1;
  std::string name_;
};

}  // namespace annivo
