// SPDX-License-Identifier: MIT
#include "platform/foundation/ReadAhead.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/OtherThread.h"

namespace annivo {

void ReadAhead::Batch::read(std::size_t limit) {
  std::string memory;
  for (File& file : files) {
    auto content = folder->contentsOfFileItself(file.name, limit, std::move(memory));
    file.isThere = content.ok();
    memory = file.isThere ? *std::move(content) : std::string();
    file.begin = contents.size();
    file.length = memory.size();
    contents += memory;
  }
}

std::optional<std::string_view> ReadAhead::Batch::claim(std::string_view name) {
  const auto isIt = [&](const File& file) { return file.name == name; };
  const auto likely = files.begin() + static_cast<std::ptrdiff_t>(next);
  auto found = std::find_if(likely, files.end(), isIt);
  if (found == files.end()) found = std::find_if(files.begin(), files.end(), isIt);
  if (found == files.end()) return std::nullopt;
  next = static_cast<std::size_t>(found - files.begin()) + 1;
  if (!std::exchange(found->isThere, false)) return std::nullopt;
  return std::string_view(contents).substr(found->begin, found->length);
}

void ReadAhead::prefetch(std::shared_ptr<const ReadableFolder> folder,
                         std::vector<std::string> names) {
  prefetching_ = {};
  dropped_.clear();
  if (names.empty()) return;
  Batch batch{.folder = std::move(folder), .files = {}, .contents = std::exchange(spare_, {})};
  batch.contents.clear();
  batch.files.reserve(names.size());
  for (std::string& name : names) batch.files.push_back({.name = std::move(name)});
  prefetching_ = onAnotherThread([limit = limit_, batch = std::move(batch)]() mutable {
    batch.read(limit);
    return std::move(batch);
  });
}

void ReadAhead::collect() {
  spare_ = std::move(collected_.contents);
  collected_ = prefetching_.valid() ? prefetching_.get() : Batch{};
  for (const std::string& name : std::exchange(dropped_, {})) (void)collected_.claim(name);
  collected_.next = 0;
}

std::optional<std::string_view> ReadAhead::claim(const ReadableFolder& folder,
                                                 std::string_view name) {
  return collected_.folder.get() == &folder ? collected_.claim(name) : std::nullopt;
}

void ReadAhead::drop(std::string_view name) {
  if (prefetching_.valid()) dropped_.emplace_back(name);
  (void)collected_.claim(name);
}

}  // namespace annivo
