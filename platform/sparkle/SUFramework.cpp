// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <link.h>

#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

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

/// Stands between the module's updater and the delegate: what the module answers reaches the
/// delegate in a turn of the run loop of its own, with no frame of the module on the stack. The
/// delegate may terminate the application, which throws, and a module is a program of its own that
/// may have been built with another copy of the language's support library.
class HostedUpdater final : public SUUpdater, private SUUpdaterDelegate {
 public:
  HostedUpdater(NSRunLoop& runLoop, std::unique_ptr<SUUpdater> updater)
      : runLoop_(runLoop), updater_(std::move(updater)) {
    updater_->setDelegate(this);
  }
  ~HostedUpdater() override { runLoop_.removeTimer(timer_); }
  HostedUpdater(const HostedUpdater&) = delete;
  HostedUpdater& operator=(const HostedUpdater&) = delete;

  void setDelegate(SUUpdaterDelegate* delegate) override { delegate_ = delegate; }
  void checkForUpdateInformation() override { updater_->checkForUpdateInformation(); }

 private:
  void updaterDidFindValidUpdate(const SUAppcastItem& item) override {
    tell([item](SUUpdaterDelegate& delegate) { delegate.updaterDidFindValidUpdate(item); });
  }
  void updaterDidNotFindUpdate() override {
    tell([](SUUpdaterDelegate& delegate) { delegate.updaterDidNotFindUpdate(); });
  }
  /// A module may answer more than once: the first answer counts until the delegate has it.
  void tell(std::function<void(SUUpdaterDelegate&)> call) {
    if (timer_ != 0) return;
    timer_ = runLoop_.addTimer(NSRunLoop::Clock::now(), [this, call = std::move(call)] {
      timer_ = 0;
      if (delegate_) call(*delegate_);
    });
  }

  NSRunLoop& runLoop_;
  std::unique_ptr<SUUpdater> updater_;
  SUUpdaterDelegate* delegate_ = nullptr;
  int timer_ = 0;
};

/// The structure at `offset`; nothing where the bytes end before it does.
template <typename Structure>
std::optional<Structure> structureAt(std::string_view bytes, std::size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(Structure)) return std::nullopt;
  Structure structure{};
  std::memcpy(&structure, bytes.data() + offset, sizeof structure);
  return structure;
}

/// Whether all is there that loading maps into memory. The dynamic loader does not look, and a
/// process that touches a page beyond the end of its file ends.
bool isWholeSharedObject(std::string_view bytes) {
  const auto header = structureAt<ElfW(Ehdr)>(bytes, 0);
  if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0) return false;
  for (std::size_t i = 0; i < header->e_phnum; ++i) {
    const auto segment = structureAt<ElfW(Phdr)>(bytes, header->e_phoff + i * sizeof(ElfW(Phdr)));
    if (!segment) return false;
    if (segment->p_offset > bytes.size() || segment->p_filesz > bytes.size() - segment->p_offset) {
      return false;
    }
  }
  return true;
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
  if (attributes->type != FileType::regular) {
    return malformed(framework, "Its executable is no file.");  // to open a pipe would wait
  }
  if (!framework.infoDictionary()["NSPrincipalClass"].isEqualToString(kPrincipalClass)) {
    return malformed(framework, std::string("Its principal class is not ") + kPrincipalClass + ".");
  }
  const auto bytes = framework.fileManager().contentsAtPath(executable);
  if (!bytes) return bytes.error();
  if (!isWholeSharedObject(*bytes)) {
    return malformed(framework, "Its executable is no whole shared object.");
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
  updater_ = std::make_unique<HostedUpdater>(
      host.runLoop, std::unique_ptr<SUUpdater>(make_(host_.get(), bundle_.get())));
  return *updater_;
}

SUFramework::~SUFramework() {
  updater_.reset();
  ::dlclose(handle_);
}

}  // namespace annivo
