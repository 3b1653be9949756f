// SPDX-License-Identifier: MIT
#include "parent/sources/VCardFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>

#include "base/Reason.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "codecs/vcard/VCardText.h"
#include "platform/foundation/Descriptor.h"

namespace annivo {

namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

bool hasCardName(const std::string& name) {
  const std::string upper = upperCased(name);
  return upper.ends_with(".VCF") || upper.ends_with(".VCARD");
}

Result<void> addFolder(const std::string& folder, std::vector<VCardFile>& files) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  if (!entries) return errorFromErrno(errno, "read", folder);
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = readdir(entries.get())) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    errno = 0;
  }
  if (errno != 0) return errorFromErrno(errno, "read", folder);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const std::string path = folder + (folder.ends_with('/') ? "" : "/") + name;
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return errorFromErrno(errno, "read", path);
    if (S_ISDIR(status.st_mode)) {
      if (auto added = addFolder(path, files); !added) return added;
    } else if (hasCardName(name)) {
      if (stat(path.c_str(), &status) != 0) return errorFromErrno(errno, "read", path);
      if (S_ISREG(status.st_mode)) {
        files.push_back({path, static_cast<std::uint64_t>(status.st_size)});
      }
    }
  }
  return {};
}

/// Turns a stream of UTF-16 into UTF-8.
class UTF16Stream {
 public:
  explicit UTF16Stream(bool littleEndian)
      : converter_(iconv_open("UTF-8", littleEndian ? "UTF-16LE" : "UTF-16BE"), iconv_close) {}

  /// What is not valid becomes U+FFFD.
  std::string convert(std::string_view piece) {
    pending_.append(piece);
    std::string converted(pending_.size() * 2 + 8, '\0');
    char* from = pending_.data();
    std::size_t left = pending_.size();
    char* to = converted.data();
    std::size_t room = converted.size();
    while (left > 1 &&
           iconv(converter_.get(), &from, &left, &to, &room) == static_cast<std::size_t>(-1)) {
      if (errno == EINVAL) break;  // The rest of a pair comes with the next piece.
      constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
      to = std::copy(kReplacement.begin(), kReplacement.end(), to);
      room -= kReplacement.size();
      from += 2;
      left -= 2;
    }
    converted.resize(converted.size() - room);
    pending_.erase(0, pending_.size() - left);
    return converted;
  }

 private:
  std::unique_ptr<void, int (*)(iconv_t)> converter_;
  std::string pending_;
};

}  // namespace

Result<std::vector<VCardFile>> findVCardFiles(const std::vector<std::string>& paths) {
  std::vector<VCardFile> files;
  for (const std::string& path : paths) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return errorFromErrno(errno, "read", path);
    if (S_ISDIR(status.st_mode)) {
      if (auto added = addFolder(path, files); !added) return added.error();
    } else if (S_ISREG(status.st_mode)) {
      files.push_back({path, static_cast<std::uint64_t>(status.st_size)});
    } else {
      return reason(translated("{1} is neither a file nor a folder", path));
    }
  }
  return files;
}

Result<void> readVCardFile(const std::string& path, const std::function<void(VCardText)>& deliver,
                           const std::function<void(std::size_t)>& progress) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.valid()) return errorFromErrno(errno, "read", path);
  VCardSplitter splitter(deliver);
  std::optional<UTF16Stream> utf16;
  static thread_local std::array<char, kPiece> buffer;
  for (bool first = true;; first = false) {
    const ssize_t count = read(file.number(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errorFromErrno(errno, "read", path);
    if (count == 0) break;
    std::string_view piece(buffer.data(), static_cast<std::size_t>(count));
    progress(piece.size());
    if (first && (piece.starts_with("\xFF\xFE") || piece.starts_with("\xFE\xFF"))) {
      utf16.emplace(piece.front() == '\xFF');
      piece.remove_prefix(2);
    }
    utf16 ? splitter.feed(utf16->convert(piece)) : splitter.feed(piece);
  }
  splitter.finish();
  return {};
}

}  // namespace annivo
