// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

namespace annivo {

/// Names of files and folders that several rooms look for.
namespace names {

/// A folder of the address book; its time tells that contacts changed.
inline constexpr const char* kMetadata = "Metadata";
/// A folder of the address book with pictures; nothing else is in it.
inline constexpr const char* kImages = "Images";
/// The folder of the address book that holds one folder a source.
inline constexpr const char* kSources = "Sources";
inline constexpr const char* kContactsStore = "AddressBook-v22.abcddb";
/// The folder in a calendar that holds its event files; its time tells that they changed.
inline constexpr const char* kEvents = "Events";
inline constexpr const char* kCalendarSuffix = ".calendar";
inline constexpr const char* kEventSuffix = ".ics";
/// What a bundle or a calendar says of itself.
inline constexpr const char* kInfo = "Info.plist";
/// The ledger's folder, and the names of the files in it up to their suffix.
inline constexpr const char* kLedger = "Annivo 2";

}  // namespace names

/// Where things lie in a home. Full paths without a slash at the end; none need be there.
class HomeFolders {
 public:
  explicit HomeFolders(std::string home) : home_(std::move(home)) {}

  [[nodiscard]] const std::string& home() const { return home_; }
  [[nodiscard]] std::string calendars() const { return in("Calendars"); }
  [[nodiscard]] std::string preferences() const { return in("Preferences"); }
  [[nodiscard]] std::string caches() const { return in("Caches"); }
  [[nodiscard]] std::string applicationSupport() const { return in("Application Support"); }
  [[nodiscard]] std::string addressBook() const { return applicationSupport() + "/AddressBook"; }
  [[nodiscard]] std::string addressBookSources() const {
    return addressBook() + '/' + names::kSources;
  }

 private:
  [[nodiscard]] std::string in(const char* folder) const { return home_ + "/Library/" + folder; }

  std::string home_;
};

}  // namespace annivo
