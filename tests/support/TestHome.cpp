// SPDX-License-Identifier: MIT
#include "tests/support/TestHome.h"

#include <filesystem>

#include "tests/support/ForwardingFileManager.h"

namespace annivo {

namespace fs = std::filesystem;

namespace {

constexpr const char* kAgentContents = "Annivo 2.app/Contents/Helpers/AnnivoAgent.app/Contents";

/// Links every entry of a folder of the source tree's resources into `folder` under `product`; what
/// the build makes of an entry "<name>.in" it links as the built product has it.
void linkResources(const std::string& name, const fs::path& product, const fs::path& folder) {
  fs::create_directories(product / folder);
  const fs::path source = fs::path(ANNIVO_SOURCE_DIR) / "resources" / name;
  for (const auto& entry : fs::directory_iterator(source)) {
    const bool isMade = entry.path().extension() == ".in";
    const fs::path file = isMade ? entry.path().stem() : entry.path().filename();
    fs::create_symlink(isMade ? ANNIVO_BUILD_DIR / folder / file : entry.path(),
                       product / folder / file);
  }
}

}  // namespace

TestHome::TestHome(Options options) : clock(options.now), options_(std::move(options)) {
  const fs::path product = product_.path();
  linkResources("parent", product, "Annivo 2.app/Contents");
  linkResources("agent", product, kAgentContents);
  linkResources("system", product, "Annivo 2.app/Contents/SharedSupport/System");
  product_.writeFile(std::string(kAgentContents) + "/Linux/AnnivoAgent", "");
  if (!options_.languages.empty()) {
    PropertyList::Array languages(options_.languages.begin(), options_.languages.end());
    preferences(kGlobalDomain, {{"AppleLanguages", std::move(languages)}});
  }
}

TestHome::~TestHome() = default;

Platform& TestHome::platform() {
  if (platform_) return *platform_;
  PlatformParts parts;
  parts.home = home_.path();
  parts.executable = product_.path(kAgentContents) + "/Linux/AnnivoAgent";
  parts.ownDomain = options_.ownDomain;
  parts.storeLockWait = options_.storeLockWait;
  parts.environment = [variables = options_.environment,
                       zone = options_.timeZone](const std::string& name) -> std::string {
    if (name == "TZ") return zone;
    const auto found = variables.find(name);
    return found == variables.end() ? "" : found->second;
  };
  parts.clock = std::make_unique<ManualClock>(clock);
  parts.log = std::make_unique<RecordingLog>(log);
  parts.alerts = std::make_unique<ScriptedAlerts>(alerts);
  parts.launcher = std::make_unique<RecordingLauncher>(launcher);
  if (files_) {
    parts.files = std::make_unique<ForwardingFileManager>(*files_);
  } else {
    parts.files = std::make_unique<PosixFileManager>();
  }
  parts.runLoop = runLoop_;
  platform_ = std::make_unique<Platform>(std::move(parts));
  return *platform_;
}

void TestHome::preferences(const std::string& domain,
                           const PropertyList::Dictionary& values) const {
  home_.writeFile(preferencesFile(domain), binaryPropertyList(values));
}

PropertyList TestHome::storedPreferences(const std::string& domain) const {
  if (!home_.exists(preferencesFile(domain))) return {};
  auto list = parsePropertyList(home_.readFile(preferencesFile(domain)), domain);
  return list ? *std::move(list) : PropertyList();
}

}  // namespace annivo
