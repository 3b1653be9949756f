// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/Platform.h"
#include "platform/addressbook/AddressBookStoreWriter.h"

namespace annivo {

/// The identifiers of version 8 that earlier builds made for people, dates and groups, as a
/// source's store still holds them. Who has one keeps it: a new one would make all their events
/// anew, without the alarms that somebody set on them, and lose the chosen group.
class EarlierIdentifiers {
 public:
  EarlierIdentifiers() = default;
  /// Those of the store at `path`; none of one that is not there or damaged. The error is that of a
  /// store that cannot be read.
  [[nodiscard]] static Result<EarlierIdentifiers> of(Platform& platform, const std::string& path);

  enum class Likeness { namesAndBirthday, names };
  /// The identifier of the first one like `person`, who is given to nobody else.
  [[nodiscard]] std::optional<std::string> takePerson(const StoredPerson& person,
                                                      Likeness likeness);
  /// That of a person's date; `number` counts the dates of one label from 0.
  [[nodiscard]] std::optional<std::string> date(const std::string& person,
                                                const std::optional<std::string>& label,
                                                int number) const;
  [[nodiscard]] std::optional<std::string> group(const std::string& name) const;

 private:
  struct Person {
    std::string identifier;
    std::string names, birthday;
  };
  void addPerson(const NSManagedObject& contact, const NSTimeZone& zone);
  void addDate(const NSManagedObject& date);

  std::vector<Person> people_;
  std::map<std::tuple<std::string, std::optional<std::string>>, std::vector<std::string>> dates_;
  std::map<std::string, std::string> groups_;
};

}  // namespace annivo
