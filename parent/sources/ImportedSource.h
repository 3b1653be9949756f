// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

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
/// 2. finish() makes the groups, whose cards may come before those of their members.
///
/// Unique identifiers: a card's own UID; without one, one derived from its names (and from the
/// whole card where these come a second time). Dates and groups made from categories get
/// identifiers derived from their person or source, so that the same cards always yield the same
/// source.
class ImportedSource {
 public:
  explicit ImportedSource(std::string sourceName) : sourceName_(std::move(sourceName)) {}

  /// `text` is the card as it was read. Nothing, or why the card is not taken.
  std::optional<std::string> add(VCardContact contact, const std::string& text);
  void finish();
  /// Marks a person as the own card; false when no card has that UID.
  bool setMe(const std::string& uid);

  [[nodiscard]] const std::vector<StoredPerson>& people() const { return people_; }
  [[nodiscard]] const std::vector<StoredGroup>& groups() const { return groups_; }
  [[nodiscard]] std::size_t dateCount() const;
  /// A text that is the same for the same content.
  [[nodiscard]] std::string digest() const;

 private:
  void addPerson(VCardContact contact);
  std::size_t groupNamed(const std::string& name);

  std::string sourceName_;
  std::vector<StoredPerson> people_;
  std::vector<StoredGroup> groups_;
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
