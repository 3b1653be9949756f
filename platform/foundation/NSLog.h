// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/NSCalendarDate.h"
#include "platform/foundation/Clock.h"

namespace annivo {

/// The destination of log lines.
class Log {
 public:
  virtual ~Log() = default;
  /// Writes one line. Control characters in `text` (line breaks too) are written escaped, so that
  /// one call is one line.
  virtual void write(std::string_view text) = 0;
};

/// `text` as one line of valid UTF-8: control characters as "\n", "\t" or "\x1B".
[[nodiscard]] std::string escapedLine(std::string_view text);

/// The system log (ident AnnivoAgent) and standard error, as
/// "2026-11-20 18:46:00.123 AnnivoAgent[pid] text" in local time. (The system log adds the time
/// itself.)
class SystemLog final : public Log {
 public:
  SystemLog(const Clock& clock, NSTimeZone zone, std::string ident);
  ~SystemLog() override;
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;
  void write(std::string_view text) override;

 private:
  const Clock& clock_;
  NSTimeZone zone_;
  std::string ident_;
  bool opened_ = false;
};

}  // namespace annivo
