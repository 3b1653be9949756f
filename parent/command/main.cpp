// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "base/Translation.h"
#include "parent/command/Program.h"
#include "parent/settings/Session.h"
#include "platform/foundation/ProcessStart.h"

int main(int argc, char** argv) {
  if (!annivo::openStandardDescriptors()) return 1;
  annivo::surviveFileSizeLimits();
  const auto environment = [](const char* name) {
    const char* value = std::getenv(name);
    return std::string(value ? value : "");
  };
  annivo::ProgramStart start;
  start.name = argc > 0 ? std::filesystem::path(argv[0]).filename().string() : "";
  std::error_code error;
  start.executable = std::filesystem::read_symlink("/proc/self/exe", error).string();
  start.words.assign(argv + (argc > 0 ? 1 : 0), argv + argc);
  start.environment = environment;
  start.outTerminal = isatty(STDOUT_FILENO) == 1;
  annivo::chooseLanguage(annivo::catalogueLanguages(environment),
                         annivo::textsFolder(start.executable));
  annivo::Console console{.out = std::cout,
                          .err = std::cerr,
                          .colours = start.outTerminal && environment("NO_COLOR").empty() &&
                                     environment("TERM") != "dumb",
                          .errTerminal = isatty(STDERR_FILENO) == 1};
  return annivo::runProgram(start, console);
}
