// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "platform/addressbook/AddressBookStoreWriter.h"
#include "tests/support/EditDatabase.h"
#include "tests/support/TestHome.h"

namespace annivo {

inline const std::string kAddressBookFolder = "Library/Application Support/AddressBook";
inline const std::string kMainStore = kAddressBookFolder + "/AddressBook-v22.abcddb";

/// The store of a source, relative to the home.
inline std::string sourceStore(const std::string& name) {
  return kAddressBookFolder + "/Sources/" + name + "/AddressBook-v22.abcddb";
}

/// A person of the given identifier (":ABPerson" is added) with a birthday.
inline StoredPerson born(const std::string& identifier, StoredDay day) {
  StoredPerson person;
  person.uniqueId = identifier + ":ABPerson";
  person.firstName = identifier;
  person.birthday = day;
  return person;
}

/// A person of the given identifier with one labelled date, whose identifier is that of the person
/// and "-date".
inline StoredPerson dated(const std::string& identifier, std::optional<std::string> label) {
  StoredPerson person;
  person.uniqueId = identifier + ":ABPerson";
  person.firstName = identifier;
  person.dates = {{identifier + "-date", std::move(label), StoredDay{1990, 6, 15}}};
  return person;
}

/// A home with address book stores.
struct AddressBookHome : TestHome {
  using TestHome::TestHome;

  void writeStore(const std::vector<StoredPerson>& people,
                  const std::vector<StoredGroup>& groups = {},
                  const std::string& relative = kMainStore,
                  StoreGeneration generation = StoreGeneration::current) {
    folder().makeFolder(relative.substr(0, relative.rfind('/')));
    PosixFileManager disk;
    const auto written = AddressBookStoreWriter::write(disk, path(relative), generation, people,
                                                       groups, clock.now());
    ASSERT_TRUE(written.ok()) << written.error().text();
  }
  void editStore(const std::string& sql, const std::string& relative = kMainStore) {
    EditDatabase(path(relative)).run(sql);
  }

  /// Makes the machine's system 10.`minor`.
  void useSystem(const std::string& productVersion) {
    const std::string system = productPath() + "/Contents/SharedSupport/System/";
    const std::string resources = std::string(ANNIVO_SOURCE_DIR) + "/resources/system/Library/";
    std::filesystem::remove_all(system + "Library");
    std::filesystem::create_directories(system + "Library/CoreServices");
    std::filesystem::create_directory_symlink(resources + "Frameworks",
                                              system + "Library/Frameworks");
    std::ofstream(system + "Library/CoreServices/SystemVersion.plist")
        << xmlPropertyList(PropertyList::Dictionary{{"ProductVersion", productVersion}});
  }
};

template <typename Records>
std::vector<std::string> fieldOf(const Records& records, std::string ContactDateRecord::*field) {
  std::vector<std::string> texts;
  for (const ContactDateRecord& record : records) texts.push_back(record.*field);
  return texts;
}

inline std::vector<std::string> groupsOf(const ContactDateRecord& record) {
  return {record.groups.begin(), record.groups.end()};
}

}  // namespace annivo
