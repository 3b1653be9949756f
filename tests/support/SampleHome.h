// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/NSCalendarDate.h"
#include "platform/addressbook/AddressBookStoreWriter.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

inline constexpr const char* kSampleBirthdayCalendar = "6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11";
inline constexpr const char* kSampleAnniversaryCalendar = "A94F2E07-5B7C-4F0A-8E55-0C9A6D2B8F34";
inline constexpr const char* kSampleAccount = "3E6F0B1A-7D24-4B8B-9C0C-52D1A7E4F690";
inline constexpr const char* kSampleMainStore =
    "Library/Application Support/AddressBook/AddressBook-v22.abcddb";

/// What one store of a sample home holds.
struct SampleStore {
  std::vector<StoredPerson> people;
  std::vector<StoredGroup> groups;
};

struct SampleHomeOptions {
  StoreGeneration generation = StoreGeneration::current;
  /// 0: the hand-written people, in a main store and two sources. Else so many generated ones in
  /// the main store alone, with 3 dates for every 2 of them and a group for every 10, the groups in
  /// chains five deep.
  std::size_t people = 0;
  std::uint32_t seed = 1;
  bool xmlPreferences = false;
  /// When the home was last touched; folders get this modification time.
  Date now = SystemClock().now();
  NSTimeZone zone = {};  ///< of the alarms' time of day
};

/// The hand-written stores: main store, then the sources in folder order. Names in several scripts,
/// company cards, groups in groups, dates with and without a year, an own card.
[[nodiscard]] std::vector<SampleStore> sampleStores(StoreGeneration generation);
/// Generated people; the same for the same arguments everywhere.
[[nodiscard]] SampleStore generatedStore(std::size_t people, std::uint32_t seed);

/// Makes a home at `folder` (created when missing): an address book with its metadata folders, a
/// birthday calendar with one event of the person's own, an anniversary calendar in an account, and
/// the parent application's preferences. Fails where such files are there already.
Result<void> makeSampleHome(NSFileManager& files, const std::string& folder,
                            const SampleHomeOptions& options);

}  // namespace annivo
