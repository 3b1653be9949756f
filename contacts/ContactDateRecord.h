// SPDX-License-Identifier: MIT
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Date.h"

namespace annivo {

/// How records and groups write a value that the store does not hold.
inline constexpr std::string_view kNull = "NULL";

/// Group identifiers in their order. Never changed once made, so that the people of the same groups
/// share one list.
class GroupIdentifiers {
 public:
  GroupIdentifiers() = default;
  GroupIdentifiers(std::initializer_list<std::string> list)
      : GroupIdentifiers(std::vector<std::string>(list)) {}
  explicit GroupIdentifiers(std::vector<std::string> list)
      : list_(std::make_shared<const std::vector<std::string>>(std::move(list))) {}

  [[nodiscard]] auto begin() const { return list().begin(); }
  [[nodiscard]] auto end() const { return list().end(); }
  [[nodiscard]] std::size_t size() const { return list().size(); }
  [[nodiscard]] bool empty() const { return list().empty(); }
  friend bool operator==(const GroupIdentifiers& left, const GroupIdentifiers& right) {
    return left.list() == right.list();
  }

 private:
  [[nodiscard]] const std::vector<std::string>& list() const {
    static const std::vector<std::string> none;
    return list_ == nullptr ? none : *list_;
  }
  std::shared_ptr<const std::vector<std::string>> list_;
};

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
  std::optional<Date> thisDate{};     ///< "this date"
  std::string dateUID{kNull};         ///< "date UID"
  std::string personUID{kNull};       ///< "person UID"
  /// "groups": unique identifiers of every group that holds the person, each followed by its
  /// ancestors, duplicates kept.
  GroupIdentifiers groups{};

  /// The text under one of the text keys above; nothing for "this date", "groups" and other keys.
  [[nodiscard]] std::optional<std::string_view> textForKey(std::string_view key) const;
};

}  // namespace annivo
