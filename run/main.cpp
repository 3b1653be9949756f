// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string_view>

#include "platform/Platform.h"
#include "platform/foundation/ProcessStart.h"
#include "run/myController.h"

namespace {

constexpr const char* kHelp =
    "Usage: AnnivoAgent\n"
    "Copies the dates kept in contacts into calendars: one start is one run.\n"
    "\n"
    "Options:\n"
    "  --help     print this help and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "Every choice is made with annivo(1); any other argument is ignored.\n";

/// What to print in place of a run; null for a run.
const char* answerTo(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    if (std::string_view(arguments[i]) == "--help") return kHelp;
    if (std::string_view(arguments[i]) == "--version") return "AnnivoAgent " ANNIVO_VERSION "\n";
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  using annivo::Platform;
  if (!annivo::openStandardDescriptors()) return 1;
  annivo::survivePipesWithoutReader();
  annivo::surviveFileSizeLimits();
  if (const char* answer = answerTo(argc, argv)) {
    return std::fputs(answer, stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
  }
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
