// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// How a program that was waited for ended.
struct EndedProcess {
  int status = -1;     ///< exit status; -1 when a signal ended it
  std::string output;  ///< its standard output, at most 64 KiB
  std::string errors;  ///< its standard error, at most 64 KiB
  int signal = 0;      ///< the signal that ended it, else 0
};

/// Runs a program and waits for its end. It gets no standard input, none of this process's open
/// files, and this process's environment with the locale set to C.UTF-8, so that what it prints
/// can be told apart. The error says why it could not be started.
Result<EndedProcess> runProcess(const std::string& executable,
                                const std::vector<std::string>& arguments);

/// Runs a program in the place of this process and waits for its end: it gets this process's
/// standard files, and with them its terminal, its working folder and its environment, but none of
/// its other open files. Nothing of its output is kept. The error says why it could not be started.
Result<EndedProcess> runProcessInForeground(const std::string& executable,
                                            const std::vector<std::string>& arguments);

/// Starts a program that outlives this process: a session of its own, the root folder as working
/// folder, /dev/null as its standard files, and no other open file. Returns when the program runs;
/// the error says why it could not be started.
Result<void> startDetachedProcess(const std::string& executable,
                                  const std::vector<std::string>& arguments);

/// The full path of a program in a colon-separated list of folders.
[[nodiscard]] std::optional<std::string> programInPath(const std::string& name,
                                                       const std::string& path);

}  // namespace annivo
