// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/coredata/StoreReadings.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"

namespace annivo {

inline constexpr const char* kABBirthdayProperty = "Birthday";
inline constexpr const char* kABAnniversaryLabel = "_$!<Anniversary>!$_";

/// Several values of one property of a card, in their order.
struct ABMultiValue {
  struct Entry {
    std::string identifier;
    std::string value;
  };
  std::vector<Entry> entries;
  std::optional<std::string> primaryIdentifier;
  [[nodiscard]] std::optional<std::size_t> indexForIdentifier(const std::string& identifier) const;
  /// Nothing when the index is absent or out of range.
  [[nodiscard]] std::optional<std::string> valueAtIndex(std::optional<std::size_t> index) const;
};

struct ABPerson {
  std::string uniqueId;
  ABMultiValue emails;  ///< kABEmailProperty
};

/// The shared address book of one home, read only.
class ABAddressBook {
 public:
  /// `framework` holds the localised names ("<lang>.lproj/Localizable.strings").
  ABAddressBook(const NSFileManager& files, Log& log, std::string home, NSBundle framework,
                std::vector<std::string> languages,
                std::shared_ptr<StoreReadings> readings = std::make_shared<StoreReadings>());

  /// The person's own card: the record that any row's ZME names, else the one with
  /// ZCONTAINERWHERECONTACTISME, in the main store first, then in the sources. Its primary address
  /// is the row with ZISPRIMARY = 1, else that of the lowest ZORDERINGINDEX. A store or folder that
  /// cannot be read is logged and passed over here (who reads its dates reports it to the person).
  [[nodiscard]] std::optional<ABPerson> me() const;

  /// The localised name of a property or label code (ABLocalizedPropertyOrLabel); the code itself
  /// when there is none.
  [[nodiscard]] std::string localizedPropertyOrLabel(const std::string& code) const;
  /// `text` with each word's first letter in upper case and the rest in lower case, by the rules of
  /// the person's first language.
  [[nodiscard]] std::string capitalized(const std::string& text) const;

 private:
  const NSFileManager& files_;
  Log& log_;
  std::string home_;
  NSBundle framework_;
  std::vector<std::string> languages_;
  std::shared_ptr<StoreReadings> readings_;
};

}  // namespace annivo
