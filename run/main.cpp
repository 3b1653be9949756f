// SPDX-License-Identifier: MIT
#include <cstdio>

#include "platform/Platform.h"
#include "run/myController.h"

int main() {
  using annivo::Platform;
  const auto platform = Platform::system("AnnivoAgent");
  if (!platform) {
    std::fprintf(stderr, "AnnivoAgent: %s\n", platform.error().text().c_str());
    return 1;
  }
  Platform& machine = **platform;
  if (const auto alone = machine.becomeTheOnlyRun(); !alone) {
    machine.log().write(alone.error().text());
    return 1;
  }
  return machine.application().main(machine.mainBundle(),
                                    annivo::myController::delegateClass(machine));
}
