// SPDX-License-Identifier: MIT
#include <algorithm>

#include "base/Unicode.h"
#include "contacts/ZPKAddressBookDates.h"
#include "parent/settings/Contacts.h"
#include "parent/settings/Settings.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

PropertyList stored(Session& session, const char* key) {
  const auto& domain =
      session.platform.standardUserDefaults().persistentDomainForName(kParentDomain);
  if (!domain) return {};
  const auto found = domain->find(key);
  return found == domain->end() ? PropertyList() : found->second;
}

std::string shownGroup(Session& session) {
  const std::string uid = stored(session, keys::kSelectedGroupUID).stringOr("");
  if (uid.empty()) return "all";
  for (const ListedGroup& group : Contacts(session.platform).groups()) {
    if (group.uid == uid) return group.name;
  }
  return session.platform.application().presentedFailure()
             ? translated("{1} (not all contacts could be read)", uid)
             : translated("{1} (there is no such group any more)", uid);
}

PropertyList groupFact(Session& session) {
  const std::string uid = stored(session, keys::kSelectedGroupUID).stringOr("");
  if (uid.empty()) return {};
  for (const ListedGroup& group : Contacts(session.platform).groups()) {
    if (group.uid == uid) {
      return PropertyList::Dictionary{{"name", group.name}, {"uid", uid}, {"exists", true}};
    }
  }
  return PropertyList::Dictionary{{"uid", uid}, {"exists", false}};
}

/// Nothing is said to be missing where it could not be looked for.
void refuseIfUnread(Session& session) {
  if (session.platform.application().presentedFailure()) {
    throw Refusal{translated("not all contacts could be read; nothing is changed")};
  }
}

ListedGroup findGroup(Session& session, const std::string& wanted) {
  std::vector<ListedGroup> named;
  for (const ListedGroup& group : Contacts(session.platform).groups()) {
    if (group.uid == wanted) return group;
    if (caseFolded(group.name) == caseFolded(wanted)) named.push_back(group);
  }
  if (named.empty()) {
    refuseIfUnread(session);
    throw Refusal{
        translated("there is no group \"{1}\"; \"annivo groups\" lists those there are", wanted)};
  }
  if (named.size() > 1) {
    std::vector<std::string> uids;
    uids.reserve(named.size());
    for (const ListedGroup& group : named) uids.push_back(group.uid);
    throw Refusal{translated("several groups are called \"{1}\"; give one of their UIDs: {2}",
                             wanted, listed(uids))};
  }
  return named.front();
}

void setGroup(Session& session, const std::vector<std::string>& words) {
  if (words.size() != 1) {
    throw Refusal{translated("give one group (quote a name of several words), or all")};
  }
  if (words.front() == "all") {
    return storeChoices(session, {{keys::kSelectedGroupUID, PropertyList()},
                                  {keys::kSelectedGroup, PropertyList()}});
  }
  const ListedGroup group = findGroup(session, words.front());
  storeChoices(session, {{keys::kSelectedGroupUID, group.uid}, {keys::kSelectedGroup, group.name}});
}

std::string shownLabels(Session& session) {
  std::vector<std::string> shown;
  ZPKAddressBookDates dates(session.platform);
  for (const std::string& label : dates.filterLabels()) {
    shown.push_back(session.platform.localizedString(label, ""));
  }
  return shown.empty() ? "none" : listed(shown);
}

PropertyList labelsFact(Session& session) {
  ZPKAddressBookDates dates(session.platform);
  return PropertyList::Array(dates.filterLabels().begin(), dates.filterLabels().end());
}

void setLabels(Session& session, const std::vector<std::string>& words) {
  if (words.size() == 1 && words.front() == "none") {
    return storeChoices(session, {{keys::kTheLabels, PropertyList()}});
  }
  const auto labels = Contacts(session.platform).labels();
  PropertyList::Array chosen;
  for (const std::string& word : words) {
    const auto found = std::find_if(labels.begin(), labels.end(), [&](const ListedLabel& label) {
      return label.dateType == word || caseFolded(label.shown) == caseFolded(word);
    });
    if (found == labels.end()) {
      refuseIfUnread(session);
      throw Refusal{translated(
          "no date has the label \"{1}\"; \"annivo labels\" lists those there are", word)};
    }
    chosen.emplace_back(found->dateType);
  }
  storeChoices(session, {{keys::kTheLabels, chosen}});
}

}  // namespace

std::vector<Setting> contactSettings() {
  return {{.name = "group",
           .help = translated("whose dates are taken: a group with its subgroups, or all"),
           .show = shownGroup,
           .fact = groupFact,
           .set = setGroup,
           .reset = [](Session& session) { setGroup(session, {"all"}); },
           .values =
               [](Session& session) {
                 std::vector<std::string> names{"all"};
                 for (const auto& group : Contacts(session.platform).groups()) {
                   names.push_back(group.name);
                 }
                 return names;
               }},
          {.name = "excluded-labels",
           .help = translated("dates that are left out, by their labels, or none"),
           .show = shownLabels,
           .fact = labelsFact,
           .set = setLabels,
           .reset = [](Session& session) { setLabels(session, {"none"}); },
           .values =
               [](Session& session) {
                 std::vector<std::string> names{"none"};
                 for (const auto& label : Contacts(session.platform).labels()) {
                   names.push_back(label.shown);
                 }
                 return names;
               }}};
}

}  // namespace annivo
