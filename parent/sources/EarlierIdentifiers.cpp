// SPDX-License-Identifier: MIT
#include "parent/sources/EarlierIdentifiers.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "parent/settings/Contacts.h"
#include "parent/sources/LastingIdentifier.h"

namespace annivo {

namespace {

/// Whether it begins with a UUID of version 8.
bool isEarlier(const std::string& identifier) {
  constexpr std::string_view kHyphens = "--8--";
  constexpr std::array<std::size_t, 5> kPlaces{8, 13, 14, 18, 23};
  return identifier.size() >= 36 &&
         std::ranges::equal(kPlaces, kHyphens, {}, [&](std::size_t at) { return identifier[at]; });
}

std::optional<std::string> textOf(const NSManagedObject& object, const char* key) {
  const std::string* text = object.valueForKey(key).string();
  return text ? std::optional(*text) : std::nullopt;
}

std::string joinedNames(const StoredPerson& person) {
  return (JoinedFields() << person.firstName << person.middleName << person.lastName
                         << person.nickname << person.organization)
      .text();
}

std::string joinedDay(const std::optional<StoredDay>& day) {
  return (JoinedFields() << day).text();
}

}  // namespace

Result<EarlierIdentifiers> EarlierIdentifiers::of(Platform& platform, const std::string& path) {
  EarlierIdentifiers earlier;
  const auto model = contactsModel(platform);
  if (!model) return model.error();
  NSPersistentStoreCoordinator coordinator(*model, platform.storeEnvironment());
  NSManagedObjectContext context;
  const auto nothingOr = [&](const Error& error) -> Result<EarlierIdentifiers> {
    if (error.kind == Error::Kind::unreadable) return error;
    return EarlierIdentifiers();
  };
  if (auto opened = coordinator.addPersistentStore(StoreType::sqlite, path); !opened) {
    return nothingOr(opened.error());
  }
  context.setPersistentStoreCoordinator(&coordinator);
  const auto people = context.executeFetchRequest({.entity = "ABCDContact", .predicate = {}});
  if (!people) return nothingOr(people.error());
  const auto dates = context.executeFetchRequest({.entity = "ABCDContactDate", .predicate = {}});
  if (!dates) return nothingOr(dates.error());
  const auto groups = context.executeFetchRequest({.entity = "ABCDGroup", .predicate = {}});
  if (!groups) return nothingOr(groups.error());
  for (const auto* contact : *people) earlier.addPerson(*contact, platform.defaultTimeZone());
  for (const auto* date : *dates) earlier.addDate(*date);
  for (const auto* group : *groups) {
    const std::string identifier = textOf(*group, "uniqueId").value_or("");
    if (isEarlier(identifier))
      earlier.groups_.emplace(textOf(*group, "name").value_or(""), identifier);
  }
  return earlier;
}

void EarlierIdentifiers::addPerson(const NSManagedObject& contact, const NSTimeZone& zone) {
  const std::string identifier = textOf(contact, "uniqueId").value_or("");
  if (!isEarlier(identifier)) return;
  const StoredPerson person{.firstName = textOf(contact, "firstName"),
                            .middleName = textOf(contact, "middleName"),
                            .lastName = textOf(contact, "lastName"),
                            .nickname = textOf(contact, "nickname"),
                            .organization = textOf(contact, "organization")};
  std::optional<StoredDay> birthday;
  if (const Date* date = contact.valueForKey("birthday").date()) {
    const CivilTime day = zone.civil(*date);
    birthday = {static_cast<int>(day.year), day.month, day.day};
  }
  people_.push_back({identifier, joinedNames(person), joinedDay(birthday)});
}

void EarlierIdentifiers::addDate(const NSManagedObject& date) {
  const NSManagedObject* owner = date.toOne("owner");
  if (owner == nullptr) return;
  dates_[{textOf(*owner, "uniqueId").value_or(""), textOf(date, "label")}].push_back(
      textOf(date, "uniqueId").value_or(""));
}

std::optional<std::string> EarlierIdentifiers::takePerson(const StoredPerson& person,
                                                          Likeness likeness) {
  const std::string names = joinedNames(person);
  const std::string birthday = joinedDay(person.birthday);
  const auto found = std::find_if(people_.begin(), people_.end(), [&](const Person& other) {
    return other.names == names && (likeness == Likeness::names || other.birthday == birthday);
  });
  if (found == people_.end()) return std::nullopt;
  std::string identifier = std::move(found->identifier);
  people_.erase(found);
  return identifier;
}

std::optional<std::string> EarlierIdentifiers::date(const std::string& person,
                                                    const std::optional<std::string>& label,
                                                    int number) const {
  const auto found = dates_.find({person, label});
  if (found == dates_.end() || static_cast<std::size_t>(number) >= found->second.size()) {
    return std::nullopt;
  }
  const std::string& identifier = found->second[static_cast<std::size_t>(number)];
  return isEarlier(identifier) ? std::optional(identifier) : std::nullopt;
}

std::optional<std::string> EarlierIdentifiers::group(const std::string& name) const {
  const auto found = groups_.find(name);
  return found == groups_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace annivo
