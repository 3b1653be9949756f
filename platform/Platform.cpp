// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>

#include "platform/appkit/SystemAlerts.h"

namespace annivo {

namespace {

constexpr const char* kIdent = "AnnivoAgent";

/// The parent's bundle, given the bundle of one of its executables: an agent lies in the parent's
/// Contents/Helpers.
std::string parentBundlePath(const std::string& bundle) {
  const std::string enclosing = standardizedPath(bundle + "/../../../");
  return bundle.starts_with(enclosing + "/Contents/Helpers/") ? enclosing : bundle;
}

std::string environmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

Result<std::string> homeFolder(const NSFileManager& files) {
  const auto unusable = [](const std::string& description) {
    return Error{.kind = Error::Kind::absent,
                 .domain = "NSCocoaErrorDomain",
                 .description = description,
                 .failureReason = "Set HOME to the home folder."};
  };
  const std::string home = standardizedPath(environmentVariable("HOME"));
  if (home.empty()) return unusable("There is no home folder: HOME is not set.");
  if (!home.starts_with('/')) {
    return unusable("There is no home folder: HOME is " + home + ", which is no full path.");
  }
  const auto attributes = files.attributesAtPath(home, Links::follow);
  if (!attributes) return attributes.error();
  if (attributes->type != FileType::directory) {
    return unusable("There is no home folder: " + home + " is no folder.");
  }
  return home;
}

/// "" when it is not known.
std::string productVersion(const NSFileManager& files, const std::string& systemFolder) {
  const std::string file = systemFolder + "/Library/CoreServices/SystemVersion.plist";
  const auto bytes = files.contentsAtPath(file);
  if (!bytes) return "";
  const auto list = parsePropertyList(*bytes, file);
  return list ? (*list)["ProductVersion"].stringOr("") : "";
}

Result<std::string> runningExecutable() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  if (length < 0) return errorFromErrno(errno, "read", "/proc/self/exe");
  return std::string(path.data(), static_cast<std::size_t>(length));
}

}  // namespace

Platform::Platform(PlatformParts parts)
    : parts_(std::move(parts)),
      folders_(parts_.home),
      zone_(NSTimeZone::system(parts_.environment("TZ"))) {
  if (!parts_.log) parts_.log = std::make_unique<SystemLog>(*parts_.clock, zone_, kIdent);
  if (!parts_.alerts) parts_.alerts = makeSystemAlerts(*parts_.log, parts_.environment);
  if (!parts_.runLoop) parts_.runLoop = &ownRunLoop_;
  if (!parts_.launcher) parts_.launcher = std::make_unique<ProcessLauncher>();
  domains_ =
      std::make_unique<PreferenceDomains>(*parts_.files, *parts_.clock, *parts_.log, parts_.home);
  defaults_ = std::make_unique<NSUserDefaults>(*domains_, parts_.ownDomain);
  appPreferences_ = std::make_unique<CFPreferences>(*domains_);
  mainBundle_ = std::make_unique<NSBundle>(NSBundle::enclosing(*parts_.files, parts_.executable));
  const std::string parent = parentBundlePath(mainBundle_->bundlePath());
  systemFolder_ = parent + "/Contents/SharedSupport/System";
  application_ = std::make_unique<NSApplication>(*parts_.alerts, *parts_.log);
  workspace_ = std::make_unique<NSWorkspace>(*parts_.files, *parts_.launcher, parent, parts_.home);
  gestalt_ = std::make_unique<Gestalt>(*parts_.files, systemFolder_);
  storeReadings_ = std::make_shared<StoreReadings>(parts_.storeLockWait, temporaryDirectory());
}

Platform::~Platform() = default;

Result<std::unique_ptr<Platform>> Platform::system(const std::string& ident) {
  PlatformParts parts;
  parts.files = std::make_unique<PosixFileManager>();
  auto home = homeFolder(*parts.files);
  if (!home) return home.error();
  auto executable = runningExecutable();
  if (!executable) return executable.error();
  parts.home = *std::move(home);
  parts.executable = *std::move(executable);
  parts.environment = environmentVariable;
  parts.clock = std::make_unique<SystemClock>();
  parts.log = std::make_unique<SystemLog>(*parts.clock,
                                          NSTimeZone::system(environmentVariable("TZ")), ident);
  if (ident != kIdent) parts.ownDomain = kParentDomain;
  return std::make_unique<Platform>(std::move(parts));
}

const std::vector<std::string>& Platform::preferredLanguages() {
  if (!languages_) {
    const auto& global = domains_->domain(kGlobalDomain);
    const PropertyList values = global ? PropertyList(*global) : PropertyList();
    languages_ = annivo::preferredLanguages(values[keys::kAppleLanguages], parts_.environment);
  }
  return *languages_;
}

std::string Platform::localizedString(const std::string& key, const std::string& value) {
  return mainBundle_->localizedString(key, value, "Localizable", preferredLanguages());
}

std::string Platform::resolvedPath(const std::string& path) const {
  constexpr std::string_view kSystem = "/System/";
  if (!path.starts_with(kSystem)) return path;
  return systemFolder_ + "/" + path.substr(kSystem.size());
}

const ABAddressBook& Platform::sharedAddressBook() {
  if (!addressBook_) {
    addressBook_ = std::make_unique<ABAddressBook>(
        *parts_.files, *parts_.log, parts_.home,
        NSBundle(*parts_.files, systemFolder_ + "/Library/Frameworks/AddressBook.framework"),
        preferredLanguages(), storeReadings_);
  }
  return *addressBook_;
}

CalCalendarStore& Platform::defaultCalendarStore() {
  if (!calendarStore_) {
    calendarStore_ = std::make_unique<CalCalendarStore>(*parts_.files, *parts_.clock, *parts_.log,
                                                        zone_, parts_.home);
  }
  return *calendarStore_;
}

StoreEnvironment Platform::storeEnvironment() {
  return {*parts_.files, *parts_.clock, zone_, storeReadings_};
}

std::optional<std::string> Platform::applicationSupportDirectory() {
  std::string folder = folders_.applicationSupport();
  if (const auto made = parts_.files->createDirectoriesUnder(parts_.home, folder); !made) {
    parts_.log->write(made.error().text());
    return std::nullopt;
  }
  return folder;
}

std::string Platform::temporaryDirectory() const {
  const std::string folder = parts_.environment("TMPDIR");
  return folder.starts_with('/') ? standardizedPath(folder) : "/tmp";
}

SUHost Platform::updateHost() {
  return {*parts_.runLoop,
          *domains_,
          *parts_.log,
          *parts_.files,
          productVersion(*parts_.files, systemFolder_),
          *parts_.clock};
}

Result<void> Platform::becomeTheOnlyRun() {
  const std::string folder = folders_.caches() + '/' + kAgentDomain;
  const std::string file = folder + "/run.lock";
  auto lock = parts_.files->lock(file);
  if (!lock && lock.error().kind == Error::Kind::absent) {
    if (auto made = parts_.files->createDirectoriesUnder(parts_.home, folder); !made) return made;
    lock = parts_.files->lock(file);
  }
  if (!lock) return lock.error();
  runLock_ = *std::move(lock);
  return {};
}

}  // namespace annivo
