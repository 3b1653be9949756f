// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "codecs/plist/PropertyList.h"
#include "platform/appkit/NSWorkspace.h"
#include "tests/support/Doubles.h"
#include "tests/support/ForwardingFileManager.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

constexpr const char* kIdentifier = "org.annivo.Annivo2";

/// The disk with another root.
class RerootedFileManager final : public ForwardingFileManager {
 public:
  RerootedFileManager(NSFileManager& inner, std::string root)
      : ForwardingFileManager(inner), root_(std::move(root)) {}
  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override {
    return inner_.attributesAtPath(root_ + path, links);
  }
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    return inner_.contentsAtPath(root_ + path, limit);
  }
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override {
    return inner_.contentsOfDirectory(root_ + path);
  }

 private:
  std::string root_;
};

class NSWorkspaceTest : public testing::Test {
 protected:
  void addBundle(const std::string& path, const std::string& identifier = kIdentifier) const {
    root_.writeFile(path.substr(1) + "/Contents/Info.plist",
                    xmlPropertyList(PropertyList::Dictionary{{"CFBundleIdentifier", identifier},
                                                             {"CFBundleExecutable", "Run Me"}}));
  }
  [[nodiscard]] std::string found(const std::string& identifier = kIdentifier) {
    return workspace_.absolutePathForAppBundleWithIdentifier(identifier).value_or("");
  }

  TemporaryFolder root_;
  PosixFileManager disk_;
  RerootedFileManager files_{disk_, root_.path()};
  RecordingLauncher launcher_;
  NSWorkspace workspace_{files_, launcher_, "/running/Enclosing.app", "/home/ann"};
};

TEST_F(NSWorkspaceTest, FindsABundleInEachOfItsPlaces) {
  const std::string places[] = {"/running/Enclosing.app", "/home/ann/Applications/Annivo 2.app",
                                "/Applications/Annivo 2.app", "/opt/Annivo 2.app",
                                "/usr/lib/annivo/Annivo 2.app"};
  for (const std::string& place : places) {
    addBundle(place);
    EXPECT_EQ(found(), place);
    root_.remove(place.substr(1));
    EXPECT_EQ(found(), "");
  }
}

TEST_F(NSWorkspaceTest, PrefersThePlacesInTheirOrder) {
  addBundle("/usr/lib/annivo/A.app");
  addBundle("/opt/A.app");
  EXPECT_EQ(found(), "/opt/A.app");
  addBundle("/Applications/A.app");
  EXPECT_EQ(found(), "/Applications/A.app");
  addBundle("/home/ann/Applications/A.app");
  EXPECT_EQ(found(), "/home/ann/Applications/A.app");
  addBundle("/running/Enclosing.app");
  EXPECT_EQ(found(), "/running/Enclosing.app");
}

TEST_F(NSWorkspaceTest, GoesByIdentifierAndNotByName) {
  addBundle("/Applications/Annivo 2.app", "org.example.Other");
  addBundle("/Applications/Zebra.app");
  EXPECT_EQ(found(), "/Applications/Zebra.app");
  EXPECT_EQ(found("org.example.Other"), "/Applications/Annivo 2.app");
  EXPECT_EQ(found("org.example.Missing"), "");
  EXPECT_EQ(found(""), "");
}

TEST_F(NSWorkspaceTest, PassesOverWhatIsNoBundle) {
  root_.writeFile("Applications/A.app", "a file");
  root_.makeFolder("Applications/B.app/Contents");
  root_.writeFile("Applications/C.app/Contents/Info.plist", "damaged");
  addBundle("/Applications/D.folder");
  EXPECT_EQ(found(), "");
  addBundle("/Applications/E.app");
  EXPECT_EQ(found(), "/Applications/E.app");
}

TEST_F(NSWorkspaceTest, FindsABundleBehindALink) {
  addBundle("/elsewhere/Annivo 2.app");
  root_.makeFolder("Applications");
  std::filesystem::create_directory_symlink(root_.path("elsewhere/Annivo 2.app"),
                                            root_.path("Applications/Annivo 2.app"));
  EXPECT_EQ(found(), "/Applications/Annivo 2.app");
}

TEST_F(NSWorkspaceTest, LaunchesABundlesExecutableWithoutArguments) {
  addBundle("/Applications/A.app");
  EXPECT_TRUE(workspace_.launchApplication("/Applications/A.app"));
  ASSERT_EQ(launcher_.launches().size(), 1u);
  EXPECT_EQ(launcher_.launches()[0].first, "/Applications/A.app/Contents/Linux/Run Me");
  EXPECT_TRUE(launcher_.launches()[0].second.empty());
}

}  // namespace
}  // namespace annivo
