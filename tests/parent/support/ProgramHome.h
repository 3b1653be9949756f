// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/parent/support/CommandHome.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {

/// A temporary home on which the built program runs as a person starts it.
class ProgramHome {
 public:
  TemporaryFolder folder;
  /// Beside HOME, PATH, TZ=UTC and LANG=en_US.UTF-8.
  std::map<std::string, std::string> environment;

  /// Output and errors in pipes, no input.
  [[nodiscard]] CommandOutcome inPipe(const std::vector<std::string>& words,
                                      const std::string& program = "annivo") const;
  /// On a pseudo-terminal, which holds both output and errors.
  [[nodiscard]] CommandOutcome onTerminal(const std::vector<std::string>& words,
                                          const std::string& program = "annivo") const;
  /// In a pipe; must end well.
  std::string done(const std::vector<std::string>& words) const;

  /// Waits until no process that was started on this home is left, at most two minutes.
  void waitForAll() const;

  [[nodiscard]] static std::string programPath(const std::string& program);

 private:
  [[noreturn]] void become(const std::vector<std::string>& words, const std::string& program) const;
};

}  // namespace annivo
