// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"

namespace annivo {

/// What a power loss keeps of all that was not yet durable.
enum class PowerLoss {
  nothingKept,    ///< the disk is as it was when last synced
  namesKept,      ///< every name is as the program left it, files hold what was synced of them
  somethingKept,  ///< each change of a name, and a part of each file, by a random choice
};

/// Files in memory, with the difference between what the program sees and what would still be
/// there after a power loss. There are no links.
///
/// Changes of names (creation, rename, removal) are durable after synchronize and after
/// writeDurably or createDirectory in the same folder. Content is durable after synchronize or
/// writeDurably. A rename is kept or lost as one; apart from that, changes that are not durable
/// survive a power loss in any combination.
class MemoryFileManager final : public NSFileManager {
 public:
  struct Counts {
    std::size_t attributes = 0;  ///< and isWritable
    std::size_t reads = 0;
    std::size_t listings = 0;
    std::size_t writes = 0;  ///< atomic and durable ones
    std::size_t appends = 0;
    std::size_t folders = 0;  ///< made
    std::size_t removals = 0;
    std::size_t renames = 0;
    std::size_t synchronizations = 0;  ///< and durable writes
    std::size_t locks = 0;
    /// All that changes the disk.
    [[nodiscard]] std::size_t changes() const {
      return writes + appends + folders + removals + renames;
    }
  };

  /// Empty but for "/". `clock` gives the modification dates and must outlive this.
  explicit MemoryFileManager(const Clock& clock);

  /// Makes a folder and those above it, durably.
  void makeFolders(const std::string& path);
  /// Copies a folder, durably, with its modification dates.
  void copyFrom(const NSFileManager& source, const std::string& folder);
  void touch(const std::string& path, Date date);
  /// The power fails and comes back: see PowerLoss. Open files and locks are gone.
  void cutPower(PowerLoss loss, std::uint64_t seed = 0);
  /// Every file below `folder` with its content.
  [[nodiscard]] std::map<std::string, std::string> files(const std::string& folder) const;
  [[nodiscard]] const Counts& counts() const { return counts_; }
  void resetCounts() { counts_ = {}; }

  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override;
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override;
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override;
  bool isWritable(const std::string& path) const override;
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override;
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override;
  Result<void> createDirectory(const std::string& path) override;
  Result<void> removeFile(const std::string& path) override;
  Result<void> rename(const std::string& from, const std::string& to) override;
  Result<void> synchronize(const std::string& path) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& path) override;
  bool isOnDisk(const std::string&) const override { return false; }

 private:
  struct Node {
    FileType type = FileType::regular;
    std::string content;
    std::size_t durableLength = 0;  ///< files only grow: a rewrite makes a new node
    Date modificationDate{};
  };
  using Names = std::map<std::string, std::shared_ptr<Node>>;
  /// A change of a name that is not durable yet.
  struct Change {
    std::string path;
    std::shared_ptr<Node> node;  ///< null: the name was removed
    std::string movedFrom;       ///< the name that a rename took away, or ""
  };
  class OpenFile;
  class HeldLock;

  [[nodiscard]] std::shared_ptr<Node> find(const std::string& path) const;
  [[nodiscard]] std::shared_ptr<Node> newNode(FileType type, std::string content) const;
  /// The errno that keeps a name from being made at `path`, or 0.
  [[nodiscard]] int objectionTo(const std::string& path) const;
  void change(Change change);
  static void apply(const Change& change, Names& names);
  void makeFolderDurable(const std::string& folder);

  const Clock& clock_;
  Names live_;
  Names durable_;
  std::vector<Change> pending_;
  std::shared_ptr<std::set<std::string>> locked_ = std::make_shared<std::set<std::string>>();
  mutable Counts counts_;
};

}  // namespace annivo
