// SPDX-License-Identifier: MIT
#include "contacts/ZPKQueryAddressBookSection.h"

#include <set>

namespace annivo {

namespace {

std::string textOr(const PropertyList& value) { return value.stringOr(kNull); }

GroupRecord shortRecord(const NSManagedObject& group) {
  return {.name = textOr(group.valueForKey("name")),
          .uniqueId = textOr(group.valueForKey("uniqueId"))};
}

std::optional<Date> dateOf(const PropertyList& value) {
  return value.date() ? std::optional(*value.date()) : std::nullopt;
}

}  // namespace

ZPKQueryAddressBookSection::ZPKQueryAddressBookSection(Platform& platform, std::string path,
                                                       GroupsAre groups)
    : platform_(platform), dbPath_(std::move(path)), groups_(groups) {
  (void)abGroups();
}

std::vector<NSManagedObject*> ZPKQueryAddressBookSection::fetchedItemsForEntity(
    const std::string& name) {
  return fetch(name).value_or(std::vector<NSManagedObject*>{});
}

std::optional<std::vector<NSManagedObject*>> ZPKQueryAddressBookSection::fetch(
    const std::string& name, Failure failure) {
  static const auto hasBirthday = NSPredicateFormat::parse("((birthday != nil))");
  NSManagedObjectContext* context = managedObjectContext();
  if (context == nullptr) return std::nullopt;
  NSFetchRequest request{.entity = name, .predicate = std::nullopt};
  if (name == "ABCDContact") request.predicate = hasBirthday.with({});
  auto fetched = context->executeFetchRequest(request);
  logNotes();
  const auto& unread = persistentStoreCoordinator_->store()->unreadRelationship();
  if (fetched && !unread) return std::move(*fetched);
  const Error& error = fetched ? *unread : fetched.error();
  platform_.log().write(error.text());
  // Of relationships only those to groups are to many.
  const bool isLack = fetched ? groups_ == GroupsAre::needed : failure == Failure::isLack;
  if (isLack) {
    wasReadWhole_ = false;
    failedFetches_.push_back(error);
  }
  if (!fetched || isLack) return std::nullopt;
  return std::move(*fetched);
}

void ZPKQueryAddressBookSection::logNotes() {
  const auto notes = persistentStoreCoordinator_->store()->notes();
  for (; notesLogged_ < notes.size(); ++notesLogged_) {
    platform_.log().write(dbPath_ + ": " + notes[notesLogged_]);
  }
}

const std::vector<GroupWithParents>& ZPKQueryAddressBookSection::abGroups() {
  if (ancestry_) return abGroups_;
  const bool needed = groups_ == GroupsAre::needed;
  const auto groups = fetch("ABCDGroup", needed ? Failure::isLack : Failure::isLogged);
  if (!groups && (needed || managedObjectContext_ == nullptr)) return abGroups_;
  for (const NSManagedObject* group : groups.value_or(std::vector<NSManagedObject*>{})) {
    abGroups_.push_back({shortRecord(*group), group->toMany("parentGroups")});
  }
  ancestry_.emplace(abGroups_);
  return abGroups_;
}

void ZPKQueryAddressBookSection::parentsForGroupsWithResultContainer(
    std::span<const NSManagedObject* const> groups, std::vector<std::string>& container) {
  (void)abGroups();
  if (ancestry_) ancestry_->parentsForGroups(groups, container);
}

ContactDateRecord ZPKQueryAddressBookSection::filterIfCompany(ContactDateRecord record) {
  if (record.organization == kNull) return record;
  record.lastName = record.organization;
  record.firstName = kNull;
  return record;
}

ZPKQueryAddressBookSection::Items ZPKQueryAddressBookSection::arrayForEntity(
    const std::string& name) {
  Items items;
  if (name == "ABCDContactDate_label") {
    items.labels = distinctLabels();
  } else if (name == "ABCDGroup") {
    for (const NSManagedObject* group : fetchedItemsForEntity(name)) {
      items.groups.push_back(shortRecord(*group));
    }
  } else if (name == "ABCDContact" || name == "ABCDContactDate") {
    (void)abGroups();
    if (!ancestry_) return items;  // No store, or none of the groups that are needed.
    const ABAddressBook& book = platform_.sharedAddressBook();
    const std::string birthday = book.localizedPropertyOrLabel(kABBirthdayProperty);
    const std::string anniversary =
        book.capitalized(book.localizedPropertyOrLabel(kABAnniversaryLabel));
    const auto fetched = fetchedItemsForEntity(name);
    items.dates.reserve(fetched.size());
    for (const NSManagedObject* object : fetched) {
      const bool isBirthday = name == "ABCDContact";
      ContactDateRecord record = recordOf(isBirthday ? object : object->toOne("owner"));
      record.dateUID = textOr(object->valueForKey("uniqueId"));
      record.thisDate = dateOf(object->valueForKey(isBirthday ? "birthday" : "date"));
      record.dateType = isBirthday ? birthday : textOr(object->valueForKey("label"));
      if (!isBirthday && record.dateType == kABAnniversaryLabel) record.dateType = anniversary;
      if (record.isOrganization == "1") record = filterIfCompany(std::move(record));
      items.dates.push_back(std::move(record));
    }
  }
  return items;
}

std::vector<std::string> ZPKQueryAddressBookSection::distinctLabels() {
  std::vector<std::string> labels;
  std::set<std::string> seen;
  for (const NSManagedObject* date : fetchedItemsForEntity("ABCDContactDate")) {
    const std::string* label = date->valueForKey("label").string();
    if (label != nullptr && seen.insert(*label).second) labels.push_back(*label);
  }
  return labels;
}

/// The person's fields of a record; all "NULL" without a person.
ContactDateRecord ZPKQueryAddressBookSection::recordOf(const NSManagedObject* person) {
  ContactDateRecord record;
  if (person == nullptr) return record;
  record.firstName = textOr(person->valueForKey("firstName"));
  record.middleName = textOr(person->valueForKey("middleName"));
  record.lastName = textOr(person->valueForKey("lastName"));
  record.nickName = textOr(person->valueForKey("nickname"));
  record.organization = textOr(person->valueForKey("organization"));
  const PropertyList& flags = person->valueForKey("displayFlags");
  if (flags.integer()) record.isOrganization = std::to_string(*flags.integer());
  record.personUID = textOr(person->valueForKey("uniqueId"));
  const auto groups = person->toMany("parentGroups");
  if (ancestry_ && !groups.empty()) record.groups = ancestry_->identifiersFor(groups);
  return record;
}

}  // namespace annivo
