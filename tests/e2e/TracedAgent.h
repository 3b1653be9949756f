// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace annivo {

/// A run of the real agent under the eyes of ptrace.
struct TracedRun {
  /// The system calls that change files, in order, each as "name path" (or descriptor).
  std::vector<std::string> changes;
  /// Whether it was killed.
  bool killed = false;
  int status = -1;  ///< exit status where it was not
};

/// Runs the agent over `home` and, where `killAt` is not 0, kills it (SIGKILL) as it enters the
/// `killAt`-th system call that changes a file, before that call does anything.
[[nodiscard]] TracedRun traceAgent(const std::string& home, std::size_t killAt = 0);

}  // namespace annivo
