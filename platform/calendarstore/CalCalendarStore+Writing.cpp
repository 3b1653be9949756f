// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "codecs/icalendar/EventFile.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"
#include "platform/foundation/OtherThread.h"

namespace annivo {
namespace {

Error failure(Error::Kind kind, int code, std::string description, std::string reason) {
  return {.kind = kind,
          .domain = "CalCalendarStoreErrorDomain",
          .code = code,
          .description = std::move(description),
          .failureReason = std::move(reason)};
}

constexpr int kNoCalendar = 1010;
constexpr int kNotEditable = 1025;
constexpr int kTooLarge = 1026;

Result<void> checkCalendar(const CalCalendar* calendar) {
  if (!calendar || calendar->path().empty()) {
    return failure(Error::Kind::failed, kNoCalendar, "The event cannot be saved.",
                   calendar ? "The calendar \"" + calendar->title() + "\" does not exist."
                            : "It has no calendar.");
  }
  if (!calendar->isEditable()) {
    return failure(Error::Kind::refused, kNotEditable,
                   "The events of " + calendar->path() + " cannot be changed.",
                   "The calendar \"" + calendar->title() + "\" is not editable.");
  }
  return {};
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }
std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// Whether this is the name of a file that we made: an upper-case UUID.
bool isOurName(std::string_view name) {
  constexpr std::string_view form = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
  if (!name.ends_with(names::kEventSuffix)) return false;
  name.remove_suffix(std::string_view(names::kEventSuffix).size());
  if (name.size() != form.size()) return false;
  return std::equal(name.begin(), name.end(), form.begin(), [](char c, char expected) {
    return expected == 'X' ? (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') : c == expected;
  });
}

Error changedMeanwhile(const std::string& path) {
  return failure(Error::Kind::malformed, 0, "The event file " + path + " cannot be changed.",
                 "Another program has replaced, damaged or removed it.");
}

}  // namespace

Result<void> CalCalendarStore::saveEvent(CalEvent& event, CalSpan) {
  if (auto usable = checkCalendar(event.calendar_.get()); !usable) return usable;
  if (event.path_.empty()) {
    const std::string path =
        eventsFolder(*event.calendar_) + "/" + event.uid() + names::kEventSuffix;
    const std::string text = EventFile::newText(event, clock_.now(), zone_);
    if (auto written = writeEventFile(*event.calendar_, path, text); !written) return written;
    event.path_ = path;
  } else if (event.changes_ != 0) {
    if (auto saved = saveChanges(event); !saved) return saved;
  }
  if (index_->builtIdentities && event.ledgerIdentity() && (event.changes_ & CalEvent::kIdentity)) {
    index_->byIdentity.emplace(hashOf(*event.ledgerIdentity()),
                               Index::Place{event.calendar_, nameOf(event.path_)});
  }
  event.changes_ = 0;
  event.keptAlarms_ = event.alarms_.size();
  event.removedAlarms_.clear();
  event.replacesAlarms_ = false;
  return {};
}

/// Edits the file as it is now, whatever it was when the event was read.
Result<void> CalCalendarStore::saveChanges(CalEvent& event) {
  const auto contents = contentsOfEventFile(event.path_);
  if (!contents) return changedMeanwhile(event.path_);
  const auto text = EventFile::edited(*contents, event, clock_.now(), zone_);
  if (!text) return changedMeanwhile(event.path_);
  const std::string folder = eventsFolder(*event.calendar_);
  const std::string oldPath = event.path_;
  if (folderOf(oldPath) == folder) return writeEventFile(*event.calendar_, oldPath, *text);

  // Into another calendar: written there first, so that no moment is without it.
  const bool alone = EventFile::without(*text, event.uid()) == "";
  const std::string path = folder + "/" + event.uid() + names::kEventSuffix;
  const std::string moved = alone ? *text : EventFile::newText(event, clock_.now(), zone_);
  if (auto written = writeEventFile(*event.calendar_, path, moved); !written) return written;
  event.path_ = path;
  return removeFromFile(oldPath, event.uid());
}

Result<void> CalCalendarStore::writeEventFile(const CalCalendar& calendar, const std::string& path,
                                              std::string_view text) {
  if (text.size() > EventFile::kLimit) {  // It would not be found again.
    return failure(Error::Kind::refused, kTooLarge, "The event file " + path + " is not written.",
                   "It would be larger than " + std::to_string(EventFile::kLimit) + " bytes.");
  }
  wrote_ = true;
  ahead_.drop(nameOf(path));
  syncBehind();
  const FolderWatch::OwnChange own(watch_, path);
  auto written = files_.writeAtomically(path, text);
  if (written || written.error().kind != Error::Kind::absent) return written;
  if (auto made = files_.createDirectory(eventsFolder(calendar)); !made) return made;
  return files_.writeAtomically(path, text);
}

Result<void> CalCalendarStore::removeEvent(CalEvent& event, CalSpan) {
  if (event.path_.empty()) return {};
  if (auto usable = checkCalendar(event.calendar_.get()); !usable) return usable;
  auto removed = removeFromFile(event.path_, event.uid());
  if (removed) event.path_.clear();
  return removed;
}

Result<void> CalCalendarStore::removeFromFile(const std::string& path, const std::string& uid) {
  const auto attributes = files_.attributesAtPath(path, Links::doNotFollow);
  if (!attributes && attributes.error().kind == Error::Kind::absent) return {};
  const auto contents = contentsOfEventFile(path);
  const auto rest = contents ? EventFile::without(*contents, uid) : std::nullopt;
  if (!rest) return changedMeanwhile(path);
  wrote_ = true;
  ahead_.drop(nameOf(path));
  const FolderWatch::OwnChange own(watch_, path);
  return rest->empty() ? files_.removeFile(path) : files_.writeAtomically(path, *rest);
}

void CalCalendarStore::watch(const CalCalendar& calendar) {
  if (!calendar.path().empty()) watch_.begin(eventsFolder(calendar));
}

Result<void> CalCalendarStore::synchronize() {
  if (!wrote_) return {};
  finishSyncingBehind();
  auto done = std::exchange(syncedBehind_, {});
  if (done) done = files_.synchronize(root_);
  if (done) wrote_ = false;
  return done;
}

/// Counts a written file. After very many the disk begins to take them, on another thread, so that
/// the end of the run need not wait for all.
void CalCalendarStore::syncBehind() {
  constexpr std::size_t kMany = 8192;
  if (++writtenFiles_ % kMany != 0 || !files_.supportsOtherThreads()) return;
  finishSyncingBehind();
  syncingBehind_ =
      onAnotherThread([&files = files_, root = root_] { return files.synchronize(root); });
}

/// The system tells of a failure once, so it is kept.
void CalCalendarStore::finishSyncingBehind() {
  if (!syncingBehind_.valid()) return;
  if (auto done = syncingBehind_.get(); !done) syncedBehind_ = std::move(done);
}

void CalCalendarStore::removeRemains(Remains remains) {
  const auto remove = [&](const std::string& path) {
    wrote_ = true;
    const FolderWatch::OwnChange own(watch_, path);
    if (auto removed = files_.removeFile(path); !removed) log_.write(removed.error().text());
  };
  for (const auto& calendar : calendars()) {
    if (!calendar->isEditable()) continue;
    const std::string folder = eventsFolder(*calendar) + "/";
    forEachFile(calendar, [&](const std::string& name) {
      if (name.starts_with('.') && name.ends_with(std::string(names::kEventSuffix) + ".tmp"))
        return remove(folder + name);
      if (remains != Remains::damagedEvents || !isOurName(name)) return;
      const auto contents = contentsOfEventFile(folder + name);
      if (contents && EventFile::isBrokenOff(*contents)) {
        log_.write("Removed, as it was written in part only: " + folder + name);
        remove(folder + name);
      }
    });
  }
}

}  // namespace annivo
