// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "parent/sources/EarlierIdentifiers.h"
#include "parent/sources/VCardContact.h"
#include "platform/addressbook/AddressBookStoreWriter.h"

namespace annivo {

/// What was not taken, where it stands and why.
struct LeftOut {
  std::string where;  ///< "contacts.vcf:12 Ann Smith"
  std::string reason;
};

/// Gathers contacts into the people and groups of one source.
///
/// 1. add() takes contacts one after the other.
/// 2. finish() makes the groups, whose cards may come before those of their members, and settles
///    the identifiers.
///
/// Unique identifiers: a card's own UID; without one, the one that the source had for that person
/// in earlier builds, or one made from the names (and from the whole card where these come a second
/// time). The same for dates, made from their person, and groups of categories, made from their
/// source; so the same cards always yield the same source.
class ImportedSource {
 public:
  explicit ImportedSource(std::string sourceName) : sourceName_(std::move(sourceName)) {}

  /// `text` is the card as it was read. Nothing, or why the card is not taken.
  std::optional<std::string> add(VCardContact contact, const std::string& text);
  void finish(EarlierIdentifiers earlier = {});
  /// Marks a person as the own card; false when no card has that UID.
  bool setMe(const std::string& uid);

  [[nodiscard]] const std::vector<StoredPerson>& people() const { return people_; }
  [[nodiscard]] const std::vector<StoredGroup>& groups() const { return groups_; }
  [[nodiscard]] std::size_t dateCount() const;
  /// Whether identifiers of earlier builds are in use.
  [[nodiscard]] bool keepsEarlierIdentifiers() const { return keepsEarlier_; }
  /// A text that is the same for the same content.
  [[nodiscard]] std::string digest() const;

 private:
  void addPerson(VCardContact contact);
  std::size_t groupNamed(const std::string& name);
  void keepPeople(EarlierIdentifiers& earlier);
  void identifyDates(const EarlierIdentifiers& earlier);
  void identifyGroups(const EarlierIdentifiers& earlier);
  void joinGroups();

  std::string sourceName_;
  std::vector<StoredPerson> people_;
  std::vector<StoredGroup> groups_;
  std::vector<std::size_t> withoutUID_;  ///< the people whose cards have none
  bool keepsEarlier_ = false;
  std::unordered_map<std::string, std::size_t> peopleByUID_;  ///< by bare UID
  std::unordered_map<std::string, std::size_t> groupsByUID_;
  std::map<std::string, std::size_t> groupsByName_;
  struct Membership {
    std::size_t group;
    std::vector<std::string> members;
  };
  std::vector<Membership> memberships_;
};

}  // namespace annivo
