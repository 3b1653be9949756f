// SPDX-License-Identifier: MIT
#include "run/UpdateSchedule.h"
#include "run/myController.h"

namespace annivo {

namespace {

constexpr std::int64_t kDefaultInterval = 604800;  // seconds: 7 days
constexpr std::chrono::milliseconds kSlice{100};
constexpr std::chrono::days kBackdating{365};

/// In seconds; a value of a type that has no integer value counts as missing.
std::int64_t intervalIn(const PropertyList& stored) {
  const bool hasIntegerValue =
      stored.integer() || stored.real() || stored.string() || stored.boolean();
  return hasIntegerValue ? stored.integerValue() : kDefaultInterval;
}

}  // namespace

void myController::launchSparkle() {
  const Date now = platform_.clock().now();
  const Date* last = appPrefs->valueForKey(keys::kSULastCheckTime).date();
  if (!updateCheckIsDue(intervalIn(appPrefs->valueForKey(keys::kSUScheduledCheckInterval)),
                        timeInterval(last ? *last : now, now),
                        appPrefs->valueForKey(keys::kSUEnableAutomaticChecks).boolValue())) {
    return;
  }

  const std::string parentPath =
      standardizedPath(platform_.mainBundle().bundlePath() + "/../../../");
  const NSBundle parent(platform_.fileManager(), parentPath);
  const NSBundle framework(
      platform_.fileManager(),
      appendingPathComponent(parentPath, "Contents/Frameworks/Sparkle.framework"));
  auto loaded = SUFramework::load(framework);
  if (!loaded) {
    log("Sparkle framework not loaded.");
    return;
  }
  sparkle_ = std::move(*loaded);
  SUUpdater& updater = sparkle_->updaterForBundle(parent, platform_.updateHost());
  updater.setDelegate(this);
  updater.checkForUpdateInformation();
  sparkleLoading = true;
  while (sparkleLoading && platform_.runLoop().runModeForInterval(kSlice)) {
  }
}

void myController::setCheckDate() {
  platform_.appPreferences().setAppValue(keys::kSULastCheckTime,
                                         platform_.clock().now() - kBackdating, kParentDomain);
  (void)platform_.appPreferences().appSynchronize(kParentDomain);  // Logged where it fails.
}

void myController::updaterDidFindValidUpdate(const SUAppcastItem& /*item*/) {
  setCheckDate();
  log("Opening Annivo to receive update.");
  sparkleLoading = false;
  openParentAndOuit();
}

}  // namespace annivo
