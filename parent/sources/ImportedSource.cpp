// SPDX-License-Identifier: MIT
#include "parent/sources/ImportedSource.h"

#include <algorithm>

#include "parent/sources/StableUUID.h"

namespace annivo {

namespace {

std::string withSuffix(const std::string& uid, const std::string& suffix) {
  return uid.ends_with(suffix) ? uid : uid + suffix;
}

/// The fields joined so that no two lists of fields give the same text.
class Joiner {
 public:
  Joiner& operator<<(const std::optional<std::string>& field) {
    text_ += field ? std::to_string(field->size()) + ':' + *field : std::string("-");
    return *this;
  }
  Joiner& operator<<(std::int64_t number) { return *this << std::optional(std::to_string(number)); }
  Joiner& operator<<(const std::optional<StoredDay>& day) {
    if (!day) return *this << std::optional<std::string>();
    return *this << std::int64_t{day->year} << std::int64_t{day->month} << std::int64_t{day->day};
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string derivedUID(const VCardContact& contact, const std::string& text,
                       const std::unordered_map<std::string, std::size_t>& taken) {
  const StoredPerson& person = contact.person;
  Joiner names;
  names << std::optional(contact.shownName) << person.firstName << person.middleName
        << person.lastName << person.nickname << person.organization;
  std::string uid = stableUUID(names.text());
  return taken.contains(uid) ? stableUUID(names.text() + text) : uid;
}

void addOnce(std::vector<std::size_t>& members, std::size_t member) {
  if (std::find(members.begin(), members.end(), member) == members.end()) {
    members.push_back(member);
  }
}

}  // namespace

std::optional<std::string> ImportedSource::add(VCardContact contact, const std::string& text) {
  if (contact.isGroup) {
    if (contact.groupName.empty()) return "the group has no name";
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
    if (peopleByUID_.contains(contact.uid)) return "the same card came before";
  } else if (peopleByUID_.contains(bareUID(contact.uid))) {
    return "a card with the same UID came before";
  }
  addPerson(std::move(contact));
  return std::nullopt;
}

void ImportedSource::addPerson(VCardContact contact) {
  StoredPerson& person = contact.person;
  person.uniqueId = withSuffix(contact.uid, ":ABPerson");
  std::map<std::string, int> labels;
  for (StoredDate& date : person.dates) {
    const std::string label = date.label ? "=" + *date.label : "";
    date.uniqueId = stableUUID((Joiner() << std::optional(person.uniqueId) << std::optional(label)
                                         << std::int64_t{labels[label]++})
                                   .text());
  }
  for (const std::string& category : contact.categories) {
    groups_[groupNamed(category)].people.push_back(people_.size());
  }
  peopleByUID_.emplace(bareUID(contact.uid), people_.size());
  people_.push_back(std::move(person));
}

std::size_t ImportedSource::groupNamed(const std::string& name) {
  const auto [found, isNew] = groupsByName_.emplace(name, groups_.size());
  if (isNew) {
    groups_.push_back(
        {.uniqueId =
             stableUUID((Joiner() << std::optional(sourceName_) << std::optional(name)).text()) +
             ":ABGroup",
         .name = name,
         .people = {},
         .subgroups = {}});
  }
  return found->second;
}

void ImportedSource::finish() {
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
  Joiner all;
  for (const StoredPerson& person : people_) {
    all << std::optional(person.uniqueId) << person.firstName << person.middleName
        << person.lastName << person.nickname << person.organization
        << person.displayFlags.value_or(-1) << person.birthday << std::int64_t{person.isMe};
    all << static_cast<std::int64_t>(person.dates.size());
    for (const StoredDate& date : person.dates) {
      all << std::optional(date.uniqueId) << date.label << date.day;
    }
    all << static_cast<std::int64_t>(person.emails.size());
    for (const std::string& email : person.emails) all << std::optional(email);
  }
  for (const StoredGroup& group : groups_) {
    all << std::optional(group.uniqueId) << std::optional(group.name)
        << static_cast<std::int64_t>(group.people.size());
    for (const std::size_t person : group.people) all << static_cast<std::int64_t>(person);
    all << static_cast<std::int64_t>(group.subgroups.size());
    for (const std::size_t other : group.subgroups) all << static_cast<std::int64_t>(other);
  }
  return stableUUID(all.text());
}

}  // namespace annivo
