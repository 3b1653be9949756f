// SPDX-License-Identifier: MIT
#include "tests/support/SampleHome.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "codecs/plist/PropertyList.h"

namespace annivo {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

constexpr std::size_t kMetadataFiles = 50;  // of a store; not every card has one

PropertyList templateOf(std::initializer_list<const char*> elements) {
  return Array(elements.begin(), elements.end());
}

PropertyList alarmRow(const char* type, const char* days, Date time, bool birth, bool anni) {
  return Dictionary{{"type", PropertyList(type)},
                    {"days", PropertyList(days)},
                    {"time", PropertyList(time)},
                    {"birth", PropertyList(birth)},
                    {"anni", PropertyList(anni)}};
}

PropertyList preferences(const std::string& home, const SampleHomeOptions& options) {
  const CivilTime today = options.zone.civil(options.now);
  const auto at = [&](int hour, int minute) {
    return options.zone.date({today.year, today.month, today.day, hour, minute, 0, {}});
  };
  const Date yesterday = options.now - std::chrono::hours{24};
  return Dictionary{
      {"aneeCalTitle", PropertyList("Anniversaries")},
      {"aneeCalUID", PropertyList(kSampleAnniversaryCalendar)},
      {"alarmFilePath", PropertyList(home)},
      {"alarmTable", PropertyList(Array{alarmRow("Message", "2", at(8, 0), true, true),
                                        alarmRow("Email", "7", at(18, 30), true, false),
                                        alarmRow("Sound", "0", at(7, 0), false, true),
                                        alarmRow("Open File", "1", at(9, 15), false, true),
                                        alarmRow("None", "0", at(8, 0), false, false)})},
      {"appRunning", PropertyList(true)},
      {"birthCalTitle", PropertyList("Birthdays")},
      {"birthCalUID", PropertyList(kSampleBirthdayCalendar)},
      {"lastLaunched", PropertyList(yesterday)},
      {"selectedGroup", PropertyList(" ")},
      {"selectedGroupUID", PropertyList("")},
      {"selectedSystemSound", PropertyList("Glass")},
      {"setEmail", PropertyList("robin@ashford.example")},
      {"SUEnableAutomaticChecks", PropertyList(false)},
      {"SULastCheckTime", PropertyList(yesterday)},
      {"SUScheduledCheckInterval", PropertyList(604800)},
      {"theLabels", PropertyList(Array{})},
      {"titleAnniversaries",
       templateOf({"First name", "Last name", ":", "ordinal age", "type", "(", "year", ")"})},
      {"titleBirthdays", templateOf({"First name", "Last name", ":", "ordinal age", "type"})},
  };
}

constexpr const char* kOwnEvent =
    "BEGIN:VCALENDAR\r\n"
    "VERSION:2.0\r\n"
    "PRODID:-//Sample//Calendar 1.0//EN\r\n"
    "CALSCALE:GREGORIAN\r\n"
    "BEGIN:VEVENT\r\n"
    "SEQUENCE:3\r\n"
    "TRANSP:OPAQUE\r\n"
    "UID:0D1C7A52-93E1-4B0E-A6D7-4F2B8C1E9A60\r\n"
    "DTSTART:20261203T090000Z\r\n"
    "DTSTAMP:20261101T120000Z\r\n"
    "SUMMARY:Dentist\\, second visit\r\n"
    "CREATED:20261101T115900Z\r\n"
    "DTEND:20261203T093000Z\r\n"
    "END:VEVENT\r\n"
    "END:VCALENDAR\r\n";

/// Puts files under one home; after the first failure, which it keeps, it does nothing.
class HomeMaker {
 public:
  HomeMaker(NSFileManager& files, std::string home, const SampleHomeOptions& options)
      : files_(files), home_(std::move(home)), options_(options) {
    keep(files_.createDirectory(home_));
  }

  void folder(const std::string& path) {
    if (!error_) keep(files_.createDirectoriesUnder(home_, home_ + "/" + path));
  }
  void file(const std::string& path, const std::string& bytes) {
    folder(path.substr(0, path.rfind('/')));
    if (!error_) keep(files_.writeAtomically(home_ + "/" + path, bytes));
  }
  void store(const std::string& folderPath, const SampleStore& store) {
    const std::string metadata = folderPath + "/Metadata";
    folder(metadata);
    const std::string path = home_ + "/" + folderPath + "/AddressBook-v22.abcddb";
    if (!error_ && files_.fileExistsAtPath(path)) error_ = errorFromErrno(EEXIST, "create", path);
    if (!error_) {
      keep(AddressBookStoreWriter::write(files_, path, options_.generation, store.people,
                                         store.groups, options_.now));
    }
    for (std::size_t i = 0; i < std::min(store.people.size(), kMetadataFiles); ++i) {
      const StoredPerson& person = store.people[i];
      file(metadata + "/" + person.uniqueId + ".abcdp",
           binaryPropertyList(Dictionary{{"First", PropertyList(person.firstName.value_or(""))},
                                         {"Last", PropertyList(person.lastName.value_or(""))},
                                         {"UID", PropertyList(person.uniqueId)}}));
    }
    age(metadata);
  }
  void calendar(const std::string& folderPath, const char* uid, const char* title, const char* type,
                int order) {
    const std::string path = folderPath + "/" + uid + ".calendar";
    file(path + "/Info.plist", xmlPropertyList(Dictionary{{"AlarmsDisabled", PropertyList(false)},
                                                          {"Checked", PropertyList(1)},
                                                          {"Color", PropertyList("#492BA1FF")},
                                                          {"Editable", PropertyList(true)},
                                                          {"Enabled", PropertyList(true)},
                                                          {"Key", PropertyList(uid)},
                                                          {"Order", PropertyList(order)},
                                                          {"Title", PropertyList(title)},
                                                          {"Type", PropertyList(type)}}));
    folder(path + "/Events");
  }
  /// Gives a folder the time at which the home was last touched.
  void age(const std::string& path) {
    if (error_) return;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(options_.now);
    const timespec time{seconds.time_since_epoch().count(), 0};
    const timespec times[2] = {time, time};
    const std::string full = home_ + "/" + path;
    if (::utimensat(AT_FDCWD, full.c_str(), times, 0) != 0) {
      error_ = errorFromErrno(errno, "set the time of", full);
    }
  }
  Result<void> outcome() const { return error_ ? Result<void>(*error_) : Result<void>(); }

 private:
  void keep(const Result<void>& result) {
    if (!result && !error_) error_ = result.error();
  }

  NSFileManager& files_;
  std::string home_;
  const SampleHomeOptions& options_;
  std::optional<Error> error_;
};

void makeAddressBook(HomeMaker& home, const SampleHomeOptions& options) {
  const std::string folder = "Library/Application Support/AddressBook";
  if (options.people > 0) {
    home.store(folder, generatedStore(options.people, options.seed));
    return;
  }
  const auto stores = sampleStores(options.generation);
  home.store(folder, stores[0]);
  home.store(folder + "/Sources/17C0A4F2-6E3B-4D19-8A75-90B2D6E1F3C8", stores[1]);
  home.store(folder + "/Sources/D2F81B65-04CE-4A7F-B3D8-6C5E9A0F7124", stores[2]);
}

void makeCalendars(HomeMaker& home) {
  const std::string folder = "Library/Calendars";
  const std::string account = folder + "/" + kSampleAccount + ".caldav";
  home.calendar(folder, kSampleBirthdayCalendar, "Birthdays", "Local", 1);
  home.file(account + "/Info.plist",
            xmlPropertyList(Dictionary{{"Enabled", PropertyList(true)},
                                       {"Key", PropertyList(kSampleAccount)},
                                       {"Order", PropertyList(2)},
                                       {"Title", PropertyList("Work")},
                                       {"Type", PropertyList("CalDAV")}}));
  home.calendar(account, kSampleAnniversaryCalendar, "Anniversaries", "CalDAV", 3);
  const std::string events = folder + "/" + kSampleBirthdayCalendar + ".calendar/Events";
  home.file(events + "/0D1C7A52-93E1-4B0E-A6D7-4F2B8C1E9A60.ics", kOwnEvent);
  home.age(events);
  home.age(account + "/" + kSampleAnniversaryCalendar + ".calendar/Events");
}

}  // namespace

Result<void> makeSampleHome(NSFileManager& files, const std::string& folder,
                            const SampleHomeOptions& options) {
  HomeMaker home(files, folder, options);
  makeAddressBook(home, options);
  makeCalendars(home);
  const PropertyList values = preferences(folder, options);
  home.file("Library/Preferences/org.annivo.Annivo2.plist",
            options.xmlPreferences ? xmlPropertyList(values) : binaryPropertyList(values));
  return home.outcome();
}

}  // namespace annivo
