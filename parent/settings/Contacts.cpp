// SPDX-License-Identifier: MIT
#include "parent/settings/Contacts.h"

#include <map>
#include <set>
#include <unordered_map>

#include "base/Translation.h"

namespace annivo {

namespace {

constexpr const char* kModel =
    "/System/Library/Frameworks/AddressBook.framework/Versions/A/Resources/ABAddressBook.momd";

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    if (!part.empty() && part != kNull) text.append(text.empty() ? "" : " ").append(part);
  }
  return text;
}

std::string nameOf(const NSManagedObject& contact) {
  const auto text = [&](const char* key) { return contact.valueForKey(key).stringOr(""); };
  std::string name = joined({text("firstName"), text("middleName"), text("lastName")});
  if (name.empty()) name = text("organization");
  if (name.empty()) name = text("nickname");
  return name.empty() ? translated("(no name)") : name;
}

/// Adds everybody in a store whom `known` does not hold. A store that cannot be read was reported
/// when its dates were.
void addOthers(Platform& platform, const NSManagedObjectModel& model, const std::string& path,
               std::set<std::string>& known, std::vector<ListedPerson>& people) {
  NSPersistentStoreCoordinator coordinator(model, platform.storeEnvironment());
  if (!coordinator.addPersistentStore(StoreType::sqlite, path)) return;
  NSManagedObjectContext context;
  context.setPersistentStoreCoordinator(&coordinator);
  const auto contacts = context.executeFetchRequest({.entity = "ABCDContact", .predicate = {}});
  if (!contacts) return;
  for (const NSManagedObject* contact : *contacts) {
    const std::string uid = contact->valueForKey("uniqueId").stringOr("");
    if (known.insert(uid).second) people.push_back({nameOf(*contact), uid, {}});
  }
}

}  // namespace

std::vector<ContactDateRecord> Contacts::records() {
  std::vector<ContactDateRecord> all = book_.birthdayDates();
  const auto& others = book_.anniversaryDates();
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

std::vector<ListedPerson> Contacts::people() {
  std::vector<ListedPerson> people;
  std::unordered_map<std::string, std::size_t> places;
  std::set<std::string> known;
  for (ContactDateRecord& record : records()) {
    const auto [place, isNew] = places.emplace(record.personUID, people.size());
    if (isNew) {
      people.push_back({personName(record), record.personUID, {}});
      known.insert(record.personUID);
    }
    people[place->second].dates.push_back(std::move(record));
  }
  const auto model = contactsModel(platform_);
  if (!model) {
    platform_.application().presentError(model.error());
    return people;
  }
  for (const auto& section : book_.addressBookStores()) {
    addOthers(platform_, *model, section->dbPath(), known, people);
  }
  return people;
}

std::vector<ListedGroup> Contacts::groups() {
  std::map<std::string, std::set<std::string>> members;
  for (const ContactDateRecord& record : records()) {
    for (const std::string& group : record.groups) members[group].insert(record.personUID);
  }
  std::vector<ListedGroup> groups;
  for (const GroupRecord& group : book_.addressBookGroups()) {
    // Older stores keep everybody in a group of this name, which nobody made.
    if (group.name == "card") continue;
    groups.push_back({group.name, group.uniqueId, members[group.uniqueId].size()});
  }
  return groups;
}

std::vector<ListedLabel> Contacts::labels() {
  std::vector<ListedLabel> labels;
  std::map<std::string, std::size_t> places;
  for (const ContactDateRecord& record : records()) {
    const auto [place, isNew] = places.emplace(record.dateType, labels.size());
    if (isNew) {
      labels.push_back({record.dateType, shownLabel(record.dateType, platform_), 0});
    }
    ++labels[place->second].dates;
  }
  return labels;
}

Result<NSManagedObjectModel> contactsModel(Platform& platform) {
  return NSManagedObjectModel::initWithContentsOfURL(platform.fileManager(),
                                                     platform.resolvedPath(kModel));
}

std::string personName(const ContactDateRecord& record) {
  std::string name = joined({record.firstName, record.middleName, record.lastName});
  if (name.empty()) name = joined({record.organization});
  if (name.empty()) name = joined({record.nickName});
  return name.empty() ? translated("(no name)") : name;
}

std::string shownLabel(const std::string& dateType, Platform& platform) {
  return dateType == kNull ? translated("(no label)") : platform.localizedString(dateType, "");
}

}  // namespace annivo
