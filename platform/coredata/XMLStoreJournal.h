// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/coredata/XMLStoreFile.h"

namespace annivo {

/// The very file that a journal continues: how often it had been written, and its content.
struct XMLStoreBase {
  std::int64_t generation = 0;
  std::uint64_t size = 0;
  std::uint64_t hash = 0;
  friend bool operator==(const XMLStoreBase&, const XMLStoreBase&) = default;
};

[[nodiscard]] std::string journalHeader(const XMLStoreBase& base);
/// One save: its elements (see XMLStoreFile.h) in a frame that shows whether it is whole.
[[nodiscard]] std::string journalEntry(std::string_view elements);

struct XMLStoreJournal {
  enum class State {
    whole,
    torn,     ///< what follows the last whole entry was dropped
    damaged,  ///< no journal
    newer,    ///< of a form that this program does not know
  };
  State state = State::whole;
  XMLStoreBase base;  ///< of a negative generation when not even the header is whole
  std::vector<XMLStoreChange> changes;  ///< of all entries, in order
};
[[nodiscard]] XMLStoreJournal parseJournal(std::string_view bytes,
                                           const NSManagedObjectModel& model);

}  // namespace annivo
