// SPDX-License-Identifier: MIT
#include "parent/runs/OverlayFileManager.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

namespace annivo {

namespace {

/// Folder and name of a path.
std::pair<std::string_view, std::string_view> split(std::string_view path) {
  const auto slash = path.rfind('/');
  return {path.substr(0, slash), path.substr(slash + 1)};
}

}  // namespace

class OverlayFileManager::Appending final : public AppendingFile {
 public:
  Appending(OverlayFileManager& files, std::string path) : files_(files), path_(std::move(path)) {}
  Result<void> append(std::string_view bytes) override {
    const std::scoped_lock lock(files_.changing_);
    Entry& entry = files_.entry(path_);
    entry.kind = Entry::Kind::file;
    entry.bytes.append(bytes);
    entry.modificationDate = files_.clock_.now();
    return {};
  }

 private:
  OverlayFileManager& files_;
  std::string path_;
};

class OverlayFileManager::Folder final : public ReadableFolder {
 public:
  Folder(const OverlayFileManager& files, std::string path)
      : files_(files), path_(std::move(path)), base_(files.base_.openFolder(path_)) {}
  Result<std::string> contentsOfFileItself(const std::string& name, std::size_t limit,
                                           std::string memory) const override {
    if (auto own = files_.ownContents(path_ + "/" + name, limit)) return *std::move(own);
    return base_->contentsOfFileItself(name, limit, std::move(memory));
  }
  std::optional<Date> modificationDate() const override {
    const auto attributes = files_.attributesAtPath(path_, Links::follow);
    return attributes ? std::optional(attributes->modificationDate) : std::nullopt;
  }

 private:
  const OverlayFileManager& files_;
  std::string path_;
  std::unique_ptr<ReadableFolder> base_;
};

const OverlayFileManager::Entry* OverlayFileManager::find(const std::string& path) const {
  const auto [folder, name] = split(path);
  const auto entries = folders_.find(folder);
  if (entries == folders_.end()) return nullptr;
  const auto found = entries->second.find(name);
  return found == entries->second.end() ? nullptr : &found->second;
}

OverlayFileManager::Entry& OverlayFileManager::entry(const std::string& path) {
  const auto [folder, name] = split(path);
  return folders_[std::string(folder)][std::string(name)];
}

void OverlayFileManager::putFile(const std::string& path, std::string bytes) {
  const std::scoped_lock lock(changing_);
  entry(path) = {Entry::Kind::file, std::move(bytes), clock_.now()};
}

void OverlayFileManager::putDirectory(const std::string& path) {
  const std::scoped_lock lock(changing_);
  entry(path) = {Entry::Kind::directory, "", clock_.now()};
}

void OverlayFileManager::putAbsence(const std::string& path) {
  const std::scoped_lock lock(changing_);
  entry(path) = {Entry::Kind::removed, "", clock_.now()};
}

std::vector<std::string> OverlayFileManager::changedFiles() const {
  std::vector<std::string> changed;
  for (const auto& [folder, entries] : folders_) {
    for (const auto& [name, entry] : entries) {
      if (entry.kind == Entry::Kind::directory) continue;
      const std::string path = folder + '/' + name;
      const auto before = base_.contentsAtPath(path);
      const bool same = entry.kind == Entry::Kind::removed
                            ? !before && before.error().kind == Error::Kind::absent
                            : before && *before == entry.bytes;
      if (!same) changed.push_back(path);
    }
  }
  std::sort(changed.begin(), changed.end());
  return changed;
}

Result<FileAttributes> OverlayFileManager::attributesAtPath(const std::string& path,
                                                            Links links) const {
  {
    const std::scoped_lock lock(changing_);
    if (const Entry* found = find(path)) {
      if (found->kind == Entry::Kind::removed) return errorFromErrno(ENOENT, "read", path);
      const bool file = found->kind == Entry::Kind::file;
      return FileAttributes{.type = file ? FileType::regular : FileType::directory,
                            .size = found->bytes.size(),
                            .modificationDate = found->modificationDate,
                            .permissions = static_cast<mode_t>(file ? 0600 : 0700)};
    }
  }
  return base_.attributesAtPath(path, links);
}

std::optional<Result<std::string>> OverlayFileManager::ownContents(const std::string& path,
                                                                   std::size_t limit) const {
  const std::scoped_lock lock(changing_);
  const Entry* found = find(path);
  if (!found) return std::nullopt;
  if (found->kind == Entry::Kind::removed) return errorFromErrno(ENOENT, "read", path);
  if (found->kind == Entry::Kind::directory) return errorFromErrno(EISDIR, "read", path);
  if (found->bytes.size() > limit) {
    Error tooLarge = errorFromErrno(EFBIG, "read", path);
    tooLarge.kind = Error::Kind::unreadable;
    return tooLarge;
  }
  return found->bytes;
}

Result<std::string> OverlayFileManager::contentsAtPath(const std::string& path,
                                                       std::size_t limit) const {
  if (auto own = ownContents(path, limit)) return *std::move(own);
  return base_.contentsAtPath(path, limit);
}

Result<std::string> OverlayFileManager::contentsOfFileItself(const std::string& path,
                                                             std::size_t limit) const {
  // What is kept in memory is no link.
  if (auto own = ownContents(path, limit)) return *std::move(own);
  return base_.contentsOfFileItself(path, limit);
}

std::unique_ptr<ReadableFolder> OverlayFileManager::openFolder(const std::string& path) const {
  return std::make_unique<Folder>(*this, path);
}

Result<std::vector<DirectoryEntry>> OverlayFileManager::contentsOfDirectory(
    const std::string& path) const {
  auto listed = base_.contentsOfDirectory(path);
  const Entry* own = find(path);
  const bool isOwn = own && own->kind == Entry::Kind::directory;
  if (!listed && !isOwn) return listed;
  const auto entries = folders_.find(path);
  if (listed && entries == folders_.end()) return listed;
  std::map<std::string, FileType> merged;
  if (listed) {
    for (DirectoryEntry& entry : *listed) merged.emplace(std::move(entry.name), entry.type);
  }
  if (entries != folders_.end()) {
    for (const auto& [name, entry] : entries->second) {
      if (entry.kind == Entry::Kind::removed) {
        merged.erase(name);
      } else {
        merged[name] = entry.kind == Entry::Kind::file ? FileType::regular : FileType::directory;
      }
    }
  }
  std::vector<DirectoryEntry> result;
  result.reserve(merged.size());
  for (const auto& [name, type] : merged) result.push_back({name, type});
  return result;
}

bool OverlayFileManager::isWritable(const std::string& path) const {
  const Entry* found = find(path);
  return found ? found->kind != Entry::Kind::removed : base_.isWritable(path);
}

bool OverlayFileManager::isOnDisk(const std::string& path) const {
  const std::scoped_lock lock(changing_);
  return !find(path) && base_.isOnDisk(path);
}

Result<void> OverlayFileManager::mayChange(const std::string& path) const {
  const auto [above, name] = split(path);
  const std::string folder(above);
  const auto attributes = attributesAtPath(folder, Links::follow);
  if (!attributes) return errorFromErrno(attributes.error().code, "write", path);
  if (name.size() > NAME_MAX) return errorFromErrno(ENAMETOOLONG, "write", path);
  if (attributes->type != FileType::directory) return errorFromErrno(ENOTDIR, "write", path);
  if (!isWritable(folder)) return errorFromErrno(EACCES, "write", path);
  return {};
}

Result<void> OverlayFileManager::writeAtomically(const std::string& path, std::string_view bytes) {
  if (auto may = mayChange(path); !may) return may;
  const auto there = attributesAtPath(path, Links::follow);
  if (there && there->type == FileType::directory) return errorFromErrno(EISDIR, "write", path);
  putFile(path, std::string(bytes));
  return {};
}

Result<void> OverlayFileManager::writeDurably(const std::string& path, std::string_view bytes) {
  return writeAtomically(path, bytes);
}

Result<std::unique_ptr<AppendingFile>> OverlayFileManager::openForAppending(
    const std::string& path) {
  auto content = contentsAtPath(path, kDefaultLimit);
  if (!content && content.error().kind != Error::Kind::absent) return content.error();
  if (auto written = writeAtomically(path, content ? *content : std::string()); !written) {
    return written.error();
  }
  return std::unique_ptr<AppendingFile>(std::make_unique<Appending>(*this, path));
}

Result<void> OverlayFileManager::createDirectory(const std::string& path) {
  const auto there = attributesAtPath(path, Links::follow);
  if (there && there->type == FileType::directory) return {};
  if (there) return errorFromErrno(EEXIST, "create", path);
  if (auto may = mayChange(path); !may) return may;
  putDirectory(path);
  return {};
}

Result<void> OverlayFileManager::removeFile(const std::string& path) {
  const auto there = attributesAtPath(path, Links::doNotFollow);
  if (!there) return there.error();
  if (there->type == FileType::directory) return errorFromErrno(EISDIR, "remove", path);
  if (auto may = mayChange(path); !may) return may;
  putAbsence(path);
  return {};
}

Result<void> OverlayFileManager::rename(const std::string& from, const std::string& to) {
  const auto there = attributesAtPath(from, Links::doNotFollow);
  if (!there) return there.error();
  if (there->type == FileType::directory) return renameDirectory(from, to);
  auto content = contentsAtPath(from, kDefaultLimit);
  if (!content) return content.error();
  if (auto written = writeAtomically(to, *content); !written) return written;
  return removeFile(from);
}

Result<void> OverlayFileManager::renameDirectory(const std::string& from, const std::string& to) {
  if (base_.attributesAtPath(from, Links::doNotFollow)) {
    return errorFromErrno(EXDEV, "rename", from);
  }
  if (attributesAtPath(to, Links::doNotFollow)) return errorFromErrno(EEXIST, "rename", to);
  if (auto made = createDirectory(to); !made) return made;
  const std::scoped_lock lock(changing_);
  const auto [folder, name] = split(from);
  folders_[std::string(folder)].erase(std::string(name));
  std::vector<std::string> inside;
  for (const auto& [path, entries] : folders_) {
    if (path == from || path.starts_with(from + '/')) inside.push_back(path);
  }
  for (const std::string& path : inside) {
    auto moved = folders_.extract(path);
    moved.key() = to + path.substr(from.size());
    folders_.insert(std::move(moved));
  }
  return {};
}

Result<void> OverlayFileManager::synchronize(const std::string& path) {
  const auto there = attributesAtPath(path, Links::follow);
  return there ? Result<void>() : there.error();
}

Result<std::unique_ptr<FileLock>> OverlayFileManager::lock(const std::string& path) {
  // Nobody else sees these files: there is nothing to wait for.
  if (!fileExistsAtPath(path)) {
    if (auto made = writeAtomically(path, ""); !made) return made.error();
  }
  return std::make_unique<FileLock>();
}

}  // namespace annivo
