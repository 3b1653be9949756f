// SPDX-License-Identifier: MIT
#include "platform/appkit/TerminalAlert.h"

#include <unistd.h>

#include <cerrno>
#include <optional>

#include "base/Text.h"
#include "base/Unicode.h"

namespace annivo {

namespace {

constexpr std::size_t kLongestLine = 1024;

void writeAll(int out, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t size = ::write(out, text.data() + done, text.size() - done);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return;  // the end of input will answer for a terminal that is gone
    done += static_cast<std::size_t>(size);
  }
}

/// The next line without its end and outer blanks; nothing at the end of input.
std::optional<std::string> readLine(int in) {
  std::string line;
  for (;;) {
    char c = 0;
    const ssize_t size = ::read(in, &c, 1);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return std::nullopt;
    if (c == '\n') break;
    if (line.size() < kLongestLine) line += c;
  }
  return std::string(trimmed(line));
}

std::optional<AlertAnswer> answerNamed(const std::string& line,
                                       const std::vector<AlertButton>& buttons) {
  if (line.empty()) return buttons.front().answer;
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    if (line == std::to_string(i + 1) || caseFolded(line) == caseFolded(buttons[i].title)) {
      return buttons[i].answer;
    }
  }
  return std::nullopt;
}

std::string oneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n') c = ' ';
  }
  return text;
}

}  // namespace

bool isUsableTerminal(int in, int out) {
  return ::isatty(in) == 1 && ::isatty(out) == 1 && ::tcgetpgrp(in) == ::getpgrp();
}

AlertAnswer askOnTerminal(const NSAlert& alert, int in, int out) {
  const auto buttons = buttonsOf(alert);
  std::string prompt;
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    prompt +=
        "[" + std::to_string(i + 1) + "] " + oneLine(displayableText(buttons[i].title)) + "  ";
  }
  prompt += "(Return for 1): ";
  writeAll(out, "\n" + displayableText(textOf(alert)) + "\n\n" + prompt);
  while (const auto line = readLine(in)) {
    if (const auto answer = answerNamed(*line, buttons)) return *answer;
    writeAll(out, prompt);
  }
  writeAll(out, "\n");
  return buttons.back().answer;
}

}  // namespace annivo
