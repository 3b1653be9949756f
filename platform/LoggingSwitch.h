// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace annivo {

/// The logging switch: the program's own "doLog", read afresh at each call; on only when its
/// integer value is exactly 1.
[[nodiscard]] inline bool loggingIsOn(Platform& platform) {
  return platform.standardUserDefaults().objectForKey(keys::kDoLog).intValue() == 1;
}

/// Writes a line when the logging switch is on. `parts` are joined only then.
template <typename... Parts>
void logOptionally(Platform& platform, const Parts&... parts) {
  if (!loggingIsOn(platform)) return;
  std::string line;
  (line.append(parts), ...);
  platform.log().write(line);
}

}  // namespace annivo
