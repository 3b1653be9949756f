// SPDX-License-Identifier: MIT
#include <algorithm>

#include "platform/foundation/NSUserDefaults.h"

namespace annivo {

namespace {

constexpr const char* kFolder = "/Library/Preferences";

void applyChanges(const std::map<std::string, PropertyList>& changes,
                  PropertyList::Dictionary& values) {
  for (const auto& [key, value] : changes) {
    if (value.isNil()) {
      values.erase(key);
    } else {
      values.insert_or_assign(key, value);
    }
  }
}

}  // namespace

PreferenceDomains::PreferenceDomains(NSFileManager& files, const Clock& clock, Log& log,
                                     std::string home)
    : files_(files), clock_(clock), log_(log), home_(std::move(home)) {}

std::string PreferenceDomains::path(const std::string& name) const {
  return home_ + kFolder + "/" + name + ".plist";
}

PreferenceDomains::Stored PreferenceDomains::read(const std::string& name) const {
  const std::string file = path(name);
  auto bytes = files_.contentsAtPath(file);
  if (!bytes) {
    if (bytes.error().kind == Error::Kind::absent) return {};
    return {.values = {}, .damage = Damage::unreadable, .error = bytes.error()};
  }
  auto list = parsePropertyList(*bytes, file);
  if (!list) return {.values = {}, .damage = Damage::malformed, .error = list.error()};
  if (const auto* values = list->dictionary()) {
    return {.values = *values, .damage = Damage::none, .error = {}};
  }
  return {.values = {},
          .damage = Damage::malformed,
          .error = Error{.kind = Error::Kind::malformed,
                         .domain = "NSCocoaErrorDomain",
                         .description = file + " holds no preferences.",
                         .failureReason = "Its property list is no dictionary."}};
}

const std::optional<PropertyList::Dictionary>& PreferenceDomains::domain(const std::string& name) {
  State& state = states_[name];
  if (state.loaded) return state.values;
  state.loaded = true;
  Stored stored = read(name);
  if (stored.damage != Damage::none) {
    log_.write(path(name) + ": these preferences cannot be used and count as absent. " +
               stored.error.text());
  }
  state.values = std::move(stored.values);
  return state.values;
}

void PreferenceDomains::set(const std::string& name, const std::string& key, PropertyList value) {
  (void)domain(name);
  State& state = states_[name];
  state.changes.insert_or_assign(key, std::move(value));
  if (!state.values) state.values.emplace();
  applyChanges(state.changes, *state.values);
}

Result<void> PreferenceDomains::synchronize(const std::string& name) {
  State& state = states_[name];
  if (state.changes.empty()) return {};
  auto written = write(name, state);
  if (!written) {
    log_.write(path(name) + ": the preferences were not stored. " + written.error().text());
    return written;
  }
  state.changes.clear();
  return {};
}

Result<void> PreferenceDomains::write(const std::string& name, State& state) {
  const std::string file = path(name);
  // Without a difference there is nothing to write, to lock or to set aside.
  if (Stored stored = read(name); stored.values) {
    PropertyList::Dictionary merged = *stored.values;
    applyChanges(state.changes, merged);
    if (merged == *stored.values) {
      state.values = std::move(merged);
      return {};
    }
  }
  if (auto made = files_.createDirectoriesUnder(home_, home_ + kFolder); !made) return made;
  const auto lock = files_.lock(home_ + kFolder + "/." + name + ".lock");
  if (!lock) return lock.error();

  Stored stored = read(name);
  if (stored.damage == Damage::unreadable) return stored.error;
  if (stored.damage == Damage::malformed) {
    const auto aside = files_.setAside(file, clock_.now());
    if (!aside) return aside.error();
    log_.write(file + ": the damaged file was set aside as " + *aside);
  }
  PropertyList::Dictionary merged = std::move(stored.values).value_or(PropertyList::Dictionary{});
  applyChanges(state.changes, merged);
  if (auto written = files_.writeDurably(file, binaryPropertyList(merged)); !written) {
    return written;
  }
  state.values = std::move(merged);
  return {};
}

}  // namespace annivo
