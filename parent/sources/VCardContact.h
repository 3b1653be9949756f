// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "base/Error.h"
#include "codecs/vcard/VCard.h"
#include "platform/addressbook/AddressBookStoreWriter.h"

namespace annivo {

/// What a card says of one person or one group, as far as contact dates need it.
struct VCardContact {
  std::string uid;        ///< as the card has it; "" for none
  std::string shownName;  ///< for messages
  bool isGroup = false;

  /// Its unique identifiers are empty.
  StoredPerson person;
  std::vector<std::string> categories;

  std::string groupName;
  std::vector<std::string> members;  ///< their UIDs

  /// One sentence for each date that was left out.
  std::vector<std::string> leftOut;
};

/// Reads a card. The error says why the whole card cannot be taken.
[[nodiscard]] Result<VCardContact> readContact(const VCard& card);

/// A UID for comparing: without the "urn:uuid:" that some programs put before it and without the
/// ":ABPerson" or ":ABGroup" that the address book puts after it.
[[nodiscard]] std::string bareUID(std::string_view uid);

}  // namespace annivo
