// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "contacts/ZPKQueryAddressBook.h"
#include "platform/Platform.h"

namespace annivo {

/// Records chosen from a list that somebody else owns.
using ContactDates = std::vector<std::reference_wrapper<const ContactDateRecord>>;

/// The person's contact dates, filtered by the chosen group and the excluded labels. Made once a
/// run; each list is made at its first request and then kept. The records are those of its
/// ZPKQueryAddressBook and live as long as this object.
class ZPKAddressBookDates {
 public:
  /// `shouldHelperRun:`: whether contacts or parent changed strictly after the last run, or a
  /// folder of the contacts cannot be listed, so that nobody knows.
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
  ZPKAddressBookDates(const ZPKAddressBookDates&) = delete;
  ZPKAddressBookDates& operator=(const ZPKAddressBookDates&) = delete;

  [[nodiscard]] const ContactDates& addressBookBirthDates();
  [[nodiscard]] const ContactDates& addressBookCustomDates();
  /// The chosen group's unique identifier; "" for all contacts.
  [[nodiscard]] const std::string& filterGroupID();
  /// The date types to leave out.
  [[nodiscard]] const std::vector<std::string>& filterLabels();
  /// The records of the list asked for last that are in the chosen group.
  [[nodiscard]] ContactDates filterArrayByGroup();
  /// `filterArrayByLabels:`
  [[nodiscard]] ContactDates filterArrayByLabels(ContactDates records);
  /// Whether all contacts could be read so far; what could not was presented.
  [[nodiscard]] bool wasReadWhole() const { return myMultiAddressBook.wasReadWhole(); }
  /// The identifiers of all dates that can be read, chosen or not.
  [[nodiscard]] std::unordered_set<std::string> dateUIDs();
  /// The source of the unfiltered lists.
  [[nodiscard]] ZPKQueryAddressBook& addressBook() { return myMultiAddressBook; }

 private:
  void presentFailedFetches();
  [[nodiscard]] ContactDates filtered(const std::vector<ContactDateRecord>& all);

  Platform& platform_;
  std::optional<ContactDates> birthDates;
  std::optional<ContactDates> customDates;
  std::optional<std::string> filterGroupID_;
  ContactDates provisionalGroupMembers;
  std::optional<std::vector<std::string>> filterLabels_;
  ZPKQueryAddressBook myMultiAddressBook;
};

}  // namespace annivo
