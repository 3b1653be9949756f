// SPDX-License-Identifier: MIT
#include "tests/support/MemoryFileManager.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>

namespace annivo {

namespace {

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool isBelow(const std::string& path, const std::string& folder) {
  if (folder == "/") return path.size() > 1;
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

}  // namespace

class MemoryFileManager::OpenFile final : public AppendingFile {
 public:
  OpenFile(std::shared_ptr<Node> node, const Clock& clock, Counts& counts)
      : node_(std::move(node)), clock_(clock), counts_(counts) {}
  Result<void> append(std::string_view bytes) override {
    ++counts_.appends;
    node_->content += bytes;
    node_->modificationDate = clock_.now();
    return {};
  }

 private:
  std::shared_ptr<Node> node_;
  const Clock& clock_;
  Counts& counts_;
};

class MemoryFileManager::HeldLock final : public FileLock {
 public:
  HeldLock(std::shared_ptr<std::set<std::string>> locked, std::string path)
      : locked_(std::move(locked)), path_(std::move(path)) {}
  ~HeldLock() override { locked_->erase(path_); }
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;

 private:
  std::shared_ptr<std::set<std::string>> locked_;
  std::string path_;
};

MemoryFileManager::MemoryFileManager(const Clock& clock) : clock_(clock) {
  live_["/"] = newNode(FileType::directory, "");
  durable_ = live_;
}

void MemoryFileManager::makeFolders(const std::string& path) {
  if (path != "/" && !find(path)) {
    makeFolders(folderOf(path));
    live_[path] = durable_[path] = newNode(FileType::directory, "");
  }
}

void MemoryFileManager::copyFrom(const NSFileManager& source, const std::string& folder) {
  makeFolders(folder);
  const auto entries = source.contentsOfDirectory(folder);
  if (!entries) return;
  for (const DirectoryEntry& entry : *entries) {
    const std::string path = folder + "/" + entry.name;
    const auto attributes = source.attributesAtPath(path, Links::follow);
    if (!attributes) continue;
    if (attributes->type == FileType::directory) {
      copyFrom(source, path);
    } else if (auto content = source.contentsAtPath(path)) {
      auto node = newNode(FileType::regular, *std::move(content));
      node->durableLength = node->content.size();
      live_[path] = durable_[path] = node;
    }
    touch(path, attributes->modificationDate);
  }
}

void MemoryFileManager::touch(const std::string& path, Date date) {
  if (const auto node = find(path)) node->modificationDate = date;
}

void MemoryFileManager::cutPower(PowerLoss loss, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  const auto keeps = [&] {
    return loss == PowerLoss::namesKept || (loss == PowerLoss::somethingKept && random() % 2 == 0);
  };
  for (const Change& pending : pending_) {
    if (keeps()) apply(pending, durable_);
  }
  pending_.clear();
  // A name is lost with its folder. Folders come before what they hold.
  std::erase_if(durable_, [&](const auto& entry) {
    return entry.first != "/" && !durable_.contains(folderOf(entry.first));
  });
  for (auto& [path, node] : durable_) {
    // A node of its own: what was open before writes to the old one.
    node = std::make_shared<Node>(*node);
    std::size_t kept = node->durableLength;
    const std::size_t more = node->content.size() - kept;
    if (loss == PowerLoss::somethingKept && more > 0) {
      kept += std::array<std::size_t, 3>{0, more, random() % (more + 1)}[random() % 3];
    }
    node->content.resize(kept);
    node->durableLength = kept;
  }
  live_ = durable_;
  locked_ = std::make_shared<std::set<std::string>>();
}

std::map<std::string, std::string> MemoryFileManager::files(const std::string& folder) const {
  std::map<std::string, std::string> result;
  for (const auto& [path, node] : live_) {
    if (node->type == FileType::regular && isBelow(path, folder)) result[path] = node->content;
  }
  return result;
}

std::shared_ptr<MemoryFileManager::Node> MemoryFileManager::find(const std::string& path) const {
  const auto found = live_.find(path);
  return found == live_.end() ? nullptr : found->second;
}

std::shared_ptr<MemoryFileManager::Node> MemoryFileManager::newNode(FileType type,
                                                                    std::string content) const {
  return std::make_shared<Node>(Node{.type = type,
                                     .content = std::move(content),
                                     .durableLength = 0,
                                     .modificationDate = clock_.now()});
}

int MemoryFileManager::objectionTo(const std::string& path) const {
  const auto folder = find(folderOf(path));
  if (!folder) return ENOENT;
  if (folder->type != FileType::directory) return ENOTDIR;
  if (path.size() - path.rfind('/') - 1 > 255) return ENAMETOOLONG;
  return 0;
}

void MemoryFileManager::change(Change change) {
  apply(change, live_);
  for (const std::string& path : {change.path, change.movedFrom}) {
    if (path.empty()) continue;
    if (const auto folder = find(folderOf(path))) folder->modificationDate = clock_.now();
  }
  pending_.push_back(std::move(change));
}

void MemoryFileManager::apply(const Change& change, Names& names) {
  if (!change.movedFrom.empty()) {
    Names moved;
    for (auto at = names.begin(); at != names.end();) {
      if (isBelow(at->first, change.movedFrom)) {
        moved[change.path + at->first.substr(change.movedFrom.size())] = at->second;
        at = names.erase(at);
      } else {
        ++at;
      }
    }
    names.erase(change.movedFrom);
    names.merge(moved);
  }
  if (change.node) {
    names[change.path] = change.node;
  } else {
    names.erase(change.path);
  }
}

void MemoryFileManager::makeFolderDurable(const std::string& folder) {
  const auto concerns = [&](const std::string& path) {
    return !path.empty() && folderOf(path) == folder;
  };
  for (const Change& pending : pending_) {
    if (concerns(pending.path) || concerns(pending.movedFrom)) apply(pending, durable_);
  }
  std::erase_if(pending_, [&](const Change& pending) {
    return concerns(pending.path) || concerns(pending.movedFrom);
  });
}

Result<FileAttributes> MemoryFileManager::attributesAtPath(const std::string& path,
                                                           Links /*links*/) const {
  ++counts_.attributes;
  const auto node = find(path);
  if (!node) return errorFromErrno(ENOENT, "examine", path);
  const bool folder = node->type == FileType::directory;
  return FileAttributes{.type = node->type,
                        .size = node->content.size(),
                        .modificationDate = node->modificationDate,
                        .permissions = static_cast<mode_t>(folder ? 0700 : 0600)};
}

Result<std::string> MemoryFileManager::contentsAtPath(const std::string& path,
                                                      std::size_t limit) const {
  ++counts_.reads;
  const auto node = find(path);
  if (!node) return errorFromErrno(ENOENT, "read", path);
  if (node->type != FileType::regular) return errorFromErrno(EISDIR, "read", path);
  if (node->content.size() > limit) {
    Error error = errorFromErrno(EFBIG, "read", path);
    error.kind = Error::Kind::unreadable;
    return error;
  }
  return node->content;
}

Result<std::vector<DirectoryEntry>> MemoryFileManager::contentsOfDirectory(
    const std::string& path) const {
  ++counts_.listings;
  const auto folder = find(path);
  if (!folder) return errorFromErrno(ENOENT, "list", path);
  if (folder->type != FileType::directory) return errorFromErrno(ENOTDIR, "list", path);
  std::vector<DirectoryEntry> entries;
  const std::string prefix = path == "/" ? path : path + "/";
  for (auto at = live_.upper_bound(prefix); at != live_.end() && at->first.starts_with(prefix);
       ++at) {
    std::string name = at->first.substr(prefix.size());
    if (name.find('/') == std::string::npos) entries.push_back({std::move(name), at->second->type});
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.name < b.name; });
  return entries;
}

bool MemoryFileManager::isWritable(const std::string& path) const {
  ++counts_.attributes;
  return find(path) != nullptr;
}

Result<void> MemoryFileManager::writeAtomically(const std::string& path, std::string_view bytes) {
  ++counts_.writes;
  if (const int code = objectionTo(path)) return errorFromErrno(code, "write", path);
  const auto old = find(path);
  if (old && old->type == FileType::directory) return errorFromErrno(EISDIR, "write", path);
  change({.path = path, .node = newNode(FileType::regular, std::string(bytes)), .movedFrom = {}});
  return {};
}

Result<void> MemoryFileManager::writeDurably(const std::string& path, std::string_view bytes) {
  if (auto written = writeAtomically(path, bytes); !written) return written;
  ++counts_.synchronizations;
  const auto node = find(path);
  node->durableLength = node->content.size();
  makeFolderDurable(folderOf(path));
  return {};
}

Result<std::unique_ptr<AppendingFile>> MemoryFileManager::openForAppending(
    const std::string& path) {
  if (const int code = objectionTo(path)) return errorFromErrno(code, "write", path);
  if (!find(path)) {
    change({.path = path, .node = newNode(FileType::regular, ""), .movedFrom = {}});
  }
  const auto node = find(path);
  if (node->type != FileType::regular) return errorFromErrno(EISDIR, "write", path);
  return std::unique_ptr<AppendingFile>(std::make_unique<OpenFile>(node, clock_, counts_));
}

Result<void> MemoryFileManager::createDirectory(const std::string& path) {
  if (const auto node = find(path)) {
    if (node->type == FileType::directory) return {};
    return errorFromErrno(EEXIST, "create the folder", path);
  }
  if (const int code = objectionTo(path)) return errorFromErrno(code, "create the folder", path);
  ++counts_.folders;
  change({.path = path, .node = newNode(FileType::directory, ""), .movedFrom = {}});
  makeFolderDurable(folderOf(path));
  return {};
}

Result<void> MemoryFileManager::removeFile(const std::string& path) {
  const auto node = find(path);
  if (!node) return errorFromErrno(ENOENT, "remove", path);
  if (node->type == FileType::directory) return errorFromErrno(EISDIR, "remove", path);
  ++counts_.removals;
  change({.path = path, .node = nullptr, .movedFrom = {}});
  return {};
}

Result<void> MemoryFileManager::rename(const std::string& from, const std::string& to) {
  const auto node = find(from);
  if (!node) return errorFromErrno(ENOENT, "rename", from);
  if (const int code = objectionTo(to)) return errorFromErrno(code, "rename", from);
  const auto target = find(to);
  if (target && target->type != node->type) {
    return errorFromErrno(target->type == FileType::directory ? EISDIR : ENOTDIR, "rename", from);
  }
  ++counts_.renames;
  if (from != to) change({.path = to, .node = node, .movedFrom = from});
  return {};
}

Result<void> MemoryFileManager::synchronize(const std::string& path) {
  if (!find(path)) return errorFromErrno(ENOENT, "synchronize", path);
  ++counts_.synchronizations;
  for (const auto& [name, node] : live_) node->durableLength = node->content.size();
  durable_ = live_;
  pending_.clear();
  return {};
}

Result<std::unique_ptr<FileLock>> MemoryFileManager::lock(const std::string& path) {
  ++counts_.locks;
  auto file = openForAppending(path);
  if (!file) return errorFromErrno(file.error().code, "lock", path);
  // Whoever holds it is in this very thread: waiting would never end.
  if (!locked_->insert(path).second) return errorFromErrno(EDEADLK, "lock", path);
  return std::unique_ptr<FileLock>(std::make_unique<HeldLock>(locked_, path));
}

}  // namespace annivo
