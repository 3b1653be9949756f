// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "platform/foundation/HomeFolders.h"
#include "platform/foundation/NSUserDefaults.h"

namespace annivo {

namespace {

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
  return HomeFolders(home_).preferences() + "/" + name + ".plist";
}

PreferenceDomains::Stored PreferenceDomains::read(const std::string& name) const {
  const std::string file = path(name);
  auto bytes = files_.contentsAtPath(file);
  if (!bytes) {
    // A link that leads nowhere, for now, is there.
    const bool absent = bytes.error().kind == Error::Kind::absent &&
                        !files_.attributesAtPath(file, Links::doNotFollow).ok();
    if (absent) return {};
    Error error = bytes.error();
    error.kind = Error::Kind::unreadable;
    return {.values = {}, .failure = std::move(error)};
  }
  auto list = parsePropertyList(*bytes, file);
  if (!list) return {.values = {}, .failure = list.error()};
  if (const auto* values = list->dictionary()) return {.values = *values, .failure = {}};
  return {.values = {},
          .failure = Error{.kind = Error::Kind::malformed,
                           .domain = "NSCocoaErrorDomain",
                           .description = file + " holds no preferences.",
                           .failureReason = "Its property list is no dictionary."}};
}

PreferenceDomains::State& PreferenceDomains::loaded(const std::string& name) {
  State& state = states_[name];
  if (state.loaded) return state;
  state.loaded = true;
  Stored stored = read(name);
  state.values = std::move(stored.values);
  state.failure = std::move(stored.failure);
  return state;
}

const std::optional<PropertyList::Dictionary>& PreferenceDomains::domain(const std::string& name) {
  State& state = loaded(name);
  if (state.failure && !std::exchange(state.failureIsTold, true)) {
    log_.write(path(name) + ": these preferences cannot be used. " + state.failure->text());
  }
  return state.values;
}

const Error* PreferenceDomains::failure(const std::string& name) {
  State& state = loaded(name);
  if (!state.failure) return nullptr;
  state.failureIsTold = true;
  return &*state.failure;
}

void PreferenceDomains::reportType(const std::string& name, const std::string& key,
                                   const std::string& expected) {
  if (!states_[name].reportedTypes.insert(key).second) return;
  log_.write(path(name) + ": the value of \"" + key + "\" is no " + expected +
             "; it is left as it is");
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
      state.failure.reset();
      return {};
    }
  }
  if (auto made = files_.createDirectoriesUnder(home_, HomeFolders(home_).preferences()); !made)
    return made;
  const auto lock = files_.lock(HomeFolders(home_).preferences() + "/." + name + ".lock");
  if (!lock) return lock.error();

  Stored stored = read(name);
  if (stored.failure) {
    if (stored.failure->kind != Error::Kind::malformed) return *stored.failure;
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
  state.failure.reset();
  return {};
}

}  // namespace annivo
