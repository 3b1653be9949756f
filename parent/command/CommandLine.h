// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "parent/command/Console.h"

namespace annivo {

/// The words after the program's name.
class CommandLine {
 public:
  CommandLine();
  ~CommandLine();

  enum class Outcome {
    command,  ///< run() does it
    done,     ///< help or version was printed
    usage,    ///< the words make no command; what is wrong was printed
  };
  Outcome parse(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);
  [[nodiscard]] bool json() const;
  void run(CommandSession& session) const;

  /// The words that can stand in the place of the last of `words`, for the shells.
  [[nodiscard]] std::vector<std::string> completions(CommandSession& session,
                                                     const std::vector<std::string>& words) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// The script that teaches a shell ("bash", "zsh" or "fish") to complete `annivo`.
[[nodiscard]] const char* completionScript(const std::string& shell);

}  // namespace annivo
