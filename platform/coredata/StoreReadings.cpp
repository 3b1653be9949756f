// SPDX-License-Identifier: MIT
#include "platform/coredata/StoreReadings.h"

#include <thread>

namespace annivo {

bool StoreReadings::waitForLock(const std::string& path) {
  constexpr std::chrono::milliseconds kStep{20};  // far below what a person notices
  std::chrono::milliseconds& waited = waited_[path];
  if (waited >= lockWait_) return false;
  std::this_thread::sleep_for(kStep);
  waited += kStep;
  return true;
}

}  // namespace annivo
