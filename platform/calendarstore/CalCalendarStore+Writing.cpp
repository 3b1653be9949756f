// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventUID.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"
#include "platform/foundation/OtherThread.h"

namespace annivo {
namespace {

constexpr std::string_view kTemporaryEnd = ".tmp";
constexpr int kNoCalendar = 1010;
constexpr int kNotEditable = 1025;
constexpr int kTooLarge = 1026;

Result<void> checkCalendar(const CalCalendar* calendar) {
  if (!calendar || calendar->path().empty()) {
    return calendarError(Error::Kind::failed, kNoCalendar, "The event cannot be saved.",
                         calendar ? "The calendar \"" + calendar->title() + "\" does not exist."
                                  : "It has no calendar.");
  }
  if (!calendar->isEditable()) {
    return calendarError(Error::Kind::refused, kNotEditable,
                         "The events of " + calendar->path() + " cannot be changed.",
                         "The calendar \"" + calendar->title() + "\" is not editable.");
  }
  return {};
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }
std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

Error changedMeanwhile(const std::string& path) {
  return calendarError(Error::Kind::failed, 0, "The event file " + path + " cannot be changed.",
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
  event.changes_ = 0;
  event.keptAlarms_ = event.alarms_.size();
  event.removedAlarms_.clear();
  event.replacesAlarms_ = false;
  return {};
}

/// Edits the file as it is now, whatever it was when the event was read.
Result<void> CalCalendarStore::saveChanges(CalEvent& event) {
  const auto contents = files_.contentsOfFileItself(event.path_, EventFile::kLimit);
  if (!contents) return contents.error();
  const auto text = EventFile::edited(*contents, event, clock_.now(), zone_);
  if (!text) return changedMeanwhile(event.path_);
  const std::string folder = eventsFolder(*event.calendar_);
  const std::string oldPath = event.path_;
  if (folderOf(oldPath) == folder) return writeEventFile(*event.calendar_, oldPath, *text);

  // Moving to another calendar: written there first, so that the event exists at every moment.
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
    return calendarError(
        Error::Kind::refused, kTooLarge, "The event file " + path + " is not written.",
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
  const auto contents = files_.contentsOfFileItself(path, EventFile::kLimit);
  if (!contents && contents.error().kind == Error::Kind::absent) return {};
  if (!contents) return contents.error();
  const auto rest = EventFile::without(*contents, uid);
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

/// Counts a written file. After many of them another thread starts syncing, so that the end of the
/// run does not wait for all.
void CalCalendarStore::syncBehind() {
  constexpr std::size_t kMany = 8192;
  if (++writtenFiles_ % kMany != 0 || !files_.supportsOtherThreads()) return;
  finishSyncingBehind();
  syncingBehind_ =
      onAnotherThread([&files = files_, root = root_] { return files.synchronize(root); });
}

/// The system reports a failure once, so it is remembered here.
void CalCalendarStore::finishSyncingBehind() {
  if (!syncingBehind_.valid()) return;
  if (auto done = syncingBehind_.get(); !done) syncedBehind_ = std::move(done);
}

Result<void> CalCalendarStore::setEventAside(const std::string& uid,
                                             const std::string& calendarUID) {
  const auto calendar = findCalendar(calendarUID);
  if (!calendar) return calendar.error();
  if (auto usable = checkCalendar(calendar->get()); !usable) return usable;
  const std::string path = eventsFolder(**calendar) + "/" + uid + std::string(kEventSuffix);
  const FolderWatch::OwnChange own(watch_, path);
  const auto aside = files_.setAside(path, clock_.now());
  if (!aside) return aside.error();
  wrote_ = true;
  log_.write(path + ": the damaged file was set aside as " + *aside);
  return {};
}

void CalCalendarStore::removeRemains() {
  for (const Calendar& calendar : calendars()) {
    if (!calendar->isEditable() || calendar->isOthers()) continue;
    const std::string folder = eventsFolder(*calendar);
    const auto entries = files_.contentsOfDirectory(folder);
    if (!entries) continue;  // Told by who looks for events.
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = folder + "/" + entry.name;
      if (entry.type != FileType::regular || !isRemains(path)) continue;
      log_.write("Removed, as it was written in part only: " + path);
      wrote_ = true;
      const FolderWatch::OwnChange own(watch_, path);
      if (auto removed = files_.removeFile(path); !removed) log_.write(removed.error().text());
    }
  }
}

/// A temporary file of ours, or an event file of ours of which a part is missing.
bool CalCalendarStore::isRemains(const std::string& path) const {
  const std::string name = nameOf(path);
  const bool isTemporary = name.starts_with('.') && name.ends_with(kTemporaryEnd);
  std::string_view stem = name;
  if (isTemporary) {
    stem.remove_prefix(1);
    stem.remove_suffix(kTemporaryEnd.size());
  }
  if (stem.starts_with('.') || !stem.ends_with(kEventSuffix)) return false;
  stem.remove_suffix(kEventSuffix.size());
  const bool isNamedByUs = isOurEventUID(stem);
  if (isTemporary && isNamedByUs) return true;
  const auto contents = files_.contentsOfFileItself(path, EventFile::kLimit);
  if (!contents) return false;
  if (isNamedByUs && EventFile::isHardlyBegun(*contents)) return true;
  return EventFile::isOurs(*contents) && (isTemporary || EventFile::isBrokenOff(*contents));
}

}  // namespace annivo
