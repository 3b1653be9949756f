// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/NSFileManager.h"
#include "tests/support/ForwardingFileManager.h"
#include "tests/support/TemporaryFolder.h"

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
  using Reading = std::function<Result<std::string>(const std::string&, std::size_t)>;
  const auto byPath = [&](const NSFileManager& files) -> Reading {
    return [&](const std::string& name, std::size_t limit) {
      return files.contentsOfFileItself(folder + "/" + name, limit);
    };
  };
  const auto byFolder = [&](const NSFileManager& files) -> Reading {
    return [open = std::shared_ptr(files.openFolder(folder))](const std::string& name,
                                                              std::size_t limit) {
      return open->contentsOfFileItself(name, limit, "what was read before");
    };
  };
  for (const Reading& read : {byPath(posix), byPath(plain), byFolder(posix), byFolder(plain)}) {
    const auto kindOf = [&](const std::string& name, std::size_t limit) {
      const auto contents = read(name, limit);
      EXPECT_FALSE(contents) << name;
      return contents ? Error::Kind::failed : contents.error().kind;
    };
    const auto contents = read("file", 5);
    ASSERT_TRUE(contents);
    EXPECT_EQ(*contents, "12345");
    for (const std::size_t size : {0U, 2047U, 2048U, 2049U, 100000U}) {
      std::ofstream(folder + "/sized") << std::string(size, 'x');
      EXPECT_EQ(*read("sized", size), std::string(size, 'x'));
      if (size == 0) continue;
      EXPECT_EQ(kindOf("sized", size - 1), Error::Kind::unreadable);
    }
    EXPECT_EQ(kindOf("file", 4), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("link", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("dangling", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("fifo", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf(".", 5), Error::Kind::unreadable);
    EXPECT_EQ(kindOf("absent", 5), Error::Kind::absent);
    const auto missing = read("absent", 5);
    EXPECT_NE(missing.error().text().find(folder + "/absent"), std::string::npos);
  }
  fs::remove_all(folder);
}

TEST(OpenFolder, FindsFilesOfAFolderThatIsMadeLater) {
  const TemporaryFolder temporary;
  const std::string folder = temporary.path() + "/later";
  const PosixFileManager files;
  const auto open = files.openFolder(folder);
  EXPECT_EQ(open->contentsOfFileItself("file", 5, "").error().kind, Error::Kind::absent);
  fs::create_directory(folder);
  std::ofstream(folder + "/file") << "12345";
  EXPECT_EQ(*open->contentsOfFileItself("file", 5, ""), "12345");
}

}  // namespace
}  // namespace annivo
