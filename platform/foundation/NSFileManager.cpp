// SPDX-License-Identifier: MIT
#include "platform/foundation/NSFileManager.h"

#include <algorithm>
#include <cerrno>

namespace annivo {

bool NSFileManager::fileExistsAtPath(const std::string& path) const {
  return attributesAtPath(path, Links::follow).ok();
}

namespace {

/// Where folders cannot be held open: by path after all.
class FolderByPath final : public ReadableFolder {
 public:
  FolderByPath(const NSFileManager& files, std::string path)
      : files_(files), path_(std::move(path)) {}
  Result<std::string> contentsOfFileItself(const std::string& name, std::size_t limit,
                                           std::string) const override {
    return files_.contentsOfFileItself(path_ + "/" + name, limit);
  }
  std::optional<Date> modificationDate() const override {
    const auto attributes = files_.attributesAtPath(path_, Links::follow);
    return attributes ? std::optional(attributes->modificationDate) : std::nullopt;
  }

 private:
  const NSFileManager& files_;
  std::string path_;
};

}  // namespace

std::unique_ptr<ReadableFolder> NSFileManager::openFolder(const std::string& path) const {
  return std::make_unique<FolderByPath>(*this, path);
}

Result<std::string> NSFileManager::contentsOfFileItself(const std::string& path,
                                                        std::size_t limit) const {
  const auto attributes = attributesAtPath(path, Links::doNotFollow);
  if (!attributes) return attributes.error();
  if (attributes->type == FileType::symbolicLink) return errorFromErrno(ELOOP, "read", path);
  return contentsAtPath(path, limit);
}

Result<void> NSFileManager::createDirectoriesUnder(const std::string& root,
                                                   const std::string& path) {
  if (path == root) {
    if (fileExistsAtPath(root)) return {};
    return errorFromErrno(ENOENT, "find the folder", root);
  }
  if (!path.starts_with(root + "/")) {
    return Error{.kind = Error::Kind::refused,
                 .domain = "NSCocoaErrorDomain",
                 .description = "The folder " + path + " does not lie under " + root + ".",
                 .failureReason = {}};
  }
  auto made = createDirectory(path);
  if (made || made.error().kind != Error::Kind::absent) return made;
  if (auto above = createDirectoriesUnder(root, path.substr(0, path.rfind('/'))); !above) {
    return above;
  }
  return createDirectory(path);
}

std::string NSFileManager::pathAside(const std::string& path, Date now) const {
  std::string time = describe(now);  // "2026-11-20 18:46:00 +0000"
  std::erase_if(time, [](char c) { return c == '-' || c == ':'; });
  const std::string aside = path + ".damaged-" + time.substr(0, 8) + "T" + time.substr(9, 6) + "Z";
  std::string free = aside;
  for (int number = 2; attributesAtPath(free, Links::doNotFollow).ok(); ++number) {
    free = aside + "-" + std::to_string(number);
  }
  return free;
}

Result<std::string> NSFileManager::setAside(const std::string& path, Date now) {
  std::string aside = pathAside(path, now);
  if (auto moved = rename(path, aside); !moved) return moved.error();
  return aside;
}

Result<std::string> pathComponent(std::string_view name, const std::string& what) {
  const auto refused = [&](const std::string& reason) {
    return Error{.kind = Error::Kind::refused,
                 .domain = "NSCocoaErrorDomain",
                 .description = "The " + what + " cannot be used as a file name.",
                 .failureReason = reason};
  };
  constexpr std::size_t kLongest = 200;
  if (name.empty()) return refused("It is empty.");
  if (name == "." || name == "..") return refused("It names a folder above or around it.");
  if (name.size() > kLongest) return refused("It is longer than 200 bytes.");
  const auto forbidden = [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || byte == '/';
  };
  if (std::any_of(name.begin(), name.end(), forbidden)) {
    return refused("It holds a slash or a control character.");
  }
  return std::string(name);
}

}  // namespace annivo
