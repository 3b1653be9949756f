// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "run/ZPKLimitSystem.h"
#include "tests/support/ForwardingFileManager.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

/// The disk with a system version of the test's own; "" is none.
class VersionedFiles final : public ForwardingFileManager {
 public:
  explicit VersionedFiles(NSFileManager& inner) : ForwardingFileManager(inner) {}
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    if (!path.ends_with("/SystemVersion.plist")) return inner_.contentsAtPath(path, limit);
    if (version.empty()) return errorFromErrno(ENOENT, "read", path);
    return xmlPropertyList(PropertyList::Dictionary{{"ProductVersion", version}});
  }
  std::string version;
};

class ZPKLimitSystemTest : public testing::Test {
 protected:
  ZPKLimitSystemTest() { home_.useFileManager(&files_); }

  std::int32_t family(const std::string& version) {
    files_.version = version;
    return ZPKLimitSystem::versionVal(home_.platform().gestalt());
  }
  /// Runs the gate; whether it terminated the application.
  bool terminates(const std::string& version) {
    files_.version = version;
    try {
      ZPKLimitSystem::alert(home_.platform());
    } catch (const Termination&) {
      return true;
    }
    return false;
  }

  PosixFileManager disk_;
  VersionedFiles files_{disk_};
  TestHome home_;
};

TEST_F(ZPKLimitSystemTest, NamesTheReleaseFamily) {
  const struct {
    const char* version;
    std::int32_t family;
  } rows[] = {{"", 1030},        {"11.0", 1030},    {"10.0", 1040},    {"10.4.11", 1040},
              {"10.4.15", 1040}, {"10.4.20", 1040}, {"10.5", 1050},    {"10.5.0", 1050},
              {"10.5.15", 1050}, {"10.5.16", 1050}, {"10.6.0", 1060},  {"10.6.8", 1060},
              {"10.6.15", 1060}, {"10.7.0", 1070},  {"10.7.15", 1070}, {"10.8.0", 1080},
              {"10.15.7", 1080}, {"10.99.99", 1080}};
  for (const auto& row : rows) EXPECT_EQ(family(row.version), row.family) << row.version;
}

TEST_F(ZPKLimitSystemTest, AsksTheSystemAgainAtEachCall) {
  EXPECT_EQ(family("10.5.8"), 1050);
  EXPECT_EQ(family("10.6.8"), 1060);
}

TEST_F(ZPKLimitSystemTest, WarnsBefore10_5WithTheseTexts) {
  EXPECT_FALSE(terminates("10.4.11"));
  ASSERT_EQ(home_.alerts.shown().size(), 1u);
  const NSAlert& alert = home_.alerts.shown()[0];
  EXPECT_EQ(alert.messageText, "Annivo 2");
  EXPECT_EQ(alert.defaultButton, "Quit");
  EXPECT_EQ(alert.alternateButton, "Continue");
  EXPECT_EQ(alert.otherButton, "");
  EXPECT_EQ(alert.informativeText,
            "This application is developed for use under OSX 10.5, Leopard and later.\n\n"
            "It will not work under earlier versions of OSX and it is likely not to work under "
            "later versions.");
}

TEST_F(ZPKLimitSystemTest, DoesNotWarnFrom10_5OnNorWithoutAVersion) {
  for (const char* version : {"10.5", "10.5.0", "10.7.5", "10.15.7", "", "damaged"}) {
    EXPECT_FALSE(terminates(version)) << version;
  }
  EXPECT_TRUE(home_.alerts.shown().empty());
  EXPECT_TRUE(home_.log.lines().empty());
}

TEST_F(ZPKLimitSystemTest, LogsQuitAndTerminatesWhateverTheLoggingSwitchSays) {
  home_.alerts.answerNext(AlertAnswer::defaultButton);
  EXPECT_TRUE(terminates("10.4.11"));
  EXPECT_EQ(home_.log.lines(), std::vector<std::string>{"quit"});
}

TEST_F(ZPKLimitSystemTest, GoesOnQuietlyAfterContinue) {
  home_.alerts.answerNext(AlertAnswer::alternate);
  EXPECT_FALSE(terminates("10.4.11"));
  EXPECT_TRUE(home_.log.lines().empty());
}

}  // namespace
}  // namespace annivo
