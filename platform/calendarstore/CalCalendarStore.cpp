// SPDX-License-Identifier: MIT
#include "platform/calendarstore/CalCalendarStore.h"

#include <utility>

#include "base/UUID.h"
#include "codecs/plist/PropertyList.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"

namespace annivo {
namespace {

constexpr std::string_view kSuffix = names::kCalendarSuffix;
/// The temporary name under which a calendar's folder is built. An interrupted run may leave it
/// behind; the next one reuses it.
constexpr const char* kUnfinished = "/.annivo-calendar.tmp";
constexpr std::size_t kInfoLimit = std::size_t{1024} * 1024;
/// The largest event file that is read ahead, in bytes. Hardly any is larger, and hundreds of
/// larger ones would take too much memory.
constexpr std::size_t kOrdinaryEvent = std::size_t{8} * 1024;
/// How deep calendars are looked for. Account folders hold them one level down; some programs nest
/// deeper.
constexpr int kDeepest = 8;

/// The properties of a new calendar's Info.plist.
std::string infoFor(const CalCalendar& calendar, std::size_t order) {
  return xmlPropertyList(PropertyList::Dictionary{{"Checked", 1},
                                                  {"Color", "#E6794CFF"},
                                                  {"Editable", true},
                                                  {"Enabled", true},
                                                  {"Key", calendar.uid()},
                                                  {"Order", static_cast<std::int64_t>(order)},
                                                  {"Title", calendar.title()},
                                                  {"Type", "Local"}});
}

bool isFilledByOthers(const PropertyList& info) {
  for (const char* type : {"Subscription", "Birthday", "Birthdays"}) {
    if (info["Type"].isEqualToString(type)) return true;
  }
  return false;
}

std::string folderNameFor(const std::string& uid) { return "/" + uid + std::string(kSuffix); }

}  // namespace

std::shared_ptr<CalCalendar> CalCalendar::calendar() {
  auto calendar = std::make_shared<CalCalendar>();
  calendar->uid_ = freshUUID();
  return calendar;
}

std::shared_ptr<CalCalendar> CalCalendar::unreadable(std::string uid, std::string title) {
  auto calendar = std::make_shared<CalCalendar>();
  calendar->uid_ = std::move(uid);
  calendar->title_ = std::move(title);
  calendar->editable_ = false;
  return calendar;
}

CalCalendarStore::CalCalendarStore(NSFileManager& files, const Clock& clock, Log& log,
                                   NSTimeZone zone, std::string home)
    : files_(files),
      clock_(clock),
      log_(log),
      zone_(std::move(zone)),
      home_(std::move(home)),
      root_(HomeFolders(home_).calendars()),
      watch_(files),
      index_(std::make_unique<Index>()),
      ahead_(kOrdinaryEvent) {}

CalCalendarStore::~CalCalendarStore() = default;

CalCalendarStore::Folders& CalCalendarStore::folders() {
  if (!folders_) {
    folders_ = std::make_unique<Folders>();
    findCalendars(root_, 0);
    for (const auto& calendar : folders_->calendars) {
      if (calendarWithUID(calendar->uid()) != calendar) calendar->others_ = true;
    }
  }
  return *folders_;
}

const std::vector<std::shared_ptr<CalCalendar>>& CalCalendarStore::calendars() {
  return folders().calendars;
}

Result<std::shared_ptr<CalCalendar>> CalCalendarStore::findCalendar(const std::string& uid) {
  const auto absent = [] {
    return calendarError(Error::Kind::absent, 0, "The calendar does not exist.", "");
  };
  if (uid.empty()) return absent();
  if (const auto name = pathComponent(uid, "calendar identifier"); !name) {
    log_.write(name.error().text() + " \"" + uid + "\"");
    return absent();
  }
  std::shared_ptr<CalCalendar> found;
  const std::string folder = folderNameFor(uid);
  for (const auto& calendar : calendars()) {
    if (calendar->uid() != uid) continue;
    if (!found || calendar->path().ends_with(folder) || !found->path().ends_with(folder)) {
      found = calendar;
    }
  }
  // The one in the folder named after the UID may be what could not be read.
  const bool isCertain = found && (found->path().ends_with(folder) || !folders().unread);
  if (isCertain) return found;
  if (folders().unread) return *folders().unread;
  return absent();
}

std::shared_ptr<CalCalendar> CalCalendarStore::calendarWithUID(const std::string& uid) {
  auto calendar = findCalendar(uid);
  return calendar ? *std::move(calendar) : nullptr;
}

void CalCalendarStore::noteUnread(Error error) {
  log_.write(error.text());
  error.kind = Error::Kind::unreadable;
  folders_->unread = std::move(error);
}

void CalCalendarStore::findCalendars(const std::string& folder, int depth) {
  const auto entries = files_.contentsOfDirectory(folder);
  if (!entries) {
    if (entries.error().kind != Error::Kind::absent) noteUnread(entries.error());
    return;
  }
  for (const DirectoryEntry& entry : *entries) {
    const std::string path = folder + "/" + entry.name;
    if (entry.name.starts_with('.')) continue;
    const bool isLink = entry.type == FileType::symbolicLink;
    if (!isLink && entry.type != FileType::directory) continue;
    if (entry.name.ends_with(kSuffix)) {
      addCalendarAt(path, entry.name, depth);
    } else if (!isLink && !entry.name.ends_with(names::kEvents) && depth < kDeepest) {
      findCalendars(path, depth + 1);
    }
  }
}

/// A calendar at the top level is one by its Info.plist; without, it is something unfinished.
/// Inside an account folder other programs may keep the description elsewhere: there the folder is
/// enough. A damaged Info.plist costs the calendar its title only, since its events still stand
/// there.
void CalCalendarStore::addCalendarAt(const std::string& path, const std::string& name, int depth) {
  const std::string file = path + '/' + names::kInfo;
  const auto contents = files_.contentsAtPath(file, kInfoLimit);
  if (!contents && contents.error().kind == Error::Kind::absent && depth == 0) return;
  auto calendar = std::make_shared<CalCalendar>();
  calendar->path_ = path;
  calendar->uid_ = name.substr(0, name.size() - kSuffix.size());
  calendar->title_ = calendar->uid_;
  if (!contents) {
    // Without it neither its UID is known for certain nor whether it may be written.
    if (contents.error().kind != Error::Kind::absent) return noteUnread(contents.error());
  } else if (const auto info = parsePropertyList(*contents, file); !info) {
    log_.write(info.error().text());
  } else {
    calendar->title_ = (*info)["Title"].stringOr(calendar->uid_);
    if (const std::string key = (*info)["Key"].stringOr(""); !key.empty()) calendar->uid_ = key;
    calendar->others_ = isFilledByOthers(*info);
    const bool mayBeEdited = (*info)["Editable"].isNil() || (*info)["Editable"].boolValue();
    calendar->editable_ = mayBeEdited && !calendar->others_;
  }
  const std::string events = eventsFolder(*calendar);
  if (!files_.isWritable(files_.fileExistsAtPath(events) ? events : path)) {
    calendar->editable_ = false;
  }
  if (!calendar->uid_.empty()) folders_->calendars.push_back(std::move(calendar));
}

Result<void> CalCalendarStore::saveCalendar(const std::shared_ptr<CalCalendar>& calendar) {
  if (!calendar->path_.empty()) return {};
  const std::string name = folderNameFor(calendar->uid_);
  if (const auto component = pathComponent(name.substr(1), "calendar identifier"); !component) {
    return component.error();
  }
  folders();
  const std::string path = root_ + name;
  if (auto made = makeCalendar(*calendar, path); !made) return made;
  wrote_ = true;
  calendar->path_ = path;
  folders_->calendars.push_back(calendar);
  return {};
}

Result<void> CalCalendarStore::makeCalendar(const CalCalendar& calendar, const std::string& path) {
  const std::string unfinished = root_ + kUnfinished;
  if (auto made = files_.createDirectoriesUnder(home_, unfinished); !made) return made;
  if (auto made = files_.createDirectory(unfinished + '/' + names::kEvents); !made) return made;
  const std::string info = infoFor(calendar, folders_->calendars.size() + 1);
  if (auto written = files_.writeDurably(unfinished + '/' + names::kInfo, info); !written) {
    return written;
  }
  return files_.rename(unfinished, path);
}

}  // namespace annivo
