// SPDX-License-Identifier: MIT
#include "platform/calendarstore/CalCalendarStore.h"

#include <utility>

#include "base/UUID.h"
#include "codecs/plist/PropertyList.h"
#include "platform/calendarstore/CalCalendarStoreParts.h"

namespace annivo {
namespace {

constexpr std::string_view kSuffix = names::kCalendarSuffix;
/// Under which a calendar's folder is made. An interrupted run may leave it; the next reuses it.
constexpr const char* kUnfinished = "/.annivo-calendar.tmp";
constexpr std::size_t kInfoLimit = std::size_t{1024} * 1024;
/// Hardly any event file is larger; those that are need not lie in memory by the hundred.
constexpr std::size_t kOrdinaryEvent = std::size_t{8} * 1024;
/// Account folders hold calendars one level down; deeper ones are looked at, endless ones are not.
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

bool mayBeEdited(const PropertyList& info) {
  for (const char* type : {"Subscription", "Birthday", "Birthdays"}) {
    if (info["Type"].isEqualToString(type)) return false;
  }
  return info["Editable"].isNil() || info["Editable"].boolValue();
}

}  // namespace

std::shared_ptr<CalCalendar> CalCalendar::calendar() {
  auto calendar = std::make_shared<CalCalendar>();
  calendar->uid_ = freshUUID();
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
  }
  return *folders_;
}

const std::vector<std::shared_ptr<CalCalendar>>& CalCalendarStore::calendars() {
  return folders().calendars;
}

std::shared_ptr<CalCalendar> CalCalendarStore::calendarWithUID(const std::string& uid) {
  if (uid.empty()) return nullptr;
  if (const auto name = pathComponent(uid, "calendar identifier"); !name) {
    log_.write(name.error().text() + " \"" + uid + "\"");
    return nullptr;
  }
  const auto& all = calendars();
  for (auto calendar = all.rbegin(); calendar != all.rend(); ++calendar) {
    if ((*calendar)->uid() == uid) return *calendar;
  }
  return nullptr;
}

void CalCalendarStore::findCalendars(const std::string& folder, int depth) {
  const auto entries = files_.contentsOfDirectory(folder);
  if (!entries) {
    if (entries.error().kind != Error::Kind::absent) log_.write(entries.error().text());
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
    if (contents.error().kind != Error::Kind::absent) log_.write(contents.error().text());
  } else if (const auto info = parsePropertyList(*contents, file); !info) {
    log_.write(info.error().text());
  } else {
    calendar->title_ = (*info)["Title"].stringOr(calendar->uid_);
    if (const std::string key = (*info)["Key"].stringOr(""); !key.empty()) calendar->uid_ = key;
    calendar->editable_ = mayBeEdited(*info);
  }
  const std::string events = eventsFolder(*calendar);
  if (!files_.isWritable(files_.fileExistsAtPath(events) ? events : path)) {
    calendar->editable_ = false;
  }
  if (!calendar->uid_.empty()) folders_->calendars.push_back(std::move(calendar));
}

Result<void> CalCalendarStore::saveCalendar(const std::shared_ptr<CalCalendar>& calendar) {
  if (!calendar->path_.empty()) return {};
  const std::string name = calendar->uid_ + std::string(kSuffix);
  if (const auto component = pathComponent(name, "calendar identifier"); !component) {
    return component.error();
  }
  folders();
  const std::string path = root_ + "/" + name;
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
