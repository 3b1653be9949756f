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

std::optional<std::string_view> ReadAhead::Batch::take(std::string_view name) {
  const auto isIt = [&](const File& file) { return file.name == name; };
  const auto likely = files.begin() + static_cast<std::ptrdiff_t>(next);
  auto found = std::find_if(likely, files.end(), isIt);
  if (found == files.end()) found = std::find_if(files.begin(), files.end(), isIt);
  if (found == files.end()) return std::nullopt;
  next = static_cast<std::size_t>(found - files.begin()) + 1;
  if (!std::exchange(found->isThere, false)) return std::nullopt;
  return std::string_view(contents).substr(found->begin, found->length);
}

void ReadAhead::begin(const ReadableFolder& folder, std::vector<std::string> names) {
  Batch batch{.folder = &folder, .files = {}, .contents = std::move(ready_.contents)};
  batch.contents.clear();
  ready_ = coming_.valid() ? coming_.get() : Batch{};
  for (const std::string& name : std::exchange(changed_, {})) (void)ready_.take(name);
  ready_.next = 0;
  if (names.empty()) return;
  batch.files.reserve(names.size());
  for (std::string& name : names) batch.files.push_back({.name = std::move(name)});
  coming_ = onAnotherThread([limit = limit_, batch = std::move(batch)]() mutable {
    batch.read(limit);
    return std::move(batch);
  });
}

std::optional<std::string_view> ReadAhead::take(const ReadableFolder& folder,
                                                std::string_view name) {
  return ready_.folder == &folder ? ready_.take(name) : std::nullopt;
}

void ReadAhead::forget(std::string_view name) {
  if (coming_.valid()) changed_.emplace_back(name);
  (void)ready_.take(name);
}

}  // namespace annivo
