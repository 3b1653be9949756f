// SPDX-License-Identifier: MIT
#include "platform/foundation/NSFileManager.h"

namespace annivo {

NSDirectoryEnumerator::NSDirectoryEnumerator(const NSFileManager& files, std::string root)
    : files_(files), root_(std::move(root)) {
  enter("");
}

void NSDirectoryEnumerator::enter(const std::string& relativePath) {
  auto entries =
      files_.contentsOfDirectory(relativePath.empty() ? root_ : root_ + "/" + relativePath);
  if (!entries) {
    if (entries.error().kind != Error::Kind::absent) failures_.push_back(entries.error());
    return;
  }
  levels_.push_back(
      {.prefix = relativePath.empty() ? "" : relativePath + "/", .entries = *std::move(entries)});
}

std::optional<std::string> NSDirectoryEnumerator::nextObject() {
  if (enterPending_) enter(current_);
  enterPending_ = false;
  while (!levels_.empty()) {
    Level& level = levels_.back();
    if (level.next == level.entries.size()) {
      levels_.pop_back();
      continue;
    }
    const DirectoryEntry& entry = level.entries[level.next++];
    current_ = level.prefix + entry.name;
    enterPending_ = entry.type == FileType::directory;
    return current_;
  }
  current_.clear();
  return std::nullopt;
}

std::optional<FileAttributes> NSDirectoryEnumerator::fileAttributes() const {
  if (current_.empty()) return std::nullopt;
  auto attributes = files_.attributesAtPath(root_ + "/" + current_, Links::doNotFollow);
  if (!attributes) return std::nullopt;
  return *attributes;
}

}  // namespace annivo
