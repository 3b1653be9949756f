// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>

#include "frameworks/Sparkle/Appcast.h"
#include "frameworks/Sparkle/FeedFetcher.h"
#include "frameworks/Sparkle/UpdateChoice.h"
#include "platform/foundation/PreferenceKeys.h"
#include "platform/sparkle/SUUpdater.h"

namespace annivo {

namespace {

/// `address` without the name and password that it may hold, which are nothing for a log.
std::string withoutCredentials(const std::string& address) {
  const std::size_t host = address.find("://");
  if (host == std::string::npos) return address;
  const std::size_t end = std::min(address.find_first_of("/?#", host + 3), address.size());
  const std::size_t at = address.substr(0, end).rfind('@');
  return at == std::string::npos ? address : address.substr(0, host + 3) + address.substr(at + 1);
}

bool hasIntegerValue(const PropertyList& value) {
  return value.integer() || value.real() || value.string() || value.boolean();
}

/// A check that failed is tried again after a day, not after the whole interval.
constexpr std::int64_t kRetryInterval = std::int64_t{24} * 60 * 60;  // seconds
constexpr std::int64_t kDefaultInterval = 7 * kRetryInterval;

/// Checks one bundle. All it writes is the time of a check that finds nothing, so that the next one
/// waits for the interval, or of one that failed, dated back so that the next one waits for a day
/// at most; the time of one that finds something is its delegate's.
class BundleUpdater final : public SUUpdater {
 public:
  BundleUpdater(const SUHost& host, const NSBundle& bundle)
      : host_(host), bundle_(bundle), fetcher_(host.runLoop) {}

  void setDelegate(SUUpdaterDelegate* delegate) override { delegate_ = delegate; }

  void checkForUpdateInformation() override {
    if (isChecking_) return;
    isChecking_ = true;
    feed_ = text(keys::kSUFeedURL);
    if (feed_.empty()) feed_ = bundle_.infoDictionary()[keys::kSUFeedURL].stringOr("");
    fetcher_.fetch(feed_, [this](const Result<std::string>& feed) { feedArrived(feed); });
  }

 private:
  /// A text that the person's preferences of the bundle hold; "" without one.
  [[nodiscard]] std::string text(const std::string& key) const {
    const auto& domain = host_.domains.domain(bundle_.bundleIdentifier());
    if (!domain) return "";
    const auto found = domain->find(key);
    return found == domain->end() ? "" : found->second.stringOr("");
  }

  void feedArrived(const Result<std::string>& feed) {
    const auto items = feed ? parseAppcast(*feed) : Result<std::vector<AppcastItem>>(feed.error());
    const auto item = items ? choose(*items) : explain(items.error());
    isChecking_ = false;
    if (!item) recordCheck(items ? std::chrono::seconds{0} : secondsToSkip());
    if (!delegate_) return;
    if (item) {
      delegate_->updaterDidFindValidUpdate(
          {.version = item->version, .displayVersion = item->displayVersion, .url = item->url});
    } else {
      delegate_->updaterDidNotFindUpdate();
    }
  }

  /// How much of the interval a check that failed leaves out, so that a day of it remains.
  [[nodiscard]] std::chrono::seconds secondsToSkip() const {
    std::int64_t interval = kDefaultInterval;
    if (const auto& domain = host_.domains.domain(bundle_.bundleIdentifier())) {
      const auto found = domain->find(keys::kSUScheduledCheckInterval);
      if (found != domain->end() && hasIntegerValue(found->second)) {
        interval = found->second.intValue();
      }
    }
    return std::chrono::seconds{std::max<std::int64_t>(interval - kRetryInterval, 0)};
  }

  void recordCheck(std::chrono::seconds skipped) const {
    const std::string domain = bundle_.bundleIdentifier();
    if (domain.empty()) return;
    host_.domains.set(domain, keys::kSULastCheckTime, host_.clock.now() - skipped);
    (void)host_.domains.synchronize(domain);  // Logged where it fails.
  }

  [[nodiscard]] std::optional<AppcastItem> choose(const std::vector<AppcastItem>& items) const {
    const std::string version = bundle_.infoDictionary()["CFBundleVersion"].stringOr("");
    if (version.empty()) {
      host_.log.write("No update check: " + bundle_.bundlePath() + " has no CFBundleVersion.");
      return std::nullopt;
    }
    return chooseUpdate(items, {.version = version,
                                .systemVersion = host_.systemVersion,
                                .skippedVersion = text(keys::kSUSkippedVersion)});
  }

  std::optional<AppcastItem> explain(const Error& error) const {
    host_.log.write("No update check of \"" + withoutCredentials(feed_) +
                    "\": " + error.description +
                    (error.failureReason.empty() ? "" : " " + error.failureReason));
    return std::nullopt;
  }

  const SUHost& host_;
  const NSBundle& bundle_;
  SUUpdaterDelegate* delegate_ = nullptr;
  FeedFetcher fetcher_;
  std::string feed_;
  bool isChecking_ = false;
};

}  // namespace

}  // namespace annivo

/// The one symbol of the module. The host and the bundle must outlive the updater, which the
/// caller owns.
extern "C" [[gnu::visibility("default")]] annivo::SUUpdater* SUUpdaterForBundle(
    annivo::SUHost* host, const annivo::NSBundle* bundle) {
  return new annivo::BundleUpdater(*host, *bundle);
}
