// SPDX-License-Identifier: MIT
// Makes a sample home: sample-home FOLDER [--people N] [--generation olderA|olderB|current]
// [--seed N] [--xml]
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>

#include "tests/support/SampleHome.h"

namespace {

using annivo::StoreGeneration;

template <typename Number>
bool readNumber(std::string_view text, Number& number) {
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  return code == std::errc() && end == text.data() + text.size();
}

bool readGeneration(std::string_view text, StoreGeneration& generation) {
  static const std::map<std::string_view, StoreGeneration> kNames{
      {"olderA", StoreGeneration::olderA},
      {"olderB", StoreGeneration::olderB},
      {"current", StoreGeneration::current}};
  const auto found = kNames.find(text);
  if (found == kNames.end()) return false;
  generation = found->second;
  return true;
}

bool readArguments(int argc, char** argv, std::string& folder, annivo::SampleHomeOptions& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    const bool hasValue = i + 1 < argc;
    bool good = true;
    if (name == "--xml") {
      options.xmlPreferences = true;
    } else if (name == "--people" && hasValue) {
      good = readNumber(argv[++i], options.people);
    } else if (name == "--seed" && hasValue) {
      good = readNumber(argv[++i], options.seed);
    } else if (name == "--generation" && hasValue) {
      good = readGeneration(argv[++i], options.generation);
    } else if (folder.empty() && !name.starts_with("--")) {
      folder = std::filesystem::absolute(name).lexically_normal();
    } else {
      good = false;
    }
    if (!good) return false;
  }
  return !folder.empty();
}

}  // namespace

int main(int argc, char** argv) {
  const char* zone = std::getenv("TZ");
  annivo::SampleHomeOptions options;
  options.zone = annivo::NSTimeZone::system(zone == nullptr ? "" : zone);
  std::string folder;
  if (!readArguments(argc, argv, folder, options)) {
    std::fputs(
        "usage: sample-home FOLDER [--people N] [--generation olderA|olderB|current] [--seed N] "
        "[--xml]\n",
        stderr);
    return 2;
  }
  annivo::PosixFileManager files;
  if (const auto made = annivo::makeSampleHome(files, folder, options); !made) {
    std::fprintf(stderr, "sample-home: %s\n", made.error().text().c_str());
    return 1;
  }
  std::printf("Made a sample home in %s\n", folder.c_str());
  return 0;
}
