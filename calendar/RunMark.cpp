// SPDX-License-Identifier: MIT
#include "calendar/RunMark.h"

namespace annivo {

RunMark::RunMark(Platform& platform, std::string folder)
    : platform_(platform), path_(std::move(folder) + "/Annivo 2.unfinished") {
  const auto found = platform_.fileManager().attributesAtPath(path_, Links::doNotFollow);
  wasFound_ = isSet_ = found.ok();
  if (wasFound_) read();
}

void RunMark::read() {
  const auto bytes = platform_.fileManager().contentsAtPath(path_);
  const auto mark = bytes ? parsePropertyList(*bytes, path_) : bytes.error();
  if (!mark) return;  // What it says is lost, that it is there is what counts.
  const auto* calendars = (*mark)["calendars"].array();
  if (!calendars) return;
  for (const PropertyList& calendar : *calendars) {
    calendars_.push_back({calendar["uid"].stringOr(""), calendar["key"].stringOr("")});
  }
}

Result<void> RunMark::set() {
  if (isSet_) return {};
  return write();
}

Result<void> RunMark::setWithCalendar(Calendar calendar) {
  calendars_.push_back(std::move(calendar));
  return write();
}

Result<void> RunMark::write() {
  PropertyList::Array calendars;
  for (const Calendar& calendar : calendars_) {
    calendars.push_back(PropertyList::Dictionary{{"uid", calendar.uid}, {"key", calendar.key}});
  }
  const PropertyList mark = PropertyList::Dictionary{{"calendars", std::move(calendars)}};
  auto written = platform_.fileManager().writeDurably(path_, xmlPropertyList(mark));
  if (written) isSet_ = true;
  return written;
}

Result<void> RunMark::remove() {
  auto removed = platform_.fileManager().removeFile(path_);
  if (!removed && removed.error().kind != Error::Kind::absent) return removed;
  isSet_ = false;
  calendars_.clear();
  return {};
}

}  // namespace annivo
