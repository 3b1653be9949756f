// SPDX-License-Identifier: MIT
#include "platform/foundation/NSUserDefaults.h"

namespace annivo {

const PropertyList& NSUserDefaults::objectForKey(const std::string& key) const {
  if (searched_.empty()) {
    searched_ = {&domains_.domain(ownDomain_), &domains_.domain(kGlobalDomain)};
  }
  for (const auto* values : searched_) {
    if (!*values) continue;
    if (const auto found = (*values)->find(key); found != (*values)->end()) return found->second;
  }
  static const PropertyList kNil;
  const auto found = registered_.find(key);
  return found == registered_.end() ? kNil : found->second;
}

void NSUserDefaults::registerDefaults(const PropertyList::Dictionary& values) {
  for (const auto& [key, value] : values) registered_.insert_or_assign(key, value);
}

void NSUserDefaults::setObjectForKey(PropertyList value, const std::string& key) {
  domains_.set(ownDomain_, key, std::move(value));
}

Result<void> NSUserDefaults::synchronize() { return domains_.synchronize(ownDomain_); }

const std::optional<PropertyList::Dictionary>& NSUserDefaults::persistentDomainForName(
    const std::string& name) const {
  return domains_.domain(name);
}

NSUserDefaults::NSUserDefaults(PreferenceDomains& domains, std::string ownDomain)
    : domains_(domains), ownDomain_(std::move(ownDomain)) {}

}  // namespace annivo
