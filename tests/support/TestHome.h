// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Platform.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// A home and a machine of a test's own: a temporary folder as the home, beside it the product's
/// folder with this source tree's resources, and a Platform over both with a clock, a log, alerts
/// and a launcher that the test holds. Removes itself.
///
///   TestHome home({.timeZone = "Europe/Berlin", .languages = {"de"}});
///   home.parentPreferences({{"birthCalUID", "B"}});
///   home.platform().defaultCalendarStore()...
class TestHome {
 public:
  struct Options {
    std::string timeZone = "UTC";
    /// Stored as AppleLanguages of the global domain; none leaves "en".
    std::vector<std::string> languages = {};
    Date now = utc(2026, 11, 20, 18, 46);
    /// More environment variables of the platform.
    std::map<std::string, std::string> environment = {};
    /// The domain of standardUserDefaults.
    std::string ownDomain = kAgentDomain;
    /// For a contacts store that another program has locked: short, as it is mostly waited in vain.
    std::chrono::milliseconds storeLockWait{100};
  };
  TestHome() : TestHome(Options{}) {}
  explicit TestHome(Options options);
  ~TestHome();

  /// The platform, made when first asked for.
  Platform& platform();
  /// Ends the platform, as the end of a process would; the next use of platform() makes another
  /// over the same home.
  void endRun() { platform_.reset(); }
  /// The next platform goes to `files` (which must outlive it) in place of the disk; null for the
  /// disk.
  void useFileManager(NSFileManager* files) { files_ = files; }
  /// The next platform waits on `runLoop` (which must outlive it); null for one of its own.
  void useRunLoop(NSRunLoop* runLoop) { runLoop_ = runLoop; }

  ManualClock clock;
  RecordingLog log;
  ScriptedAlerts alerts;
  RecordingLauncher launcher;

  /// The home folder itself; its operations take paths relative to it.
  [[nodiscard]] const TemporaryFolder& folder() const { return home_; }
  [[nodiscard]] const std::string& path() const { return home_.path(); }
  [[nodiscard]] std::string path(const std::string& relative) const { return home_.path(relative); }
  /// "<temporary>/Annivo 2.app".
  [[nodiscard]] std::string productPath() const { return product_.path("Annivo 2.app"); }

  void writeFile(const std::string& relative, const std::string& bytes) const {
    home_.writeFile(relative, bytes);
  }
  [[nodiscard]] std::string readFile(const std::string& relative) const {
    return home_.readFile(relative);
  }
  [[nodiscard]] bool exists(const std::string& relative) const { return home_.exists(relative); }
  void touch(const std::string& relative, Date date) const { home_.touch(relative, date); }
  [[nodiscard]] std::map<std::string, std::string> snapshot(
      const std::string& relative = "") const {
    return home_.snapshot(relative);
  }

  /// Store a whole domain, as another program would.
  void preferences(const std::string& domain, const PropertyList::Dictionary& values) const;
  void parentPreferences(const PropertyList::Dictionary& values) const {
    preferences(kParentDomain, values);
  }
  void ownPreferences(const PropertyList::Dictionary& values) const {
    preferences(options_.ownDomain, values);
  }
  /// What a domain's file holds now; nil when there is none or it is no property list.
  [[nodiscard]] PropertyList storedPreferences(const std::string& domain) const;
  /// The path of a domain's file, relative to the home.
  [[nodiscard]] static std::string preferencesFile(const std::string& domain) {
    return "Library/Preferences/" + domain + ".plist";
  }

 private:
  Options options_;
  TemporaryFolder home_;
  TemporaryFolder product_;
  NSFileManager* files_ = nullptr;
  NSRunLoop* runLoop_ = nullptr;
  std::unique_ptr<Platform> platform_;
};

}  // namespace annivo
