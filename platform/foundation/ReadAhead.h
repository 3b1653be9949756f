// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <future>
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

  /// Begins to read the files of those names in `folder`, which outlives this, and makes ready for
  /// take() what the last call began; what that call made ready is dropped.
  void begin(const ReadableFolder& folder, std::vector<std::string> names);
  /// The content of a file, once, valid until the next begin(); nothing when it is not there.
  /// Cheapest in the order of the names.
  [[nodiscard]] std::optional<std::string_view> take(const ReadableFolder& folder,
                                                     std::string_view name);
  /// Tells that this program changes or removes the file of that name, in whatever folder.
  void forget(std::string_view name);

 private:
  struct File {
    std::string name;
    std::size_t begin = 0;  ///< of its content in the batch's
    std::size_t length = 0;
    bool isThere = false;
  };
  struct Batch {
    const ReadableFolder* folder = nullptr;
    std::vector<File> files;
    std::string contents;
    std::size_t next = 0;  ///< where take() goes on

    void read(std::size_t limit);
    std::optional<std::string_view> take(std::string_view name);
  };

  std::size_t limit_;
  Batch ready_;
  std::vector<std::string> changed_;  ///< since coming_ began
  std::future<Batch> coming_;
};

}  // namespace annivo
