// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/foundation/Gestalt.h"

namespace annivo {
namespace {

/// A system folder in a temporary place.
class GestaltTest : public testing::Test {
 protected:
  GestaltTest() {
    std::string name = (std::filesystem::temp_directory_path() / "gestalt.XXXXXX").string();
    folder_ = ::mkdtemp(name.data());
    std::filesystem::create_directories(folder_ + "/Library/CoreServices");
  }
  ~GestaltTest() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::string path() const {
    return folder_ + "/Library/CoreServices/SystemVersion.plist";
  }
  void write(const std::string& bytes) const { std::ofstream(path()) << bytes; }
  void writeVersion(const std::string& version) const {
    write(
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>ProductName</key><string>Mac OS "
        "X</string><key>ProductVersion</key>" +
        version + "</dict></plist>");
  }
  [[nodiscard]] std::optional<std::int32_t> query(
      std::uint32_t selector = kGestaltSystemVersion) const {
    const PosixFileManager files;
    return Gestalt(files, folder_).query(selector);
  }

 private:
  std::string folder_;
};

TEST_F(GestaltTest, GivesTheSystemVersionInHexadecimalDigits) {
  const struct {
    const char* version;
    std::int32_t value;
  } rows[] = {{"10.4.11", 0x104B}, {"10.5", 0x1050},
              {"10.5.0", 0x1050},  {"10.5.8", 0x1058},
              {"10.6.8", 0x1068},  {"10.7.5", 0x1075},
              {"10.8", 0x1080},    {"10.0", 0x1000},
              {"10.14.6", 0x10E6}, {"10.15.7", 0x10F7},
              {"10.16.1", 0x10F1}, {"10.4.15", 0x104F},
              {"10.4.16", 0x104F}, {"10.4.999999999999999999999", 0x104F},
              {"10.04.01", 0x1041}};
  for (const auto& row : rows) {
    writeVersion("<string>" + std::string(row.version) + "</string>");
    EXPECT_EQ(query(), row.value) << row.version;
  }
}

TEST_F(GestaltTest, FailsForAVersionOfAnotherForm) {
  for (const char* version : {"", "10", "10.", "10.x", "10.7.", "10.7.5.1", "10.7.5b", " 10.7",
                              "11.2", "9.2.2", "100.7", "10.-7", "10..7", "10.7 "}) {
    writeVersion("<string>" + std::string(version) + "</string>");
    EXPECT_EQ(query(), std::nullopt) << '"' << version << '"';
  }
  writeVersion("<real>10.7</real>");
  EXPECT_EQ(query(), std::nullopt);
}

TEST_F(GestaltTest, FailsWithoutAReadableFile) {
  EXPECT_EQ(query(), std::nullopt) << "missing";
  std::filesystem::create_directory(path());
  EXPECT_EQ(query(), std::nullopt) << "a folder in its place";
}

TEST_F(GestaltTest, FailsForADamagedFile) {
  for (const char* bytes : {"", "10.7.5", "bplist00", "<plist><dict>"}) {
    write(bytes);
    EXPECT_EQ(query(), std::nullopt) << bytes;
  }
  write("<plist version=\"1.0\"><array><string>10.7.5</string></array></plist>");
  EXPECT_EQ(query(), std::nullopt) << "no dictionary";
}

TEST_F(GestaltTest, FailsForAnotherSelector) {
  writeVersion("<string>10.7.5</string>");
  EXPECT_EQ(query(0x73797331), std::nullopt);
  EXPECT_EQ(query(0), std::nullopt);
}

}  // namespace
}  // namespace annivo
