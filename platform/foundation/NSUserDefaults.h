// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"

namespace annivo {

/// The preference domains of one home: <folder>/<domain>.plist. Each domain is read once, when
/// first asked for, and changed key by key: a change is merged into the file as it then stands,
/// under a lock, so that a key which another program writes at the same moment is not lost.
///
/// A file that is there and cannot be used has no values, and failure() says why: it is damaged (no
/// property list, or one that is no dictionary) or unreadable. Before a change is written a damaged
/// file is set aside as "<name>.damaged-<time>"; an unreadable one is never written.
class PreferenceDomains {
 public:
  /// `home` exists; `<home>/Library/Preferences` need not, and is made when first written to.
  PreferenceDomains(NSFileManager& files, const Clock& clock, Log& log, std::string home);

  /// What the domain itself stores; nothing when there is no such file, or none that can be used,
  /// which the log then names once. The same object at each call.
  [[nodiscard]] const std::optional<PropertyList::Dictionary>& domain(const std::string& name);
  /// Why the domain's file, though it is there, cannot be used; null where it can, or is absent.
  /// The caller is the one to say so: the log no longer names it.
  [[nodiscard]] const Error* failure(const std::string& name);
  /// Names a value of another type than its program expects in the log, with its file and key,
  /// each once. `expected` is what it should be ("text").
  void reportType(const std::string& name, const std::string& key, const std::string& expected);
  /// Sets one key in memory; nil removes it. Nothing is written before synchronize.
  void set(const std::string& name, const std::string& key, PropertyList value);
  /// Writes the changed keys of a domain, durably and only if the file then differs. The
  /// unwritten changes stay for the next try when it fails; the failure is logged.
  Result<void> synchronize(const std::string& name);
  [[nodiscard]] std::string path(const std::string& name) const;

 private:
  struct State {
    std::optional<PropertyList::Dictionary> values;
    std::map<std::string, PropertyList> changes;
    std::optional<Error> failure;
    bool failureIsTold = false;
    std::set<std::string> reportedTypes;
    bool loaded = false;
  };
  /// What a file holds: nothing, and no failure, where it is absent.
  struct Stored {
    std::optional<PropertyList::Dictionary> values;
    std::optional<Error> failure;
  };
  State& loaded(const std::string& name);
  [[nodiscard]] Stored read(const std::string& name) const;
  Result<void> write(const std::string& name, State& state);

  NSFileManager& files_;
  const Clock& clock_;
  Log& log_;
  std::string home_;
  std::map<std::string, State> states_;
};

inline constexpr const char* kGlobalDomain = ".GlobalPreferences";

/// A program's own user defaults: its own domain, then the global domain, then registered values.
class NSUserDefaults {
 public:
  NSUserDefaults(PreferenceDomains& domains, std::string ownDomain);

  /// The value, or nil.
  [[nodiscard]] const PropertyList& objectForKey(const std::string& key) const;
  /// Fallback values, never stored.
  void registerDefaults(const PropertyList::Dictionary& values);
  void setObjectForKey(PropertyList value, const std::string& key);
  Result<void> synchronize();
  /// Only what that domain itself stores.
  [[nodiscard]] const std::optional<PropertyList::Dictionary>& persistentDomainForName(
      const std::string& name) const;

 private:
  PreferenceDomains& domains_;
  std::string ownDomain_;
  PropertyList::Dictionary registered_;
  /// The own domain and the global one; found when first asked for.
  mutable std::vector<const std::optional<PropertyList::Dictionary>*> searched_;
};

/// One key of another application's domain (CFPreferencesSetAppValue, CFPreferencesAppSynchronize).
class CFPreferences {
 public:
  explicit CFPreferences(PreferenceDomains& domains) : domains_(domains) {}
  void setAppValue(const std::string& key, PropertyList value, const std::string& domain) {
    domains_.set(domain, key, std::move(value));
  }
  Result<void> appSynchronize(const std::string& domain) { return domains_.synchronize(domain); }

 private:
  PreferenceDomains& domains_;
};

}  // namespace annivo
