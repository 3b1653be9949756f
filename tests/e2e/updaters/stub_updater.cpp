// SPDX-License-Identifier: MIT
// An update framework's shared object whose check goes as the environment variable STUB_UPDATER
// says.
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/sparkle/SUUpdater.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;

class StubUpdater final : public SUUpdater {
 public:
  explicit StubUpdater(NSRunLoop& runLoop) : runLoop_(runLoop) {}
  ~StubUpdater() override { runLoop_.removeTimer(timer_); }
  StubUpdater(const StubUpdater&) = delete;
  StubUpdater& operator=(const StubUpdater&) = delete;

  void setDelegate(SUUpdaterDelegate* delegate) override { delegate_ = delegate; }
  void checkForUpdateInformation() override {
    const char* behaviour = std::getenv("STUB_UPDATER");
    const std::string wanted = behaviour ? behaviour : "";
    if (wanted == "finds at once") delegate_->updaterDidFindValidUpdate({"9", "9", ""});
    if (wanted == "finds, and then finds nothing") {
      delegate_->updaterDidFindValidUpdate({"9", "9", ""});
      delegate_->updaterDidNotFindUpdate();
    }
    if (wanted == "finds nothing at once") delegate_->updaterDidNotFindUpdate();
    if (wanted == "finds nothing once asked") waitForRelease();
    // Anything else: no source for the run loop and no answer, ever.
  }

 private:
  void waitForRelease() {
    timer_ = runLoop_.addTimer(NSRunLoop::Clock::now() + 20ms, [this] {
      if (::access(std::getenv("STUB_RELEASE"), F_OK) == 0) {
        delegate_->updaterDidNotFindUpdate();
      } else {
        waitForRelease();
      }
    });
  }

  NSRunLoop& runLoop_;
  SUUpdaterDelegate* delegate_ = nullptr;
  int timer_ = 0;
};

}  // namespace
}  // namespace annivo

extern "C" [[gnu::visibility("default")]] annivo::SUUpdater* SUUpdaterForBundle(
    annivo::SUHost* host, const annivo::NSBundle* /*bundle*/) {
  return new annivo::StubUpdater(host->runLoop);
}
