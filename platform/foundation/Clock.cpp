// SPDX-License-Identifier: MIT
#include "platform/foundation/Clock.h"

namespace annivo {

Date SystemClock::now() const {
  return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

}  // namespace annivo
