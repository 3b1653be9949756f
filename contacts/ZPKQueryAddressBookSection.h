// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "contacts/ContactDateRecord.h"
#include "platform/Platform.h"

namespace annivo {

/// A group in the short form, "name" and "uniqueId", each "NULL" when absent.
struct GroupRecord {
  std::string name{kNull};
  std::string uniqueId{kNull};
  friend bool operator==(const GroupRecord&, const GroupRecord&) = default;
};

/// One address book store: reads its dates, groups and labels. Opened when made, never changed.
class ZPKQueryAddressBookSection {
 public:
  /// `initWithPath:`. Opens the store and reads its groups. Throws
  /// NSInternalInconsistencyException when there is no model for this system; an error of the
  /// store itself is presented and leaves the section empty.
  ZPKQueryAddressBookSection(Platform& platform, std::string path);
  ~ZPKQueryAddressBookSection();

  /// What `arrayForEntity:` yields for the names that yield it; empty for any other name.
  struct Items {
    std::vector<ContactDateRecord> dates;  ///< "ABCDContact", "ABCDContactDate"
    std::vector<GroupRecord> groups;       ///< "ABCDGroup"
    std::vector<std::string> labels;       ///< "ABCDContactDate_label", distinct, raw
  };
  /// `arrayForEntity:`
  [[nodiscard]] Items arrayForEntity(const std::string& name);
  [[nodiscard]] const std::string& dbPath() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace annivo
