// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "parent/command/Console.h"
#include "platform/Platform.h"

namespace annivo {

/// How the program was started.
struct ProgramStart {
  std::string name;        ///< the last component of argv[0]: "annivo" or "Annivo 2"
  std::string executable;  ///< full path of the program's file, links followed
  std::vector<std::string> words;
  Environment environment;
  bool outTerminal = false;
};

/// The whole program; returns the exit status: 0 done, 1 refused or failed, 2 usage.
int runProgram(const ProgramStart& start, Console& console);

}  // namespace annivo
