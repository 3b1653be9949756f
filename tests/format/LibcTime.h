// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

#include "base/NSCalendarDate.h"

namespace annivo {

/// The C library's own reckoning in one zone, as a second opinion on dates. Sets TZ while it lives.
class LibcTime {
 public:
  explicit LibcTime(const std::string& zone) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    setenv("TZ", zone.c_str(), 1);
    tzset();
  }
  ~LibcTime() {
    before_.empty() ? unsetenv("TZ") : setenv("TZ", before_.c_str(), 1);
    tzset();
  }
  LibcTime(const LibcTime&) = delete;
  LibcTime& operator=(const LibcTime&) = delete;

  [[nodiscard]] Date local(int year, int month, int day, int hour = 0, int minute = 0,
                           int second = 0) const {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return Date{std::chrono::seconds{mktime(&fields)}};
  }

 private:
  std::string before_;
};

}  // namespace annivo
