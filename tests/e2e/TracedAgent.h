// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace annivo {

/// A run of the real agent under the eyes of ptrace.
struct TracedRun {
  /// The system calls that change files, in order, each as "name path"; or, where readings are
  /// disturbed, those that read, list or examine what lies in the calendars' folder.
  std::vector<std::string> changes;
  /// Whether it was killed.
  bool killed = false;
  int status = -1;  ///< exit status where it was not
  std::string errors;
};

/// What happens to one of those calls, counted from 1, before it does anything.
struct Disturbance {
  enum class Kind { none, kill, fail, failOpening };
  Kind kind = Kind::none;
  enum class Calls { changes, readings };
  Calls calls = Calls::changes;
  std::size_t number = 0;
  int code = 0;           ///< the errno of a call that fails
  std::string path = {};  ///< failOpening: each opening of exactly this, however many
};

/// Whether this machine's calls can be made to fail.
#ifdef __x86_64__
inline constexpr bool kCallsCanFail = true;
#else
inline constexpr bool kCallsCanFail = false;
#endif

/// Runs the agent over `home`.
[[nodiscard]] TracedRun traceAgent(const std::string& home, Disturbance disturbance = {});

}  // namespace annivo
