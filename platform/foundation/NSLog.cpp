// SPDX-License-Identifier: MIT
#include "platform/foundation/NSLog.h"

#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "base/Unicode.h"

namespace annivo {

std::string escapedLine(std::string_view text) {
  std::string line;
  const std::string valid = repairedUTF8(text);
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    // U+0080 to U+009F are control characters too.
    const bool beyondASCII = byte == 0xC2 && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
    const unsigned code = beyondASCII ? static_cast<unsigned char>(valid[++i]) : byte;
    if (code == '\n') {
      line += "\\n";
    } else if (code == '\t') {
      line += "\\t";
    } else if (code < 0x20 || code == 0x7F || beyondASCII) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\x%02X", code);
      line += escape.data();
    } else {
      line += valid[i];
    }
  }
  return line;
}

SystemLog::SystemLog(const Clock& clock, NSTimeZone zone, std::string ident)
    : clock_(clock), zone_(std::move(zone)), ident_(std::move(ident)) {}

SystemLog::~SystemLog() {
  if (opened_) ::closelog();  // it keeps a pointer to the ident
}

void SystemLog::write(std::string_view text) {
  const std::string line = escapedLine(text);
  if (!opened_) ::openlog(ident_.c_str(), LOG_PID, LOG_USER);
  opened_ = true;
  ::syslog(LOG_NOTICE, "%s", line.c_str());

  const CivilTime now = zone_.civil(clock_.now());
  const auto milliseconds = static_cast<int>(now.fraction.count() / 1000);
  std::array<char, 64> time{};
  std::snprintf(time.data(), time.size(), "%04lld-%02d-%02d %02d:%02d:%02d.%03d ",
                static_cast<long long>(now.year), now.month, now.day, now.hour, now.minute,
                now.second, milliseconds);
  // In one call, so that the lines of two processes do not mix.
  const std::string whole =
      time.data() + ident_ + "[" + std::to_string(::getpid()) + "] " + line + "\n";
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

}  // namespace annivo
