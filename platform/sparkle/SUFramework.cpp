// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include "platform/sparkle/SUUpdater.h"

namespace annivo {

namespace {

constexpr const char* kPrincipalClass = "SUUpdater";

Error malformed(const NSBundle& framework, const std::string& reason) {
  return {.kind = Error::Kind::malformed,
          .domain = "NSCocoaErrorDomain",
          .code = 0,
          .description = "The framework " + framework.bundlePath() + " cannot be loaded.",
          .failureReason = reason};
}

std::string dynamicLoaderError() {
  const char* message = ::dlerror();
  return message ? message : "";
}

}  // namespace

Result<std::unique_ptr<SUFramework>> SUFramework::load(const NSBundle& framework) {
  const std::string executable = framework.executablePath();
  const auto attributes = framework.fileManager().attributesAtPath(executable, Links::follow);
  if (!attributes) return attributes.error();
  if (!framework.infoDictionary()["NSPrincipalClass"].isEqualToString(kPrincipalClass)) {
    return malformed(framework, std::string("Its principal class is not ") + kPrincipalClass + ".");
  }
  // Never unloaded: threads that look up a host's address may outlive a check.
  void* handle = ::dlopen(executable.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (!handle) return malformed(framework, dynamicLoaderError());
  void* symbol = ::dlsym(handle, kSUUpdaterForBundleSymbol);
  if (!symbol) {
    const std::string reason = dynamicLoaderError();
    ::dlclose(handle);
    return malformed(framework, reason);
  }
  return std::unique_ptr<SUFramework>(
      new SUFramework(handle, reinterpret_cast<SUUpdaterForBundle>(symbol)));
}

SUUpdater& SUFramework::updaterForBundle(const NSBundle& bundle, const SUHost& host) {
  updater_.reset();
  host_ = std::make_unique<SUHost>(host);
  bundle_ = std::make_unique<NSBundle>(bundle);
  updater_.reset(make_(host_.get(), bundle_.get()));
  return *updater_;
}

SUFramework::~SUFramework() {
  updater_.reset();
  ::dlclose(handle_);
}

}  // namespace annivo
