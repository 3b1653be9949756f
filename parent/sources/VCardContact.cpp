// SPDX-License-Identifier: MIT
#include "parent/sources/VCardContact.h"

#include <algorithm>
#include <array>
#include <set>

#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "codecs/vcard/VCardDate.h"
#include "codecs/vcard/VCardText.h"
#include "platform/addressbook/ABAddressBook.h"

namespace annivo {

namespace {

constexpr std::int64_t kShowAsCompany = 1;

bool isAnniversary(const std::string& name) {
  constexpr std::array<std::string_view, 5> kNames{
      "ANNIVERSARY", "X-ANNIVERSARY", "X-EVOLUTION-ANNIVERSARY", "X-KADDRESSBOOK-X-ANNIVERSARY",
      "X-MS-ANNIVERSARY"};
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

std::optional<std::string> unlessEmpty(std::string_view text) {
  text = trimmed(text);
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

bool sameDay(const StoredDay& left, const StoredDay& right) {
  return left.year == right.year && left.month == right.month && left.day == right.day;
}

/// Reads the properties of one card in their order.
class Reader {
 public:
  explicit Reader(const VCard& card) : card_(card) {}

  Result<VCardContact> read() {
    for (const VCardProperty& property : card_.properties()) {
      if (auto taken = take(property); !taken) {
        return reason(property.name + ": " + taken.error().description);
      }
    }
    finishNames();
    contact_.isGroup = kind_ == "GROUP";
    if (contact_.isGroup) contact_.groupName = contact_.shownName;
    const StoredPerson& person = contact_.person;
    if (contact_.shownName.empty() && !contact_.isGroup && !person.birthday &&
        person.dates.empty()) {
      return reason(translated("the card names nobody"));
    }
    return std::move(contact_);
  }

 private:
  Result<void> take(const VCardProperty& property) {
    const std::string& name = property.name;
    if (name == "N") return takeName(property);
    if (name == "FN") return takeText(property, fullName_);
    if (name == "NICKNAME") return takeFirstPart(property, ",", contact_.person.nickname);
    if (name == "ORG") return takeFirstPart(property, ";", contact_.person.organization);
    if (name == "UID") return takeText(property, uid_);
    if (name == "X-ABSHOWAS") return takeText(property, showAs_);
    if (name == "KIND" || name == "X-ADDRESSBOOKSERVER-KIND") return takeKind(property);
    if (name == "MEMBER" || name == "X-ADDRESSBOOKSERVER-MEMBER") return takeMember(property);
    if (name == "CATEGORIES") return takeCategories(property);
    if (name == "EMAIL") return takeEmail(property);
    if (name == "BDAY") return takeBirthday(property);
    if (isAnniversary(name)) return takeDate(property, kABAnniversaryLabel);
    if (name == "X-ABDATE") {
      auto label = labelOf(property);
      if (!label) return label.error();
      return takeDate(property, *label);
    }
    return {};
  }

  /// The first value that is not empty counts.
  Result<void> takeText(const VCardProperty& property, std::optional<std::string>& target) {
    auto text = card_.text(property);
    if (!text) return text.error();
    if (!target) target = unlessEmpty(*text);
    return {};
  }

  Result<void> takeFirstPart(const VCardProperty& property, std::string_view separator,
                             std::optional<std::string>& target) {
    const auto parts = card_.parts(property, separator);
    if (!parts) return parts.error();
    if (!target) target = unlessEmpty(parts->front());
    return {};
  }

  Result<void> takeName(const VCardProperty& property) {
    const auto parts = card_.parts(property, ";");
    if (!parts) return parts.error();
    StoredPerson& person = contact_.person;
    if (person.lastName || person.firstName || person.middleName) return {};
    person.lastName = unlessEmpty(parts->front());
    if (parts->size() > 1) person.firstName = unlessEmpty((*parts)[1]);
    if (parts->size() > 2) person.middleName = unlessEmpty((*parts)[2]);
    return {};
  }

  Result<void> takeKind(const VCardProperty& property) {
    auto text = card_.text(property);
    if (!text) return text.error();
    kind_ = upperCased(trimmed(*text));
    return {};
  }

  Result<void> takeMember(const VCardProperty& property) {
    auto text = card_.text(property);
    if (!text) return text.error();
    contact_.members.emplace_back(trimmed(*text));
    return {};
  }

  Result<void> takeCategories(const VCardProperty& property) {
    const auto parts = card_.parts(property, card_.version() == "2.1" ? ",;" : ",");
    if (!parts) return parts.error();
    for (const std::string& part : *parts) {
      const std::string_view category = trimmed(part);
      auto& all = contact_.categories;
      if (!category.empty() && std::find(all.begin(), all.end(), category) == all.end()) {
        all.emplace_back(category);
      }
    }
    return {};
  }

  Result<void> takeEmail(const VCardProperty& property) {
    const auto text = card_.text(property);
    if (!text) return text.error();
    const auto address = unlessEmpty(*text);
    if (!address) return {};
    auto& emails = contact_.person.emails;
    const bool preferred =
        property.parameterHolds("TYPE", "PREF") || property.parameter("PREF") == "1";
    if (preferred && !hasPreferred_) {
      emails.insert(emails.begin(), *address);
      hasPreferred_ = true;
    } else {
      emails.push_back(*address);
    }
    return {};
  }

  Result<void> takeBirthday(const VCardProperty& property) {
    const auto day = dayOf(property);
    if (!day || !*day) return day ? Result<void>() : day.error();
    auto& birthday = contact_.person.birthday;
    if (birthday && !sameDay(*birthday, **day)) {
      contact_.leftOut.push_back(translated("BDAY: the card has a birthday before this one"));
    }
    if (!birthday) birthday = **day;
    return {};
  }

  Result<void> takeDate(const VCardProperty& property, std::optional<std::string> label) {
    const auto day = dayOf(property);
    if (!day || !*day) return day ? Result<void>() : day.error();
    auto& dates = contact_.person.dates;
    // Programs write one anniversary under several names, so that others find it.
    const bool known = std::any_of(dates.begin(), dates.end(), [&](const StoredDate& date) {
      return date.label == label && sameDay(*date.day, **day);
    });
    if (!known) dates.push_back({"", std::move(label), **day});
    return {};
  }

  /// Nothing for an empty value and for one that names no day, which is noted.
  Result<std::optional<StoredDay>> dayOf(const VCardProperty& property) {
    const auto text = card_.text(property);
    if (!text) return text.error();
    if (trimmed(*text).empty()) return std::optional<StoredDay>();
    const auto day = vCardDay(property, *text);
    if (day) return std::optional(*day);
    contact_.leftOut.push_back(property.name + ": " + day.error().description);
    return std::optional<StoredDay>();
  }

  /// The X-ABLabel of the property's group.
  Result<std::optional<std::string>> labelOf(const VCardProperty& date) const {
    if (date.group.empty()) return std::optional<std::string>();
    for (const VCardProperty& property : card_.properties()) {
      if (property.name != "X-ABLABEL" || property.group != date.group) continue;
      const auto text = card_.text(property);
      if (!text) return text.error();
      return unlessEmpty(*text);
    }
    return std::optional<std::string>();
  }

  void finishNames() {
    StoredPerson& person = contact_.person;
    const bool named = person.firstName || person.lastName || person.middleName;
    const bool fullNameIsOwn = fullName_ && fullName_ != person.organization;
    if (!named && fullNameIsOwn && upperCased(showAs_.value_or("")) != "COMPANY") {
      splitFullName(*fullName_);
    }
    const bool isCompany = upperCased(showAs_.value_or("")) == "COMPANY" || kind_ == "ORG" ||
                           (person.organization && !named && !fullNameIsOwn);
    person.displayFlags = isCompany ? kShowAsCompany : 0;
    contact_.uid = uid_.value_or("");
    contact_.shownName = fullName_.value_or("");
    if (contact_.shownName.empty()) contact_.shownName = joinedName();
  }

  /// "Ann Marie Smith" is Smith, Ann Marie; "Smith, Ann" says so itself.
  void splitFullName(const std::string& name) {
    StoredPerson& person = contact_.person;
    if (const auto comma = name.find(','); comma != name.npos) {
      person.lastName = unlessEmpty(std::string_view(name).substr(0, comma));
      person.firstName = unlessEmpty(std::string_view(name).substr(comma + 1));
      return;
    }
    const auto space = name.rfind(' ');
    person.firstName = unlessEmpty(std::string_view(name).substr(0, space));
    if (space != name.npos) person.lastName = unlessEmpty(std::string_view(name).substr(space));
  }

  [[nodiscard]] std::string joinedName() const {
    const StoredPerson& person = contact_.person;
    std::string joined;
    for (const auto& part : {person.firstName, person.middleName, person.lastName}) {
      if (part) joined += (joined.empty() ? "" : " ") + *part;
    }
    if (joined.empty()) joined = person.organization.value_or(person.nickname.value_or(""));
    return joined;
  }

  const VCard& card_;
  VCardContact contact_;
  std::optional<std::string> uid_, fullName_, showAs_;
  std::string kind_;
  bool hasPreferred_ = false;
};

}  // namespace

Result<VCardContact> readContact(const VCard& card) { return Reader(card).read(); }

std::string bareUID(std::string_view uid) {
  constexpr std::string_view kPrefix = "URN:UUID:";
  if (upperCased(uid.substr(0, kPrefix.size())) == kPrefix) uid.remove_prefix(kPrefix.size());
  for (const std::string_view suffix : {":ABPerson", ":ABGroup"}) {
    if (uid.ends_with(suffix)) uid.remove_suffix(suffix.size());
  }
  return std::string(uid);
}

}  // namespace annivo
