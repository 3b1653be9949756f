// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Date.h"
#include "base/Error.h"
#include "base/StoredDay.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// The three shapes that the contacts store has had (entity numbers, tables, columns, where the own
/// card is noted).
enum class StoreGeneration { olderA, olderB, current };

struct StoredDate {
  std::string uniqueId = {};              ///< "" for a fresh one
  std::optional<std::string> label = {};  ///< "_$!<Anniversary>!$_", free text, or none
  std::optional<StoredDay> day = {};
};

struct StoredPerson {
  std::string uniqueId = {};  ///< "…:ABPerson"; "" for a fresh one
  std::optional<std::string> firstName = {}, middleName = {}, lastName = {}, nickname = {},
                             organization = {};
  std::optional<std::int64_t> displayFlags = 0;
  std::optional<StoredDay> birthday = {};
  std::vector<StoredDate> dates = {};
  std::vector<std::string> emails = {};  ///< the first is primary
  bool isMe = false;
  bool isSubscribed = false;  ///< written as ABCDSubscribedContact
};

struct StoredGroup {
  std::string uniqueId = {};  ///< "…:ABGroup"; "" for a fresh one
  std::string name = {};
  std::vector<std::size_t> people = {};     ///< indices into the people written with it
  std::vector<std::size_t> subgroups = {};  ///< indices into the groups written with it
  /// A smart group has no members of its own: its two lists are not written.
  enum class Kind { plain, subscribed, smart } kind = Kind::plain;
};

/// Writes a whole contacts store file ("AddressBook-v22.abcddb") in one of its generations, with
/// the bookkeeping tables and values that other readers of such stores expect.
class AddressBookStoreWriter {
 public:
  /// Replaces the file at `path` durably, in a folder that exists; after a failure it is as it was.
  /// Refused when a date is no day of the calendar or a group names a member that is not there.
  /// Moves through `people` in order, so that Z_PK ascends with it.
  static Result<void> write(NSFileManager& files, const std::string& path,
                            StoreGeneration generation, const std::vector<StoredPerson>& people,
                            const std::vector<StoredGroup>& groups, Date now);
};

}  // namespace annivo
