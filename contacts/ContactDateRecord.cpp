// SPDX-License-Identifier: MIT
#include "contacts/ContactDateRecord.h"

#include <utility>

namespace annivo {

std::optional<std::string_view> ContactDateRecord::textForKey(std::string_view key) const {
  using Text = std::pair<std::string_view, std::string ContactDateRecord::*>;
  static constexpr Text kTexts[] = {{"first name", &ContactDateRecord::firstName},
                                    {"middle name", &ContactDateRecord::middleName},
                                    {"last name", &ContactDateRecord::lastName},
                                    {"nick name", &ContactDateRecord::nickName},
                                    {"organization", &ContactDateRecord::organization},
                                    {"isOrganization", &ContactDateRecord::isOrganization},
                                    {"date type", &ContactDateRecord::dateType},
                                    {"date UID", &ContactDateRecord::dateUID},
                                    {"person UID", &ContactDateRecord::personUID}};
  for (const auto& [name, member] : kTexts) {
    if (name == key) return this->*member;
  }
  return std::nullopt;
}

}  // namespace annivo
