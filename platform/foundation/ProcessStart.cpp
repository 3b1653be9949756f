// SPDX-License-Identifier: MIT
#include "platform/foundation/ProcessStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace annivo {

bool openStandardDescriptors() {
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(number, F_GETFD) >= 0) continue;
    // The lowest free number, which is this one.
    if (::open("/dev/null", number == STDIN_FILENO ? O_RDONLY : O_WRONLY) != number) return false;
  }
  return true;
}

void survivePipesWithoutReader() { (void)std::signal(SIGPIPE, SIG_IGN); }
void surviveFileSizeLimits() { (void)std::signal(SIGXFSZ, SIG_IGN); }

}  // namespace annivo
