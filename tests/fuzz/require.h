// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace annivo::fuzz {

/// Aborts where something that must hold does not, which is a finding.
inline void require(bool holds, const char* what = "a check of this target") {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}

}  // namespace annivo::fuzz
