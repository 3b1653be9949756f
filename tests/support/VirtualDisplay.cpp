// SPDX-License-Identifier: MIT
#include "tests/support/VirtualDisplay.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <thread>

namespace annivo {

namespace {

/// What a shell command prints, without the last line feed.
std::string output(const std::string& command) {
  FILE* pipe = ::popen((command + " 2>/dev/null").c_str(), "r");
  if (!pipe) throw std::runtime_error("no shell");
  std::string text;
  std::array<char, 4096> buffer{};
  while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    text.append(buffer.data(), size);
  }
  ::pclose(pipe);
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

/// Tries `attempt` until it succeeds, at most a minute.
void tryFor(const std::function<bool()>& attempt) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes{1};
  while (!attempt() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds{100});
  }
}

}  // namespace

VirtualDisplay::VirtualDisplay() {
  std::array<int, 2> number{};
  if (::pipe(number.data()) != 0) throw std::runtime_error("no pipe");
  process_ = ::fork();
  if (process_ == 0) {
    const int nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, 2);
    ::close(number[0]);
    const std::string descriptor = std::to_string(number[1]);
    // Without -noreset it starts over whenever its last client leaves, and turns away who comes
    // then.
    ::execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "800x600x24",
             "-noreset", "-nolisten", "tcp", static_cast<char*>(nullptr));
    ::_exit(127);
  }
  ::close(number[1]);
  name_ = ":";
  for (char c = 0; ::read(number[0], &c, 1) == 1 && c != '\n';) name_ += c;
  ::close(number[0]);
  if (name_ == ":") throw std::runtime_error("Xvfb did not start");
  ::setenv("DISPLAY", name_.c_str(), 1);
}

VirtualDisplay::~VirtualDisplay() {
  ::unsetenv("DISPLAY");
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

std::string VirtualDisplay::waitForWindow(const std::string& title) const {
  std::string window;
  tryFor([&] {
    window = output("xdotool search --onlyvisible --name '^" + title + "$'");
    return !window.empty();
  });
  return window;
}

std::string VirtualDisplay::waitForMessage(const std::string& window,
                                           const std::string& expected) const {
  std::string text;
  tryFor([&] {
    for (int y = 12; y < 60 && text != expected; y += 8) {
      output("xdotool mousemove --window " + window + " 252 " + std::to_string(y) +
             " click 1 sleep 0.1 key ctrl+a sleep 0.2");
      text = output("/usr/bin/python3 " ANNIVO_SOURCE_DIR "/tests/support/x11_selection.py");
    }
    return text == expected;
  });
  return text;
}

void VirtualDisplay::press(const std::string& window, const std::string& keys) const {
  // There is no window manager to give it the keyboard.
  output("xdotool windowfocus --sync " + window + " key " + keys);
}

void VirtualDisplay::waitForEndOf(const std::string& window) const {
  tryFor([&] { return output("xdotool getwindowgeometry " + window).empty(); });
}

}  // namespace annivo
