// SPDX-License-Identifier: MIT
#include "contacts/ZPKQueryAddressBook.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace annivo {

namespace {

bool isStoreFile(const std::string& path) {
  return path == names::kContactsStore || path.ends_with('/' + std::string(names::kContactsStore));
}

template <typename Item>
void append(std::vector<Item>& list, std::vector<Item>&& more) {
  if (list.empty()) {
    list = std::move(more);
  } else {
    list.insert(list.end(), std::move_iterator(more.begin()), std::move_iterator(more.end()));
  }
}

}  // namespace

ZPKQueryAddressBook::ZPKQueryAddressBook(Platform& platform, GroupsAre groups)
    : platform_(platform), groups_(groups) {
  (void)addressBookStores();
}

const std::vector<std::unique_ptr<ZPKQueryAddressBookSection>>&
ZPKQueryAddressBook::addressBookStores() {
  if (addressBookStores_) return *addressBookStores_;
  const std::string folder = platform_.folders().addressBook();
  std::vector<std::unique_ptr<ZPKQueryAddressBookSection>> stores;
  NSDirectoryEnumerator walk(platform_.fileManager(), folder);
  while (const auto path = walk.nextObject()) {
    if (path->ends_with(names::kMetadata) || path->ends_with(names::kImages)) {
      walk.skipDescendents();
    }
    if (!isStoreFile(*path)) continue;
    stores.push_back(
        std::make_unique<ZPKQueryAddressBookSection>(platform_, folder + "/" + *path, groups_));
  }
  for (const Error& failure : walk.failures()) {
    foldersWereRead_ = false;
    platform_.application().presentError(failure);
  }
  addressBookStores_ = std::move(stores);
  return *addressBookStores_;
}

bool ZPKQueryAddressBook::wasReadWhole() const {
  return foldersWereRead_ &&
         std::all_of(addressBookStores_->begin(), addressBookStores_->end(),
                     [](const auto& section) { return section->wasReadWhole(); });
}

ZPKQueryAddressBookSection::Items ZPKQueryAddressBook::arrayForEntity(const std::string& name) {
  ZPKQueryAddressBookSection::Items merged;
  for (const auto& section : addressBookStores()) {
    auto items = section->arrayForEntity(name);
    append(merged.dates, std::move(items.dates));
    append(merged.groups, std::move(items.groups));
    append(merged.labels, std::move(items.labels));
  }
  return merged;
}

const std::vector<ContactDateRecord>& ZPKQueryAddressBook::birthdayDates() {
  if (!birthdayDates_) birthdayDates_ = arrayForEntity("ABCDContact").dates;
  return *birthdayDates_;
}

const std::vector<ContactDateRecord>& ZPKQueryAddressBook::anniversaryDates() {
  if (!anniversaryDates_) anniversaryDates_ = arrayForEntity("ABCDContactDate").dates;
  return *anniversaryDates_;
}

const std::vector<GroupRecord>& ZPKQueryAddressBook::addressBookGroups() {
  if (!addressBookGroups_) addressBookGroups_ = arrayForEntity("ABCDGroup").groups;
  return *addressBookGroups_;
}

std::vector<std::string> ZPKQueryAddressBook::addressbookCustomDateLabels() {
  if (!addressbookCustomDateLabels_) {
    addressbookCustomDateLabels_ = arrayForEntity("ABCDContactDate_label").labels;
  }
  std::vector<std::string> distinct;
  std::set<std::string_view> seen;
  for (const std::string& label : *addressbookCustomDateLabels_) {
    if (seen.insert(label).second) distinct.push_back(label);
  }
  return distinct;
}

}  // namespace annivo
