// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/calendarstore/CalCalendarStore.h"

namespace annivo {

class FixedClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override { return moment; }
  Date moment = Date{std::chrono::sys_days{std::chrono::year{2026} / 11 / 20}} +
                std::chrono::hours{18} + std::chrono::minutes{46};
};

class RecordingLines final : public Log {
 public:
  void write(std::string_view text) override { lines.emplace_back(text); }
  [[nodiscard]] bool mentions(std::string_view part) const {
    for (const std::string& line : lines) {
      if (line.find(part) != line.npos) return true;
    }
    return false;
  }
  std::vector<std::string> lines;
};

/// A home of its own under the temporary folder with a calendar store over it; removed afterwards.
class CalendarHome {
 public:
  explicit CalendarHome(const std::string& zoneName = "Europe/Berlin") : zone(zoneName) {
    std::string pattern = std::filesystem::temp_directory_path() / "annivo-calendars-XXXXXX";
    home = ::mkdtemp(pattern.data());
    root = home + "/Library/Calendars";
  }
  ~CalendarHome() { std::filesystem::remove_all(home); }
  CalendarHome(const CalendarHome&) = delete;
  CalendarHome& operator=(const CalendarHome&) = delete;

  /// A store that knows nothing of what earlier ones found: that of another run. It is store() from
  /// now on.
  CalCalendarStore& newRun() {
    stores_.push_back(std::make_unique<CalCalendarStore>(files, clock, log, zone, home));
    return *stores_.back();
  }
  CalCalendarStore& store() { return stores_.empty() ? newRun() : *stores_.back(); }

  /// Makes a calendar's folders; `account` is "" or "name.caldav/". Returns its path.
  std::string makeCalendar(const std::string& name, const std::string& info,
                           const std::string& account = "") const {
    const std::string path = root + "/" + account + name + ".calendar";
    std::filesystem::create_directories(path + "/Events");
    if (!info.empty()) write(path + "/Info.plist", info);
    return path;
  }
  static std::string info(const std::string& keys) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + keys +
           "</dict></plist>\n";
  }
  static std::string text(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
  }
  /// An ordinary calendar.
  std::string makeLocalCalendar(const std::string& uid) const {
    return makeCalendar(uid, info(text("Key", uid) + text("Title", uid) + text("Type", "Local")));
  }

  static void write(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  static std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// All files under the calendars' root with their contents.
  [[nodiscard]] std::map<std::string, std::string> allFiles() const {
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (entry.is_regular_file()) found[entry.path().string()] = read(entry.path());
    }
    return found;
  }

  std::string home;
  std::string root;
  PosixFileManager files;
  FixedClock clock;
  RecordingLines log;
  NSTimeZone zone;

 private:
  std::vector<std::unique_ptr<CalCalendarStore>> stores_;
};

/// Midnight of a civil day in `zone`.
inline Date midnight(const NSTimeZone& zone, int year, int month, int day) {
  return zone.date({.year = year, .month = month, .day = day});
}

/// A VEVENT with `lines` between UID and end, in a calendar; line ends as given.
inline std::string eventText(const std::string& uid, const std::string& lines,
                             const std::string& end = "\r\n") {
  return "BEGIN:VCALENDAR" + end + "VERSION:2.0" + end + "BEGIN:VEVENT" + end + "UID:" + uid + end +
         lines + "END:VEVENT" + end + "END:VCALENDAR" + end;
}

}  // namespace annivo
