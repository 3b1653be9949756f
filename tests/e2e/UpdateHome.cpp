// SPDX-License-Identifier: MIT
#include "tests/e2e/UpdateHome.h"

#include <filesystem>
#include <stdexcept>

namespace annivo {

namespace fs = std::filesystem;

namespace {

/// The preloaded library that gives a process another clock.
std::string clockLibrary() {
  for (const auto& folder : fs::directory_iterator("/usr/lib")) {
    const fs::path library = folder.path() / "faketime/libfaketime.so.1";
    if (fs::exists(library)) return library.string();
  }
  throw std::runtime_error("the package faketime is missing");
}

}  // namespace

std::map<std::string, std::string> anotherClock(const std::string& time) {
  const bool runsOn = time.starts_with('+');
  return {{"LD_PRELOAD", clockLibrary()},
          {"FAKETIME", time},
          {"NO_FAKE_STAT", "1"},
          // A clock that stands still must not stop the waiting.
          {"FAKETIME_DONT_FAKE_MONOTONIC", runsOn ? "0" : "1"},
          {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
}

}  // namespace annivo
