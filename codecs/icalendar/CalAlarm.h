// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace annivo {

/// One alarm. Two are equal when trigger, address, URL and sound are.
struct CalAlarm {
  /// Seconds relative to the event's start, negative before it. Absent in an alarm of another
  /// program with an absolute time.
  std::optional<double> relativeTrigger = {};
  std::optional<std::string> emailAddress = {};
  std::optional<std::string> url = {};  ///< a file URL
  std::optional<std::string> sound = {};
  friend bool operator==(const CalAlarm&, const CalAlarm&) = default;
};

/// A path as a file URL (fileURLWithPath:), percent-encoded.
[[nodiscard]] std::string fileURLWithPath(const std::string& path);
[[nodiscard]] bool isFileURL(const std::string& url);
/// A text as a URL (URLWithString:): itself when it is a valid one, else nothing.
[[nodiscard]] std::optional<std::string> urlWithString(const std::string& text);

}  // namespace annivo
