// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/StoredDay.h"

namespace annivo {

/// Fields joined so that no two lists of fields give the same text: "<bytes>:<field>" each, "-" for
/// an absent one.
class JoinedFields {
 public:
  JoinedFields& operator<<(const std::optional<std::string>& field);
  JoinedFields& operator<<(std::int64_t number);
  JoinedFields& operator<<(const std::optional<StoredDay>& day);
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

/// The identifier of something that brings none along: a UUID of version 5 that depends on its name
/// alone. Stores and the event ledger keep it, so it must never change; docs/formats/contacts.md
/// says what the names are made of.
[[nodiscard]] std::string lastingIdentifier(const JoinedFields& name);

}  // namespace annivo
