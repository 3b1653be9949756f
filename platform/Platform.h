// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/NSCalendarDate.h"
#include "platform/addressbook/ABAddressBook.h"
#include "platform/appkit/Alerts.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/calendarstore/CalCalendarStore.h"
#include "platform/coredata/NSManagedObjectContext.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/HomeFolders.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLocale.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSUserDefaults.h"
#include "platform/foundation/PreferenceKeys.h"
#include "platform/sparkle/SUUpdater.h"

namespace annivo {

/// What a Platform stands on: a home, an executable and the services that a test replaces.
struct PlatformParts {
  std::string home;        ///< $HOME
  std::string executable;  ///< full path of the running executable, which names its bundles
  std::string ownDomain = kAgentDomain;
  Environment environment;
  std::unique_ptr<Clock> clock;
  std::unique_ptr<NSFileManager> files;
  std::unique_ptr<Log> log;        ///< null: the system log
  std::unique_ptr<Alerts> alerts;  ///< null: a person's screen, terminal, or the log
  std::unique_ptr<Launcher> launcher;
  /// How long a contacts store that another program has locked is waited for, once a run.
  std::chrono::milliseconds storeLockWait = std::chrono::seconds{5};
  NSRunLoop* runLoop = nullptr;  ///< outlives the platform; null: one of the platform's own
};

/// The one object that hands out the services of the machine. Each is made when first asked for
/// and lives as long as the platform.
class Platform {
 public:
  explicit Platform(PlatformParts parts);
  /// The real machine; the error says what is missing (no home folder).
  static Result<std::unique_ptr<Platform>> system(const std::string& ident);
  ~Platform();

  [[nodiscard]] const std::string& homeDirectory() const { return folders_.home(); }
  /// The folders of the home.
  [[nodiscard]] const HomeFolders& folders() const { return folders_; }
  [[nodiscard]] const Clock& clock() const { return *parts_.clock; }
  [[nodiscard]] const NSTimeZone& defaultTimeZone() const { return zone_; }
  [[nodiscard]] NSFileManager& fileManager() { return *parts_.files; }
  [[nodiscard]] Log& log() { return *parts_.log; }
  [[nodiscard]] Alerts& alerts() { return *parts_.alerts; }
  [[nodiscard]] PreferenceDomains& preferenceDomains() { return *domains_; }
  [[nodiscard]] NSUserDefaults& standardUserDefaults() { return *defaults_; }
  [[nodiscard]] CFPreferences& appPreferences() { return *appPreferences_; }
  /// The person's languages, most wanted first.
  [[nodiscard]] const std::vector<std::string>& preferredLanguages();
  /// The bundle that holds the executable.
  [[nodiscard]] NSBundle& mainBundle() { return *mainBundle_; }
  /// A text of the main bundle's default table, by the person's languages.
  [[nodiscard]] std::string localizedString(const std::string& key, const std::string& value);
  [[nodiscard]] NSApplication& application() { return *application_; }
  [[nodiscard]] NSWorkspace& workspace() { return *workspace_; }
  [[nodiscard]] NSRunLoop& runLoop() { return *parts_.runLoop; }
  [[nodiscard]] const Gestalt& gestalt() const { return *gestalt_; }
  /// `path`, or, where it begins with "/System/", that path under SharedSupport of the parent
  /// bundle which holds the running executable.
  [[nodiscard]] std::string resolvedPath(const std::string& path) const;
  [[nodiscard]] const ABAddressBook& sharedAddressBook();
  [[nodiscard]] CalCalendarStore& defaultCalendarStore();
  [[nodiscard]] StoreEnvironment storeEnvironment();
  /// The application-support folder of the person, created when missing; nothing when there is
  /// none and it cannot be made.
  [[nodiscard]] std::optional<std::string> applicationSupportDirectory();
  [[nodiscard]] std::string temporaryDirectory() const;
  /// What an update module may use.
  [[nodiscard]] SUHost updateHost();
  /// Waits until no other agent runs for this home and keeps others out until the platform goes.
  Result<void> becomeTheOnlyRun();

 private:
  PlatformParts parts_;
  HomeFolders folders_;
  NSTimeZone zone_;
  std::string systemFolder_;
  NSRunLoop ownRunLoop_;
  std::unique_ptr<PreferenceDomains> domains_;
  std::unique_ptr<NSUserDefaults> defaults_;
  std::unique_ptr<CFPreferences> appPreferences_;
  std::unique_ptr<NSBundle> mainBundle_;
  std::unique_ptr<NSApplication> application_;
  std::unique_ptr<NSWorkspace> workspace_;
  std::unique_ptr<Gestalt> gestalt_;
  std::optional<std::vector<std::string>> languages_;
  std::shared_ptr<StoreReadings> storeReadings_;
  std::unique_ptr<ABAddressBook> addressBook_;
  std::unique_ptr<CalCalendarStore> calendarStore_;
  std::unique_ptr<FileLock> runLock_;
};

}  // namespace annivo
