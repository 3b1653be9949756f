// SPDX-License-Identifier: MIT
#include <chrono>
#include <optional>

#include "parent/command/Commands.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

constexpr std::chrono::seconds kPatience{60};

/// Waits for the outcome of a check.
class Outcome final : public SUUpdaterDelegate {
 public:
  void updaterDidFindValidUpdate(const SUAppcastItem& item) override {
    found_ = item;
    over_ = true;
  }
  void updaterDidNotFindUpdate() override { over_ = true; }

  std::optional<SUAppcastItem> waitOn(NSRunLoop& runLoop) {
    const auto limit = NSRunLoop::Time::clock::now() + kPatience;
    while (!over_ && NSRunLoop::Time::clock::now() < limit && runLoop.runModeBeforeDate(limit)) {
    }
    return found_;
  }

 private:
  std::optional<SUAppcastItem> found_;
  bool over_ = false;
};

}  // namespace

void launchedCommand(CommandSession& session) {
  Platform& platform = session.platform;
  markLaunch(platform);
  const std::string path = parentBundlePath(session);
  const NSBundle parent(platform.fileManager(), path);
  const NSBundle framework(platform.fileManager(), path + "/Contents/Frameworks/Sparkle.framework");
  auto sparkle = SUFramework::load(framework);
  if (!sparkle) throw Refusal{sparkle.error().description};
  Outcome outcome;
  SUUpdater& updater = (*sparkle)->updaterForBundle(parent, platform.updateHost());
  updater.setDelegate(&outcome);
  updater.checkForUpdateInformation();
  const auto item = outcome.waitOn(platform.runLoop());
  storeChoices(session, {{keys::kSULastCheckTime, platform.clock().now()}});
  if (!item) return;
  NSAlert alert;
  alert.messageText = translated("Annivo 2 {1} is out", printable(item->displayVersion));
  alert.informativeText = item->url.empty()
                              ? translated("A newer version than yours has been published.")
                              : translated("It can be had at {1}", printable(item->url));
  platform.alerts().runModal(alert);
}

}  // namespace annivo
