// SPDX-License-Identifier: MIT
#include "contacts/ZPKAddressBookDates.h"

#include <algorithm>

namespace annivo {

namespace {

/// A value of the parent's own settings; nil without them.
const PropertyList& parentSetting(Platform& platform, std::string_view key) {
  static const PropertyList nil;
  const auto& domain = platform.standardUserDefaults().persistentDomainForName(kParentDomain);
  if (!domain) return nil;
  const auto found = domain->find(key);
  return found == domain->end() ? nil : found->second;
}

struct MetadataFolders {
  explicit MetadataFolders(Platform& platform) {
    NSDirectoryEnumerator walk(platform.fileManager(), platform.folders().addressBook());
    while (const auto path = walk.nextObject()) {
      if (!path->ends_with(names::kMetadata)) continue;
      walk.skipDescendents();
      if (const auto attributes = walk.fileAttributes()) {
        latest = std::max(latest, attributes->modificationDate);
      }
    }
    wereAllSeen = walk.failures().empty();
  }
  Date latest = kUnixEpoch;  ///< change of one
  bool wereAllSeen = false;
};

std::string capitalizedName(Platform& platform, const char* code) {
  const ABAddressBook& book = platform.sharedAddressBook();
  return book.capitalized(book.localizedPropertyOrLabel(code));
}

}  // namespace

bool ZPKAddressBookDates::shouldHelperRun(Platform& platform, Date lastRun) {
  const MetadataFolders folders(platform);
  const Date* launched = parentSetting(platform, keys::kLastLaunched).date();
  return !folders.wereAllSeen ||
         (launched == nullptr ? folders.latest : std::max(folders.latest, *launched)) > lastRun;
}

Date ZPKAddressBookDates::addressBookLastModifed(Platform& platform) {
  return MetadataFolders(platform).latest;
}

std::string ZPKAddressBookDates::userPrimaryEmail(Platform& platform) {
  constexpr const char* kNone = "No Email Set";
  const auto me = platform.sharedAddressBook().me();
  if (!me || !me->emails.primaryIdentifier) return kNone;
  const auto primary = me->emails.indexForIdentifier(*me->emails.primaryIdentifier);
  return me->emails.valueAtIndex(primary).value_or(kNone);
}

std::string ZPKAddressBookDates::localizedBirthdayString(Platform& platform) {
  return capitalizedName(platform, kABBirthdayProperty);
}

std::string ZPKAddressBookDates::localizedAnniversaryString(Platform& platform) {
  return capitalizedName(platform, kABAnniversaryLabel);
}

ZPKAddressBookDates::ZPKAddressBookDates(Platform& platform)
    : platform_(platform),
      myMultiAddressBook(platform,
                         filterGroupID().empty() ? GroupsAre::optional : GroupsAre::needed) {
  (void)filterLabels();
}

const ContactDates& ZPKAddressBookDates::addressBookBirthDates() {
  if (!birthDates) birthDates = filtered(myMultiAddressBook.birthdayDates());
  return *birthDates;
}

const ContactDates& ZPKAddressBookDates::addressBookCustomDates() {
  if (!customDates) customDates = filtered(myMultiAddressBook.anniversaryDates());
  return *customDates;
}

ContactDates ZPKAddressBookDates::filtered(const std::vector<ContactDateRecord>& all) {
  presentFailedFetches();
  provisionalGroupMembers.assign(all.begin(), all.end());
  return filterArrayByLabels(filterArrayByGroup());
}

const std::string& ZPKAddressBookDates::filterGroupID() {
  if (!filterGroupID_) {
    filterGroupID_ = parentSetting(platform_, keys::kSelectedGroupUID).stringOr("");
  }
  return *filterGroupID_;
}

const std::vector<std::string>& ZPKAddressBookDates::filterLabels() {
  if (filterLabels_) return *filterLabels_;
  filterLabels_.emplace();
  if (const auto* labels = parentSetting(platform_, keys::kTheLabels).array()) {
    for (const PropertyList& label : *labels) {
      if (label.string()) filterLabels_->push_back(*label.string());
    }
  }
  return *filterLabels_;
}

ContactDates ZPKAddressBookDates::filterArrayByGroup() {
  ContactDates members = provisionalGroupMembers;
  if (filterGroupID().empty()) return members;
  std::erase_if(members, [&](const ContactDateRecord& record) {
    return std::find(record.groups.begin(), record.groups.end(), filterGroupID()) ==
           record.groups.end();
  });
  return members;
}

std::unordered_set<std::string> ZPKAddressBookDates::dateUIDs() {
  std::unordered_set<std::string> uids;
  for (const auto* list :
       {&myMultiAddressBook.birthdayDates(), &myMultiAddressBook.anniversaryDates()}) {
    for (const ContactDateRecord& record : *list) uids.insert(record.dateUID);
  }
  presentFailedFetches();
  return uids;
}

void ZPKAddressBookDates::presentFailedFetches() {
  for (const auto& section : myMultiAddressBook.addressBookStores()) {
    for (const Error& error : section->takeFailedFetches()) {
      platform_.application().presentError(error);
    }
  }
}

ContactDates ZPKAddressBookDates::filterArrayByLabels(ContactDates records) {
  std::erase_if(records, [&](const ContactDateRecord& record) {
    return std::find(filterLabels().begin(), filterLabels().end(), record.dateType) !=
           filterLabels().end();
  });
  return records;
}

}  // namespace annivo
