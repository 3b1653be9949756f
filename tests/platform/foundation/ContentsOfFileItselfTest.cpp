// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/foundation/NSFileManager.h"
#include "tests/support/ForwardingFileManager.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

/// The real one, and what one gets that only has the other operations.
TEST(ContentsOfFileItself, ReadsRegularFilesAndNoLinks) {
  PosixFileManager posix;
  const ForwardingFileManager plain(posix);
  std::string pattern = fs::temp_directory_path() / "annivo-itself-XXXXXX";
  const std::string folder = ::mkdtemp(pattern.data());
  std::ofstream(folder + "/file") << "12345";
  fs::create_symlink(folder + "/file", folder + "/link");
  fs::create_symlink(folder + "/nowhere", folder + "/dangling");
  ASSERT_EQ(::mkfifo((folder + "/fifo").c_str(), 0600), 0);
  for (const NSFileManager* files :
       {static_cast<const NSFileManager*>(&posix), static_cast<const NSFileManager*>(&plain)}) {
    const auto kindOf = [&](const std::string& name, std::size_t limit) {
      const auto contents = files->contentsOfFileItself(folder + name, limit);
      EXPECT_FALSE(contents) << name;
      return contents ? Error::Kind::failed : contents.error().kind;
    };
    const auto contents = files->contentsOfFileItself(folder + "/file", 5);
    ASSERT_TRUE(contents);
    EXPECT_EQ(*contents, "12345");
    EXPECT_EQ(kindOf("/file", 4), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("/link", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("/dangling", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("/fifo", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("/", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("/absent", 5), Error::Kind::absent);
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace annivo
