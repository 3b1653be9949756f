// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "contacts/ZPKQueryAddressBook.h"
#include "platform/Platform.h"

namespace annivo {

/// The person's contact dates, filtered by the chosen group and the excluded labels. Made once a
/// run; each list is made at its first request and then kept.
class ZPKAddressBookDates {
 public:
  /// `shouldHelperRun:`: whether contacts or parent changed strictly after the last run.
  [[nodiscard]] static bool shouldHelperRun(Platform& platform, Date lastRun);
  /// The latest change of the address book's Metadata folders; the Unix epoch without any.
  [[nodiscard]] static Date addressBookLastModifed(Platform& platform);
  /// The primary address of the person's own card, or "No Email Set".
  [[nodiscard]] static std::string userPrimaryEmail(Platform& platform);
  /// The words for a birthday and an anniversary, capitalised.
  [[nodiscard]] static std::string localizedBirthdayString(Platform& platform);
  [[nodiscard]] static std::string localizedAnniversaryString(Platform& platform);

  /// Opens every store and reads both filter preferences.
  explicit ZPKAddressBookDates(Platform& platform);

  [[nodiscard]] const std::vector<ContactDateRecord>& addressBookBirthDates();
  [[nodiscard]] const std::vector<ContactDateRecord>& addressBookCustomDates();
  /// The chosen group's unique identifier; "" for all contacts.
  [[nodiscard]] const std::string& filterGroupID();
  /// The date types to leave out.
  [[nodiscard]] const std::vector<std::string>& filterLabels();
  [[nodiscard]] std::vector<ContactDateRecord> filterArrayByGroup() const;
  /// `filterArrayByLabels:`
  [[nodiscard]] std::vector<ContactDateRecord> filterArrayByLabels(
      std::vector<ContactDateRecord> records) const;

 private:
  Platform& platform_;
  std::optional<std::vector<ContactDateRecord>> birthDates;
  std::optional<std::vector<ContactDateRecord>> customDates;
  std::optional<std::string> filterGroupID_;
  std::vector<ContactDateRecord> provisionalGroupMembers;
  std::optional<std::vector<std::string>> filterLabels_;
  ZPKQueryAddressBook myMultiAddressBook;
};

}  // namespace annivo
