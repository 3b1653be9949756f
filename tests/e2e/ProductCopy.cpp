// SPDX-License-Identifier: MIT
#include "tests/e2e/ProductCopy.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace annivo {

namespace fs = std::filesystem;

namespace {

constexpr const char* kContents = "Annivo 2.app/Contents";

/// Writes down how it was started, once it is not held any more.
constexpr const char* kParent = R"(
import os, sys, time
def name(fd):
    try: return os.readlink("/proc/self/fd/" + fd)
    except OSError: return None  # the folder that was being read
files = {fd: name(fd) for fd in sorted(os.listdir("/proc/self/fd"))}
while os.path.exists(here + "/held"): time.sleep(0.02)
with open(here + "/part", "w") as out:
    out.write(f"{os.path.basename(sys.argv[0])} {sys.argv[1:]}\n")
    out.write("files" + "".join(f" {fd}={file}" for fd, file in files.items() if file) + "\n")
    out.write(f"session of its own {os.getsid(0) == os.getpid()}\n")
os.rename(here + "/part", here + "/started")
)";

}  // namespace

ProductCopy::ProductCopy() {
  fs::copy(ANNIVO_PRODUCT, folder_.path("Annivo 2.app"),
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  replace("Linux/Annivo 2", "#!/usr/bin/python3 -IS\nhere = '" + folder_.path() + "'" + kParent);
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

void ProductCopy::holdParent() const { folder_.writeFile("held", ""); }
void ProductCopy::releaseParent() const { folder_.remove("held"); }

std::string ProductCopy::waitForParent() const {
  for (int i = 0; i < 300 && !parentWasStarted(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds{100});
  }
  return parentWasStarted() ? folder_.readFile("started") : "";
}

bool ProductCopy::parentWasStarted() const { return folder_.exists("started"); }

}  // namespace annivo
