// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Date.h"

namespace annivo {

/// How records and groups write a value that the store does not hold.
inline constexpr std::string_view kNull = "NULL";

/// One date of one person. A value that the store does not hold is the text "NULL" (an absent
/// date: nothing).
struct ContactDateRecord {
  std::string firstName{kNull};       ///< "first name"
  std::string middleName{kNull};      ///< "middle name"
  std::string lastName{kNull};        ///< "last name"
  std::string nickName{kNull};        ///< "nick name"
  std::string organization{kNull};    ///< "organization"
  std::string isOrganization{kNull};  ///< "isOrganization": the display flags in decimal
  std::string dateType{kNull};        ///< "date type"
  std::optional<Date> thisDate;       ///< "this date"
  std::string dateUID{kNull};         ///< "date UID"
  std::string personUID{kNull};       ///< "person UID"
  /// "groups": unique identifiers of every group that holds the person, each followed by its
  /// ancestors, duplicates kept.
  std::vector<std::string> groups;

  /// The text under one of the text keys above; nothing for "this date", "groups" and other keys.
  [[nodiscard]] std::optional<std::string_view> textForKey(std::string_view key) const;
};

}  // namespace annivo
