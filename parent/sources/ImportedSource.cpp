// SPDX-License-Identifier: MIT
#include "parent/sources/ImportedSource.h"

#include <algorithm>

#include "base/Translation.h"
#include "parent/sources/LastingIdentifier.h"

namespace annivo {

namespace {

std::string withSuffix(const std::string& uid, const std::string& suffix) {
  return uid.ends_with(suffix) ? uid : uid + suffix;
}

std::string derivedUID(const VCardContact& contact, const std::string& text,
                       const std::unordered_map<std::string, std::size_t>& taken) {
  const StoredPerson& person = contact.person;
  JoinedFields names;
  names << "person" << contact.shownName << person.firstName << person.middleName << person.lastName
        << person.nickname << person.organization;
  std::string uid = lastingIdentifier(names);
  return taken.contains(uid) ? lastingIdentifier(names << text) : uid;
}

void addOnce(std::vector<std::size_t>& members, std::size_t member) {
  if (std::find(members.begin(), members.end(), member) == members.end()) {
    members.push_back(member);
  }
}

}  // namespace

std::optional<std::string> ImportedSource::add(VCardContact contact, const std::string& text) {
  if (contact.isGroup) {
    if (contact.groupName.empty()) return translated("the group has no name");
    const std::size_t group = groupNamed(contact.groupName);
    if (!contact.uid.empty()) {
      groups_[group].uniqueId = withSuffix(contact.uid, ":ABGroup");
      groupsByUID_.emplace(bareUID(contact.uid), group);
    }
    memberships_.push_back({group, std::move(contact.members)});
    return std::nullopt;
  }
  if (contact.uid.empty()) {
    contact.uid = derivedUID(contact, text, peopleByUID_);
    if (peopleByUID_.contains(contact.uid)) return translated("the same card came before");
    withoutUID_.push_back(people_.size());
  } else if (peopleByUID_.contains(bareUID(contact.uid))) {
    return translated("a card with the same UID came before");
  }
  addPerson(std::move(contact));
  return std::nullopt;
}

void ImportedSource::addPerson(VCardContact contact) {
  StoredPerson& person = contact.person;
  person.uniqueId = withSuffix(contact.uid, ":ABPerson");
  for (const std::string& category : contact.categories) {
    groups_[groupNamed(category)].people.push_back(people_.size());
  }
  peopleByUID_.emplace(bareUID(contact.uid), people_.size());
  people_.push_back(std::move(person));
}

std::size_t ImportedSource::groupNamed(const std::string& name) {
  const auto [found, isNew] = groupsByName_.emplace(name, groups_.size());
  if (isNew) {
    groups_.push_back({.uniqueId = "", .name = name, .people = {}, .subgroups = {}});
  }
  return found->second;
}

void ImportedSource::finish(EarlierIdentifiers earlier) {
  keepPeople(earlier);
  identifyDates(earlier);
  identifyGroups(earlier);
  joinGroups();
}

/// Namesakes are told apart by their birthdays first, so that a corrected one takes nobody else's.
void ImportedSource::keepPeople(EarlierIdentifiers& earlier) {
  using Likeness = EarlierIdentifiers::Likeness;
  for (const auto likeness : {Likeness::namesAndBirthday, Likeness::names}) {
    std::erase_if(withoutUID_, [&](std::size_t place) {
      StoredPerson& person = people_[place];
      const auto kept = earlier.takePerson(person, likeness);
      if (!kept || !peopleByUID_.emplace(bareUID(*kept), place).second) return false;
      peopleByUID_.erase(bareUID(person.uniqueId));
      person.uniqueId = *kept;
      return keepsEarlier_ = true;
    });
  }
}

void ImportedSource::identifyDates(const EarlierIdentifiers& earlier) {
  for (StoredPerson& person : people_) {
    std::map<std::optional<std::string>, int> numbers;
    for (StoredDate& date : person.dates) {
      const int number = numbers[date.label]++;
      const auto kept = earlier.date(person.uniqueId, date.label, number);
      keepsEarlier_ |= kept.has_value();
      date.uniqueId = kept ? *kept
                           : lastingIdentifier(JoinedFields() << "date" << person.uniqueId
                                                              << date.label << number);
    }
  }
}

void ImportedSource::identifyGroups(const EarlierIdentifiers& earlier) {
  for (StoredGroup& group : groups_) {
    if (!group.uniqueId.empty()) continue;
    const auto kept = earlier.group(group.name);
    keepsEarlier_ |= kept.has_value();
    group.uniqueId =
        kept ? *kept
             : lastingIdentifier(JoinedFields() << "group" << sourceName_ << group.name) +
                   ":ABGroup";
  }
}

void ImportedSource::joinGroups() {
  for (const Membership& membership : memberships_) {
    for (const std::string& member : membership.members) {
      const std::string uid = bareUID(member);
      if (const auto person = peopleByUID_.find(uid); person != peopleByUID_.end()) {
        addOnce(groups_[membership.group].people, person->second);
      } else if (const auto group = groupsByUID_.find(uid); group != groupsByUID_.end()) {
        addOnce(groups_[membership.group].subgroups, group->second);
      }
    }
  }
  memberships_.clear();
}

bool ImportedSource::setMe(const std::string& uid) {
  const auto found = peopleByUID_.find(bareUID(uid));
  if (found == peopleByUID_.end()) return false;
  people_[found->second].isMe = true;
  return true;
}

std::size_t ImportedSource::dateCount() const {
  std::size_t count = 0;
  for (const StoredPerson& person : people_) {
    count += person.dates.size() + (person.birthday ? 1 : 0);
  }
  return count;
}

std::string ImportedSource::digest() const {
  JoinedFields all;
  all << "content";
  for (const StoredPerson& person : people_) {
    all << person.uniqueId << person.firstName << person.middleName << person.lastName
        << person.nickname << person.organization << person.displayFlags.value_or(-1)
        << person.birthday << std::int64_t{person.isMe};
    all << static_cast<std::int64_t>(person.dates.size());
    for (const StoredDate& date : person.dates) {
      all << date.uniqueId << date.label << date.day;
    }
    all << static_cast<std::int64_t>(person.emails.size());
    for (const std::string& email : person.emails) all << email;
  }
  for (const StoredGroup& group : groups_) {
    all << group.uniqueId << group.name << static_cast<std::int64_t>(group.people.size());
    for (const std::size_t person : group.people) all << static_cast<std::int64_t>(person);
    all << static_cast<std::int64_t>(group.subgroups.size());
    for (const std::size_t other : group.subgroups) all << static_cast<std::int64_t>(other);
  }
  return lastingIdentifier(all);
}

}  // namespace annivo
