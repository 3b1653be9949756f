// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "codecs/plist/PropertyList.h"
#include "parent/command/Console.h"
#include "tests/support/TestHome.h"

namespace annivo {

/// What a command said and how it ended.
struct CommandOutcome {
  int status = -1;
  std::string out;
  std::string err;
};

/// A home on which commands run inside the test.
class CommandHome {
 public:
  explicit CommandHome(TestHome::Options options = {}) : home(std::move(options)) {}

  TestHome home;

  /// What commands work with in this home, speaking on `console`, which outlives it.
  [[nodiscard]] CommandSession session(Console& console);
  /// Runs a command as one process would: what it stored is read afresh by the next.
  CommandOutcome run(const std::vector<std::string>& words);
  /// Runs a command that must end well; what it printed.
  std::string done(const std::vector<std::string>& words);
  /// Runs a command that must be refused; its one line without the program's name.
  std::string refused(const std::vector<std::string>& words);

  /// Writes a vCard file into the home and imports it.
  void import(const std::string& cards, const std::vector<std::string>& more = {});
  /// A run of the agent, inside the test.
  void runAgent();
  /// One key of the parent's preferences as it is on disk; nil when it is not there.
  [[nodiscard]] PropertyList stored(const std::string& key) const;
  /// The UID of a new calendar.
  std::string addCalendar(const std::string& title);
};

/// Ann with a birthday, an anniversary and the group Family, Bob with a leap day without a year,
/// Carl with a date of another label, and Nobody without a date.
[[nodiscard]] std::string sampleCards();
/// A card of version 3.0 around some lines, each ended by "\n".
[[nodiscard]] std::string vCard(const std::string& lines);

}  // namespace annivo
