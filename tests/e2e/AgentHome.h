// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "platform/addressbook/AddressBookStoreWriter.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// Calendars that a test may make, by what they are for.
inline constexpr const char* kBirthdays = "B1B1B1B1-0000-4000-8000-000000000001";
inline constexpr const char* kAnniversaries = "A1A1A1A1-0000-4000-8000-000000000002";

/// What a run of the real executable left behind.
struct AgentRun {
  int status = -1;  ///< exit status, or minus the signal that ended it
  std::string errors;
  /// Log lines without their time and process prefix.
  std::vector<std::string> log;
  [[nodiscard]] bool logged(const std::string& line) const;
  /// Whether some line holds the text.
  [[nodiscard]] bool mentions(const std::string& text) const;
};

/// A temporary home on which the real agent runs, with what a test needs to say and to look at.
class AgentHome {
 public:
  /// The home's files.
  TemporaryFolder folder;

  // Preferences.
  void setParent(const PropertyList::Dictionary& values) const;
  void setOwn(const PropertyList::Dictionary& values) const;
  [[nodiscard]] PropertyList::Dictionary parent() const;
  [[nodiscard]] PropertyList::Dictionary own() const;

  // Contacts and calendars.
  /// Writes a store, the main one or that of "Sources/<source>", and touches the Metadata folder.
  void setContacts(const std::vector<StoredPerson>& people,
                   const std::vector<StoredGroup>& groups = {},
                   StoreGeneration generation = StoreGeneration::current,
                   const std::string& source = "") const;
  /// The path of a store in the home.
  [[nodiscard]] static std::string storeOf(const std::string& source = "");
  /// Makes an empty calendar; returns its UID.
  std::string addCalendar(const std::string& uid, const std::string& title,
                          const PropertyList::Dictionary& more = {}) const;
  /// Titles of the events in a calendar, sorted.
  [[nodiscard]] std::vector<std::string> titles(const std::string& calendarUID) const;
  [[nodiscard]] std::string eventsFolder(const std::string& calendarUID) const;
  /// UIDs of all calendars, sorted.
  [[nodiscard]] std::vector<std::string> calendars() const;
  [[nodiscard]] std::string ledger() const;
  /// How many events the ledger file holds.
  [[nodiscard]] std::size_t ledgerRecords() const;

  /// Inode, size and time of change of everything in the home but the lock of the run.
  [[nodiscard]] std::map<std::string, std::string> fingerprint() const;

  /// Runs the agent; `environment` adds to HOME, TZ=UTC and LANG=en_US.UTF-8.
  [[nodiscard]] AgentRun run(const std::map<std::string, std::string>& environment = {},
                             const std::string& executable = agentExecutable()) const;
  [[nodiscard]] static std::string agentExecutable();
};

/// A person with a birthday.
[[nodiscard]] StoredPerson personBorn(const std::string& first, const std::string& last,
                                      StoredDay day);
/// A person with one labelled date.
[[nodiscard]] StoredPerson personWithDate(const std::string& first, const std::string& last,
                                          const std::string& label, StoredDay day);

}  // namespace annivo
