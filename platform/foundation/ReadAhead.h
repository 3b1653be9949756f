// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// Reads the files of a folder on a second thread before they are asked for. Most of what a small
/// file costs is the way into the system and back, which a second processor can take over. A file
/// that it does not have (absent, not readable, changed since) is to be read in the usual way.
class ReadAhead {
 public:
  /// Larger files than that are left to the usual way.
  explicit ReadAhead(std::size_t limit) : limit_(limit) {}

  /// Begins to read the files of those names. What the call before began, if it was not collected,
  /// is dropped.
  void prefetch(std::shared_ptr<const ReadableFolder> folder, std::vector<std::string> names);
  /// Waits for what prefetch() began: from here on it can be claimed. What was collected before is
  /// dropped.
  void collect();
  /// The content of a collected file, handed out once and valid until the next collect(); nothing
  /// when it is not there. Cheapest in the order of the names.
  [[nodiscard]] std::optional<std::string_view> claim(const ReadableFolder& folder,
                                                      std::string_view name);
  /// Drops the file of that name, in whatever folder, collected or still being read: this program
  /// changes or removes it.
  void drop(std::string_view name);

 private:
  struct File {
    std::string name;
    std::size_t begin = 0;  ///< of its content in the batch's
    std::size_t length = 0;
    bool isThere = false;
  };
  struct Batch {
    std::shared_ptr<const ReadableFolder> folder;
    std::vector<File> files;
    std::string contents;
    std::size_t next = 0;  ///< where claim() goes on

    void read(std::size_t limit);
    std::optional<std::string_view> claim(std::string_view name);
  };

  std::size_t limit_;
  Batch collected_;
  std::string spare_;                 ///< memory for the next batch
  std::vector<std::string> dropped_;  ///< since prefetching_ began
  std::future<Batch> prefetching_;
};

}  // namespace annivo
