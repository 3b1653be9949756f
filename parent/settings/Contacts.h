// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contacts/ZPKQueryAddressBook.h"
#include "platform/Platform.h"

namespace annivo {

struct ListedPerson {
  std::string name;
  std::string uid;
  std::vector<ContactDateRecord> dates;
};

struct ListedGroup {
  std::string name;
  std::string uid;
  std::size_t people = 0;  ///< with dates, in it or in its subgroups
};

struct ListedLabel {
  std::string dateType;  ///< as dates carry it, and as the excluded labels name it
  std::string shown;     ///< in the person's language
  std::size_t dates = 0;
};

/// What all stores of the address book hold, for listing and choosing.
class Contacts {
 public:
  explicit Contacts(Platform& platform) : platform_(platform), book_(platform) {}

  /// Everybody in the order of the stores, first those with dates.
  [[nodiscard]] std::vector<ListedPerson> people();
  [[nodiscard]] std::vector<ListedGroup> groups();
  [[nodiscard]] std::vector<ListedLabel> labels();
  /// Birthdays, then the other dates.
  [[nodiscard]] std::vector<ContactDateRecord> records();

 private:
  Platform& platform_;
  ZPKQueryAddressBook book_;
};

/// The model of contacts stores.
[[nodiscard]] Result<NSManagedObjectModel> contactsModel(Platform& platform);

/// The name of a record's person, as a card shows it; "(no name)" for none.
[[nodiscard]] std::string personName(const ContactDateRecord& record);
/// A date type in the person's language; "(no label)" for none.
[[nodiscard]] std::string shownLabel(const std::string& dateType, Platform& platform);

}  // namespace annivo
