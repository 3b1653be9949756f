// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// Hands every operation on to another file manager, which must outlive it.
class ForwardingFileManager : public NSFileManager {
 public:
  explicit ForwardingFileManager(NSFileManager& inner) : inner_(inner) {}

  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override {
    return inner_.attributesAtPath(path, links);
  }
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    return inner_.contentsAtPath(path, limit);
  }
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override {
    return inner_.contentsOfDirectory(path);
  }
  Result<std::string> linkTarget(const std::string& path) const override {
    return inner_.linkTarget(path);
  }
  bool isWritable(const std::string& path) const override { return inner_.isWritable(path); }
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
    return inner_.writeAtomically(path, bytes);
  }
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override {
    return inner_.writeDurably(path, bytes);
  }
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override {
    return inner_.openForAppending(path);
  }
  Result<void> createDirectory(const std::string& path) override {
    return inner_.createDirectory(path);
  }
  Result<void> removeFile(const std::string& path) override { return inner_.removeFile(path); }
  Result<void> rename(const std::string& from, const std::string& to) override {
    return inner_.rename(from, to);
  }
  Result<void> synchronize(const std::string& path) override { return inner_.synchronize(path); }
  Result<std::unique_ptr<FileLock>> lock(const std::string& path) override {
    return inner_.lock(path);
  }
  bool isOnDisk(const std::string& path) const override { return inner_.isOnDisk(path); }

 protected:
  NSFileManager& inner_;
};

}  // namespace annivo
