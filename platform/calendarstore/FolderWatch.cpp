// SPDX-License-Identifier: MIT
#include "platform/calendarstore/FolderWatch.h"

#include <algorithm>

namespace annivo {

void FolderWatch::begin(const std::string& path) {
  const auto isIt = [&](const auto& folder) { return folder->path == path; };
  if (std::any_of(folders_.begin(), folders_.end(), isIt)) return;
  auto opened = files_.openFolder(path);
  const auto time = opened->modificationDate();
  folders_.push_back(std::make_unique<Folder>(Folder{path, std::move(opened), time}));
}

bool FolderWatch::sawOthers() {
  return std::any_of(folders_.begin(), folders_.end(), [&](const auto& folder) {
    // By its path: a whole folder may have been put in the place of the one held open.
    const auto now = files_.attributesAtPath(folder->path, Links::follow);
    return folder->changedByOthers ||
           (now ? std::optional(now->modificationDate) : std::nullopt) != folder->time;
  });
}

FolderWatch::OwnChange::OwnChange(FolderWatch& watch, std::string_view path) : folder_(nullptr) {
  const std::string_view of = path.substr(0, path.rfind('/'));
  for (const auto& folder : watch.folders_) {
    if (folder->path == of) folder_ = folder.get();
  }
  if (folder_ && folder_->opened->modificationDate() != folder_->time) {
    folder_->changedByOthers = true;
  }
}

FolderWatch::OwnChange::~OwnChange() {
  if (folder_) folder_->time = folder_->opened->modificationDate();
}

}  // namespace annivo
