// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/ZPKQueryAddressBookSection.h"

namespace annivo {

/// All stores of the person's address book, merged in the order in which the walk meets them.
class ZPKQueryAddressBook {
 public:
  /// Finds and opens every store. A folder that is there and cannot be listed is presented.
  explicit ZPKQueryAddressBook(Platform& platform, GroupsAre groups = GroupsAre::optional);

  /// Found once; stores added later are not seen.
  [[nodiscard]] const std::vector<std::unique_ptr<ZPKQueryAddressBookSection>>& addressBookStores();
  /// `arrayForEntity:`. What each store yields, one after the other.
  [[nodiscard]] ZPKQueryAddressBookSection::Items arrayForEntity(const std::string& name);
  /// The four lists are built on first request and cached.
  [[nodiscard]] const std::vector<ContactDateRecord>& birthdayDates();
  /// Every labelled date, not anniversaries alone.
  [[nodiscard]] const std::vector<ContactDateRecord>& anniversaryDates();
  [[nodiscard]] const std::vector<GroupRecord>& addressBookGroups();
  /// The distinct labels of all stores.
  [[nodiscard]] std::vector<std::string> addressbookCustomDateLabels();
  /// Whether every folder and all that was asked of the stores so far could be read.
  [[nodiscard]] bool wasReadWhole() const;

 private:
  Platform& platform_;
  GroupsAre groups_;
  bool foldersWereRead_ = true;
  std::optional<std::vector<ContactDateRecord>> birthdayDates_;
  std::optional<std::vector<ContactDateRecord>> anniversaryDates_;
  std::optional<std::vector<GroupRecord>> addressBookGroups_;
  std::optional<std::vector<std::string>> addressbookCustomDateLabels_;
  std::optional<std::vector<std::unique_ptr<ZPKQueryAddressBookSection>>> addressBookStores_;
};

}  // namespace annivo
