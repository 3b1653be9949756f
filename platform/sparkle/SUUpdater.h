// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSUserDefaults.h"

namespace annivo {

/// A published version.
struct SUAppcastItem {
  std::string version;         ///< compared with CFBundleVersion
  std::string displayVersion;  ///< for people; `version` when the feed gives no other
  std::string url;             ///< of the download or, without one, the item's page; may be empty
};

/// Receives the outcome of a check, on the run loop, exactly once.
class SUUpdaterDelegate {
 public:
  virtual ~SUUpdaterDelegate() = default;
  virtual void updaterDidFindValidUpdate(const SUAppcastItem& item) = 0;
  virtual void updaterDidNotFindUpdate() = 0;
};

/// Checks the updates of one bundle.
class SUUpdater {
 public:
  virtual ~SUUpdater() = default;
  virtual void setDelegate(SUUpdaterDelegate* delegate) = 0;
  /// Starts a check that only finds out; returns at once.
  virtual void checkForUpdateInformation() = 0;
};

/// What the module may use of its host.
struct SUHost {
  NSRunLoop& runLoop;
  PreferenceDomains& domains;
  Log& log;
  const NSFileManager& files;
  std::string systemVersion;  ///< ProductVersion, "" when unknown
  const Clock& clock;
};

/// The principal class of the framework: the one C symbol that the module exports. The caller owns
/// the updater; host and bundle outlive it. No exception crosses into the module: its delegate is
/// one that throws nothing.
/// extern "C" annivo::SUUpdater* SUUpdaterForBundle(annivo::SUHost*, const annivo::NSBundle*);
using SUUpdaterForBundle = SUUpdater* (*)(SUHost* host, const NSBundle* bundle);
inline constexpr const char* kSUUpdaterForBundleSymbol = "SUUpdaterForBundle";

/// The update framework, loaded at run time.
class SUFramework {
 public:
  /// Loads the shared object of a framework bundle; the reason when it is missing, unreadable, no
  /// shared object, or without its principal class (Info.plist NSPrincipalClass "SUUpdater" and
  /// the symbol).
  static Result<std::unique_ptr<SUFramework>> load(const NSBundle& framework);
  /// The updater for a bundle; it lives as long as this object.
  SUUpdater& updaterForBundle(const NSBundle& bundle, const SUHost& host);
  ~SUFramework();
  SUFramework(const SUFramework&) = delete;
  SUFramework& operator=(const SUFramework&) = delete;

 private:
  SUFramework(void* handle, SUUpdaterForBundle make) : handle_(handle), make_(make) {}
  void* handle_;
  SUUpdaterForBundle make_;
  std::unique_ptr<SUHost> host_;
  std::unique_ptr<NSBundle> bundle_;
  std::unique_ptr<SUUpdater> updater_;
};

}  // namespace annivo
