// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// Tells whether other programs change folders in which this one works too, by the folders' times:
/// between two changes of its own a time must not move. What falls between two ticks of a file
/// system's clock (some milliseconds on older systems) is not told apart.
class FolderWatch {
  struct Folder;

 public:
  /// `files` outlives this.
  explicit FolderWatch(const NSFileManager& files) : files_(files) {}

  /// Begins to watch a folder, whether it is there already or not, unless it is watched.
  void begin(const std::string& path);
  /// Whether somebody else has changed one of the folders since.
  [[nodiscard]] bool sawOthers();

  /// A change by this program, as long as it lives.
  class OwnChange {
   public:
    /// `path` is that of the file that is changed.
    OwnChange(FolderWatch& watch, std::string_view path);
    ~OwnChange();
    OwnChange(const OwnChange&) = delete;
    OwnChange& operator=(const OwnChange&) = delete;

   private:
    Folder* folder_;  ///< null: not watched
  };

 private:
  struct Folder {
    std::string path;
    std::unique_ptr<ReadableFolder> opened;
    std::optional<Date> time;
    bool changedByOthers = false;
  };

  const NSFileManager& files_;
  std::vector<std::unique_ptr<Folder>> folders_;
};

}  // namespace annivo
