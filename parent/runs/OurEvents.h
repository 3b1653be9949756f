// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace annivo {

/// Tells our events from other people's: an event is ours when its file says so, or else when a
/// ledger names it, as other programs drop properties that they do not know.
class OurEvents {
 public:
  /// By the ledgers as each of `states` has it. A ledger that cannot be read names none. All
  /// outlive this.
  OurEvents(Platform& platform, std::vector<NSFileManager*> states)
      : platform_(platform), states_(std::move(states)) {}
  [[nodiscard]] bool contains(const CalEvent& event);

  /// The files that a ledger consists of.
  [[nodiscard]] static std::vector<std::string> ledgerFiles(Platform& platform);

 private:
  Platform& platform_;
  std::vector<NSFileManager*> states_;
  std::optional<std::set<std::string>> recorded_;  ///< UIDs, read when first needed
};

}  // namespace annivo
