// SPDX-License-Identifier: MIT
#include "tests/e2e/ProductCopy.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace annivo {

namespace fs = std::filesystem;

namespace {

constexpr const char* kContents = "Annivo 2.app/Contents";

}  // namespace

ProductCopy::ProductCopy() {
  fs::copy(ANNIVO_PRODUCT, folder_.path("Annivo 2.app"),
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  replace("Linux/Annivo 2",
          "#!/bin/sh\n"
          "{ echo \"arguments $#\"; echo \"input $(readlink /proc/$$/fd/0)\"; } > '" +
              folder_.path("part") + "'\nmv '" + folder_.path("part") + "' '" +
              folder_.path("started") + "'\n");
  fs::permissions(path("Linux/Annivo 2"), fs::perms::owner_all);
}

std::string ProductCopy::agent() const {
  return path("Helpers/AnnivoAgent.app/Contents/Linux/AnnivoAgent");
}

std::string ProductCopy::path(const std::string& inContents) const {
  return folder_.path(std::string(kContents) + "/" + inContents);
}

void ProductCopy::replace(const std::string& inContents, const std::string& bytes) const {
  remove(inContents);
  folder_.writeFile(std::string(kContents) + "/" + inContents, bytes);
}

void ProductCopy::remove(const std::string& inContents) const { fs::remove_all(path(inContents)); }

void ProductCopy::setSystemVersion(const std::string& version) const {
  replace("SharedSupport/System/Library/CoreServices/SystemVersion.plist",
          xmlPropertyList(PropertyList::Dictionary{{"ProductVersion", version}}));
}

std::string ProductCopy::waitForParent() const {
  for (int i = 0; i < 300 && !parentWasStarted(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds{100});
  }
  return parentWasStarted() ? folder_.readFile("started") : "";
}

bool ProductCopy::parentWasStarted() const { return folder_.exists("started"); }

}  // namespace annivo
