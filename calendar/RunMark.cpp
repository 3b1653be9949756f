// SPDX-License-Identifier: MIT
#include "calendar/RunMark.h"

#include <algorithm>

namespace annivo {

namespace {
std::string pathIn(const std::string& folder) {
  return folder + '/' + names::kLedger + ".unfinished";
}
}  // namespace

RunMark::RunMark(Platform& platform, std::string folder, const std::string& otherFolder)
    : platform_(platform),
      folder_(std::move(folder)),
      path_(pathIn(folder_)),
      otherPath_(pathIn(otherFolder)) {
  const NSFileManager& files = platform_.fileManager();
  isSet_ = files.attributesAtPath(path_, Links::doNotFollow).ok();
  const bool isInOther = files.attributesAtPath(otherPath_, Links::doNotFollow).ok();
  if (!isInOther || otherPath_ == path_) otherPath_.clear();
  if (isSet_) read();
  wasFound_ = isSet_ || isInOther;
  if (isSet_ || isSettled_) removeTemporaries();
}

void RunMark::read() {
  const auto bytes = platform_.fileManager().contentsAtPath(path_);
  const auto mark = bytes ? parsePropertyList(*bytes, path_) : bytes.error();
  if (!mark) return;  // What it says is lost, that it is there is what counts.
  isSettled_ = (*mark)["settled"].isTheTrueObject();
  isSet_ = !isSettled_;
  if (const auto* calendars = (*mark)["calendars"].array()) {
    for (const PropertyList& calendar : *calendars) {
      calendars_.push_back({calendar["uid"].stringOr(""), calendar["key"].stringOr("")});
    }
  }
  if (const auto* locked = (*mark)["locked"].array()) {
    for (const PropertyList& uid : *locked) locked_.push_back(uid.stringOr(""));
  }
}

bool RunMark::beginChanges(std::optional<Calendar> made) {
  if (couldNotBeSet_) return false;
  if (isSet_ && !made) return true;
  if (made) calendars_.push_back(*std::move(made));
  const auto written = write(State::unfinished);
  if (!written) {
    couldNotBeSet_ = true;
    failed_ = true;
    platform_.application().presentError(written.error());
  }
  return written.ok();
}

void RunMark::noteFailure(const Error& error) {
  if (error.kind != Error::Kind::refused && error.kind != Error::Kind::malformed) noteFailure();
}

void RunMark::noteFailure() {
  failed_ = true;
  (void)beginChanges();  // Where it fails, couldNotBeSet tells.
}

void RunMark::addLockedCalendar(const std::string& uid) {
  if (std::find(locked_.begin(), locked_.end(), uid) != locked_.end()) return;
  locked_.push_back(uid);
  lockedChanged_ = true;
}

void RunMark::removeLockedCalendar(const std::string& uid) {
  if (std::erase(locked_, uid) != 0) lockedChanged_ = true;
}

void RunMark::endChanges() {
  const bool isOnDisk = isSet_ || isSettled_ || wasFound_;
  Result<void> done;
  if (failed_) {
    if (isSet_ && lockedChanged_) done = write(State::unfinished);
  } else if (!locked_.empty()) {
    calendars_.clear();
    if (!isSettled_ || lockedChanged_) done = write(State::settled);
  } else if (isOnDisk) {
    done = remove();
  }
  if (!done) platform_.log().write(done.error().text());
}

Result<void> RunMark::write(State state) {
  PropertyList::Array calendars;
  for (const Calendar& calendar : calendars_) {
    calendars.push_back(PropertyList::Dictionary{{"uid", calendar.uid}, {"key", calendar.key}});
  }
  PropertyList::Array locked(locked_.begin(), locked_.end());
  const PropertyList mark = PropertyList::Dictionary{{"calendars", std::move(calendars)},
                                                     {"locked", std::move(locked)},
                                                     {"settled", state == State::settled}};
  NSFileManager& files = platform_.fileManager();
  auto written = files.writeDurably(path_, xmlPropertyList(mark));
  if (!written && written.error().kind == Error::Kind::absent) {
    // The ledger's folder could not be made when the ledger was opened; without the mark nothing
    // would tell the next run.
    if (auto made = files.createDirectory(folder_); !made) return made;
    written = files.writeDurably(path_, xmlPropertyList(mark));
  }
  if (!written) return written;
  const bool isNew = !isSet_ && !isSettled_;
  isSettled_ = state == State::settled;
  isSet_ = !isSettled_;
  lockedChanged_ = false;
  if (isNew) removeTemporaries();
  return written;
}

void RunMark::removeTemporaries() {
  NSFileManager& files = platform_.fileManager();
  const auto entries = files.contentsOfDirectory(folder_);
  if (!entries) return;
  const std::string prefix = std::string(".") + names::kLedger + '.';
  for (const DirectoryEntry& entry : *entries) {
    if (!entry.name.starts_with(prefix) || !entry.name.ends_with(".tmp")) continue;
    if (const auto removed = files.removeFile(folder_ + "/" + entry.name); !removed) {
      platform_.log().write(removed.error().text());
    }
  }
}

Result<void> RunMark::remove() {
  for (const std::string& path : {otherPath_, path_}) {
    if (path.empty()) continue;
    auto removed = platform_.fileManager().removeFile(path);
    if (!removed && removed.error().kind != Error::Kind::absent) return removed;
  }
  isSet_ = isSettled_ = false;
  calendars_.clear();
  return {};
}

}  // namespace annivo
