// SPDX-License-Identifier: MIT
#include "tests/support/FailingFileManager.h"

#include <algorithm>

namespace annivo {

class FailingFileManager::OpenFile final : public AppendingFile {
 public:
  OpenFile(FailingFileManager& files, std::unique_ptr<AppendingFile> inner, std::string path)
      : files_(files), inner_(std::move(inner)), path_(std::move(path)) {}
  Result<void> append(std::string_view bytes) override {
    if (auto error = files_.check("append", path_)) {
      if (files_.killedNow()) (void)inner_->append(bytes.substr(0, bytes.size() / 2)).ok();
      return *error;
    }
    return inner_->append(bytes);
  }

 private:
  FailingFileManager& files_;
  std::unique_ptr<AppendingFile> inner_;
  std::string path_;
};

void FailingFileManager::plan(std::size_t number, Extent extent, int code) {
  first_ = changes_.size() + number;
  extent_ = extent;
  code_ = code;
  kill_ = false;
}

void FailingFileManager::failChange(std::size_t number, int code) {
  plan(number, Extent::one, code);
}

void FailingFileManager::failChangesFrom(std::size_t number, int code) {
  plan(number, Extent::rest, code);
}

void FailingFileManager::killAtChange(std::size_t number) {
  plan(number, Extent::rest, EINTR);
  kill_ = true;
}

std::size_t FailingFileManager::fileChanges() const {
  return static_cast<std::size_t>(
      std::count_if(changes_.begin(), changes_.end(), [](const Change& change) {
        return change.operation != "lock" && change.operation != "synchronize";
      }));
}

std::optional<Error> FailingFileManager::check(const std::string& operation,
                                               const std::string& path) {
  changes_.push_back({operation, path});
  const std::size_t number = changes_.size();
  const bool planned = first_ && (extent_ == Extent::one ? number == *first_ : number >= *first_);
  if (planned) return errorFromErrno(code_, operation, path);
  if (isUnwritable(path)) return errorFromErrno(EACCES, operation, path);
  return std::nullopt;
}

void FailingFileManager::leaveTemporary(const std::string& path, std::string_view bytes) {
  const auto slash = path.rfind('/');
  const std::string temporary = path.substr(0, slash + 1) + "." + path.substr(slash + 1) + ".tmp";
  if (const auto file = inner_.openForAppending(temporary)) {
    (void)(*file)->append(bytes.substr(0, bytes.size() / 2)).ok();
  }
}

bool FailingFileManager::isUnwritable(const std::string& path) const {
  return std::any_of(unwritable_.begin(), unwritable_.end(), [&](const std::string& marked) {
    return path == marked || path.starts_with(marked + "/");
  });
}

Result<std::string> FailingFileManager::contentsAtPath(const std::string& path,
                                                       std::size_t limit) const {
  if (unreadable_.contains(path)) return errorFromErrno(EACCES, "read", path);
  return inner_.contentsAtPath(path, limit);
}

Result<std::vector<DirectoryEntry>> FailingFileManager::contentsOfDirectory(
    const std::string& path) const {
  if (unreadable_.contains(path)) return errorFromErrno(EACCES, "list", path);
  return inner_.contentsOfDirectory(path);
}

bool FailingFileManager::isWritable(const std::string& path) const {
  return !isUnwritable(path) && inner_.isWritable(path);
}

Result<void> FailingFileManager::writeAtomically(const std::string& path, std::string_view bytes) {
  if (auto error = check("write", path)) {
    if (killedNow()) leaveTemporary(path, bytes);
    return *error;
  }
  return inner_.writeAtomically(path, bytes);
}

Result<void> FailingFileManager::writeDurably(const std::string& path, std::string_view bytes) {
  if (auto error = check("writeDurably", path)) {
    if (killedNow()) leaveTemporary(path, bytes);
    return *error;
  }
  return inner_.writeDurably(path, bytes);
}

Result<std::unique_ptr<AppendingFile>> FailingFileManager::openForAppending(
    const std::string& path) {
  if (auto error = check("open", path)) return *error;
  auto file = inner_.openForAppending(path);
  if (!file) return file;
  return std::unique_ptr<AppendingFile>(std::make_unique<OpenFile>(*this, *std::move(file), path));
}

Result<void> FailingFileManager::createDirectory(const std::string& path) {
  if (!inner_.fileExistsAtPath(path)) {
    if (auto error = check("createDirectory", path)) return *error;
  }
  return inner_.createDirectory(path);
}

Result<void> FailingFileManager::removeFile(const std::string& path) {
  if (auto error = check("remove", path)) return *error;
  return inner_.removeFile(path);
}

Result<void> FailingFileManager::rename(const std::string& from, const std::string& to) {
  if (auto error = check("rename", from)) return *error;
  if (isUnwritable(to)) return errorFromErrno(EACCES, "rename", from);
  return inner_.rename(from, to);
}

Result<void> FailingFileManager::synchronize(const std::string& path) {
  if (auto error = check("synchronize", path)) return *error;
  return inner_.synchronize(path);
}

Result<std::unique_ptr<FileLock>> FailingFileManager::lock(const std::string& path) {
  if (auto error = check("lock", path)) return *error;
  return inner_.lock(path);
}

}  // namespace annivo
