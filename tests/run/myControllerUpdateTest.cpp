// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "run/myController.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// Has something to wait for in as many rounds as it is given.
class RecordingRunLoop final : public NSRunLoop {
 public:
  explicit RecordingRunLoop(std::size_t rounds) : rounds_(rounds) {}
  bool runModeForInterval(std::chrono::milliseconds interval) override {
    slices.push_back(interval);
    return slices.size() <= rounds_;
  }
  std::vector<std::chrono::milliseconds> slices;

 private:
  std::size_t rounds_;
};

/// The update check of a run of its own over a home with the logging switch on.
class UpdateCheckOfTheController : public testing::Test {
 protected:
  void SetUp() override { home.ownPreferences({{"doLog", 1}}); }

  void check() {
    myController controller(home.platform());
    controller.awakeFromNib({});
    controller.launchSparkle();
  }
  /// Whether a check was due: without a framework that is all that shows.
  bool isDue(const PropertyList& enabled) {
    home.parentPreferences({{"SUEnableAutomaticChecks", enabled}, {"SUScheduledCheckInterval", 0}});
    home.log.clear();
    home.endRun();
    check();
    return home.log.count("Sparkle framework not loaded.") == 1;
  }
  void installAnUpdaterThatNeverAnswers() const {
    const fs::path framework = home.productPath() + "/Contents/Frameworks/Sparkle.framework";
    fs::create_directories(framework / "Resources");
    fs::copy_file(ANNIVO_STUB_UPDATER, framework / "Sparkle");
    PosixFileManager files;
    ASSERT_TRUE(files.writeAtomically(
        framework / "Resources/Info.plist",
        xmlPropertyList(PropertyList::Dictionary{{"CFBundleExecutable", "Sparkle"},
                                                 {"NSPrincipalClass", "SUUpdater"}})));
  }

  TestHome home;
};

TEST_F(UpdateCheckOfTheController, GoesByTheValueOfTheSwitchNotByItsType) {
  for (const PropertyList& on : {PropertyList(true), PropertyList(1), PropertyList(-1),
                                 PropertyList(0.5), PropertyList("YES"), PropertyList("1")}) {
    EXPECT_TRUE(isDue(on)) << xmlPropertyList(on);
  }
  for (const PropertyList& off : {PropertyList(false), PropertyList(0), PropertyList("NO"),
                                  PropertyList(""), PropertyList(PropertyList::Array{true})}) {
    EXPECT_FALSE(isDue(off)) << xmlPropertyList(off);
  }
}

TEST_F(UpdateCheckOfTheController, WaitsInSlicesOfATenthOfASecondUntilNothingIsLeftToWaitFor) {
  installAnUpdaterThatNeverAnswers();
  home.parentPreferences({{"SUEnableAutomaticChecks", true}, {"SUScheduledCheckInterval", 0}});
  RecordingRunLoop runLoop(3);
  home.useRunLoop(&runLoop);
  check();
  EXPECT_EQ(runLoop.slices, (std::vector<std::chrono::milliseconds>(4, 100ms)));
}

}  // namespace
}  // namespace annivo
