// SPDX-License-Identifier: MIT
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace annivo {

namespace fs = std::filesystem;

namespace {

void makeParents(const fs::path& path) { fs::create_directories(path.parent_path()); }

std::string content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << "no file " << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Describe>
std::map<std::string, std::string> walk(const fs::path& root, Describe describe) {
  std::map<std::string, std::string> entries;
  if (!fs::is_directory(root)) return entries;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    entries[entry.path().lexically_relative(root)] = describe(entry);
  }
  return entries;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::string pattern = fs::temp_directory_path() / "annivo-test-XXXXXX";
  if (!::mkdtemp(pattern.data())) std::abort();
  path_ = fs::canonical(pattern);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::path(const std::string& relative) const {
  return relative.empty() ? path_ : path_ + "/" + relative;
}

void TemporaryFolder::writeFile(const std::string& relative, const std::string& bytes) const {
  makeParents(path(relative));
  std::ofstream file(path(relative), std::ios::binary | std::ios::trunc);
  file << bytes;
  file.close();
  EXPECT_TRUE(file) << "cannot write " << path(relative);
}

std::string TemporaryFolder::readFile(const std::string& relative) const {
  return content(path(relative));
}

bool TemporaryFolder::exists(const std::string& relative) const {
  return fs::exists(fs::symlink_status(path(relative)));
}

void TemporaryFolder::makeFolder(const std::string& relative) const {
  fs::create_directories(path(relative));
}

void TemporaryFolder::remove(const std::string& relative) const { fs::remove_all(path(relative)); }

void TemporaryFolder::touch(const std::string& relative, Date date) const {
  const auto whole = std::chrono::floor<std::chrono::seconds>(date);
  const std::chrono::nanoseconds fraction = date - whole;
  const timespec time{.tv_sec = whole.time_since_epoch().count(), .tv_nsec = fraction.count()};
  const timespec times[] = {time, time};
  EXPECT_EQ(::utimensat(AT_FDCWD, path(relative).c_str(), times, 0), 0) << path(relative);
}

void TemporaryFolder::giveTo(unsigned user) const {
  const auto give = [&](const fs::path& path) {
    EXPECT_EQ(::lchown(path.c_str(), user, user), 0) << path;
  };
  give(path_);
  for (const auto& entry : fs::recursive_directory_iterator(path_)) give(entry.path());
}

Date TemporaryFolder::modificationDate(const std::string& relative) const {
  struct stat status {};
  EXPECT_EQ(::stat(path(relative).c_str(), &status), 0) << path(relative);
  return std::chrono::floor<std::chrono::microseconds>(
      std::chrono::sys_time<std::chrono::nanoseconds>{
          std::chrono::seconds{status.st_mtim.tv_sec} +
          std::chrono::nanoseconds{status.st_mtim.tv_nsec}});
}

std::map<std::string, std::string> TemporaryFolder::snapshot(const std::string& relative) const {
  return walk(path(relative), [](const fs::directory_entry& entry) -> std::string {
    if (entry.is_symlink()) return "-> " + fs::read_symlink(entry).string();
    return entry.is_directory() ? "/" : content(entry);
  });
}

std::map<std::string, std::string> TemporaryFolder::fingerprint(const std::string& relative) const {
  return walk(path(relative), [](const fs::directory_entry& entry) {
    struct stat status {};
    EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0) << entry;
    return std::to_string(status.st_ino) + " " + std::to_string(status.st_size) + " " +
           std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
  });
}

}  // namespace annivo
