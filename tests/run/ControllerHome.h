// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/addressbook/AddressBookStoreWriter.h"
#include "run/myController.h"
#include "tests/support/ForwardingFileManager.h"
#include "tests/support/TestHome.h"

namespace annivo {

/// The disk, with every look at it and every change of it recorded in order, and a hook that may
/// do something before each, or make it fail with the errno it returns. Operations are "examine",
/// "read", "list", "write" (durably or not), "open", "create", "remove", "rename", "synchronize".
class HookedFiles final : public ForwardingFileManager {
 public:
  using ForwardingFileManager::ForwardingFileManager;
  using Hook = std::function<int(const std::string& operation, const std::string& path)>;

  Hook hook;
  [[nodiscard]] const std::vector<std::string>& operations() const { return operations_; }
  void forget() { operations_.clear(); }
  /// The place of the first recorded operation of that name on a path that holds `part`, or -1.
  [[nodiscard]] std::ptrdiff_t firstOf(const std::string& operation,
                                       const std::string& part) const {
    const auto is = [&](const std::string& line) {
      return line.starts_with(operation + " ") && line.find(part) != std::string::npos;
    };
    const auto found = std::find_if(operations_.begin(), operations_.end(), is);
    return found == operations_.end() ? -1 : found - operations_.begin();
  }

  Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override {
    if (const int code = note("examine", path)) return errorFromErrno(code, "examine", path);
    return inner_.attributesAtPath(path, links);
  }
  Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
    if (const int code = note("read", path)) return errorFromErrno(code, "read", path);
    return inner_.contentsAtPath(path, limit);
  }
  Result<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) const override {
    if (const int code = note("list", path)) return errorFromErrno(code, "list", path);
    return inner_.contentsOfDirectory(path);
  }
  Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
    if (const int code = note("write", path)) return errorFromErrno(code, "write", path);
    return inner_.writeAtomically(path, bytes);
  }
  Result<void> writeDurably(const std::string& path, std::string_view bytes) override {
    if (const int code = note("write", path)) return errorFromErrno(code, "write", path);
    return inner_.writeDurably(path, bytes);
  }
  Result<std::unique_ptr<AppendingFile>> openForAppending(const std::string& path) override {
    if (const int code = note("open", path)) return errorFromErrno(code, "write", path);
    return inner_.openForAppending(path);
  }
  Result<void> createDirectory(const std::string& path) override {
    if (const int code = note("create", path)) return errorFromErrno(code, "create", path);
    return inner_.createDirectory(path);
  }
  Result<void> removeFile(const std::string& path) override {
    if (const int code = note("remove", path)) return errorFromErrno(code, "remove", path);
    return inner_.removeFile(path);
  }
  Result<void> rename(const std::string& from, const std::string& to) override {
    if (const int code = note("rename", from)) return errorFromErrno(code, "rename", from);
    return inner_.rename(from, to);
  }
  Result<void> synchronize(const std::string& path) override {
    if (const int code = note("synchronize", path))
      return errorFromErrno(code, "synchronize", path);
    return inner_.synchronize(path);
  }

 private:
  int note(const char* operation, const std::string& path) const {
    operations_.push_back(std::string(operation) + " " + path);
    return hook ? hook(operation, path) : 0;
  }
  mutable std::vector<std::string> operations_;
};

/// A person with a birthday; the identifiers come from the name.
inline StoredPerson born(const std::string& name, StoredDay day) {
  StoredPerson person;
  person.uniqueId = name + ":ABPerson";
  person.firstName = name;
  person.birthday = day;
  return person;
}
/// A person with an anniversary.
inline StoredPerson married(const std::string& name, StoredDay day) {
  StoredPerson person;
  person.uniqueId = name + ":ABPerson";
  person.firstName = name;
  person.dates = {{name + "-date", "_$!<Anniversary>!$_", day}};
  return person;
}

/// A temporary home in which the real controller runs over the disk: two calendars, B for birthdays
/// and A for anniversaries, titles of a first name, no update check. The clock stands, years after
/// whatever the disk itself dates.
class ControllerHome : public testing::Test {
 protected:
  static constexpr const char* kLedger = "Library/Application Support/Annivo 2/Annivo 2.xml";
  static constexpr const char* kMark = "Library/Application Support/Annivo 2/Annivo 2.unfinished";
  static constexpr const char* kMetadata = "Library/Application Support/AddressBook/Metadata";
  static constexpr const char* kStore =
      "Library/Application Support/AddressBook/AddressBook-v22.abcddb";

  explicit ControllerHome(TestHome::Options options = {.now = utc(2034, 5, 20, 18, 46)})
      : home(std::move(options)) {
    home.useFileManager(&files);
    makeCalendar("A", "Anniversaries");
    makeCalendar("B", "Birthdays");
    prefer({});
  }

  /// The parent's preferences, with these over them.
  void prefer(const PropertyList::Dictionary& values) const {
    PropertyList::Dictionary all{{"birthCalUID", "B"},
                                 {"aneeCalUID", "A"},
                                 {"birthCalTitle", "Birthdays"},
                                 {"aneeCalTitle", "Anniversaries"},
                                 {"titleBirthdays", PropertyList::Array{"First name"}},
                                 {"titleAnniversaries", PropertyList::Array{"First name"}},
                                 {"setEmail", "me@example.org"},
                                 {"alarmTable", PropertyList::Array{}},
                                 {"SUEnableAutomaticChecks", false}};
    for (const auto& [key, value] : values) all[key] = value;
    home.parentPreferences(all);
  }
  void makeCalendar(const std::string& uid, const std::string& title, bool editable = true) const {
    const std::string folder = "Library/Calendars/" + uid + ".calendar/";
    home.writeFile(folder + "Info.plist",
                   xmlPropertyList(PropertyList::Dictionary{
                       {"Key", uid}, {"Title", title}, {"Type", "Local"}, {"Editable", editable}}));
    home.folder().makeFolder(folder + "Events");
  }
  [[nodiscard]] static std::string eventsOf(const std::string& calendar) {
    return "Library/Calendars/" + calendar + ".calendar/Events";
  }
  /// Writes the contacts anew, as another program would, now.
  void setPeople(const std::vector<StoredPerson>& people) const {
    home.folder().makeFolder(kMetadata);
    if (home.exists(kStore)) home.folder().remove(kStore);
    PosixFileManager plain;
    const auto written = AddressBookStoreWriter::write(
        plain, home.path(kStore), StoreGeneration::current, people, {}, home.clock.now());
    ASSERT_TRUE(written.ok()) << written.error().text();
    home.touch(kMetadata, home.clock.now());
  }

  /// A whole run of the agent; its exit status.
  int run() {
    Platform& platform = home.platform();
    const int status =
        platform.application().main(platform.mainBundle(), myController::delegateClass(platform));
    home.endRun();
    return status;
  }
  int runLater() {
    home.clock.advance(std::chrono::hours{1});
    return run();
  }
  /// What a run would do.
  myController::Decision decide() {
    myController controller(home.platform());
    controller.awakeFromNib({});
    files.forget();
    return controller.decide();
  }

  /// Titles of the events in a calendar, sorted.
  [[nodiscard]] std::vector<std::string> titles(const std::string& calendar) const {
    std::vector<std::string> titles;
    for (const auto& [path, content] : home.snapshot(eventsOf(calendar))) {
      const auto at = content.find("SUMMARY:");
      if (at == std::string::npos) continue;
      titles.push_back(content.substr(at + 8, content.find('\r', at) - at - 8));
    }
    std::sort(titles.begin(), titles.end());
    return titles;
  }
  /// The path of the event of a title, relative to the home; "" without one.
  [[nodiscard]] std::string eventOf(const std::string& calendar, const std::string& title) const {
    for (const auto& [path, content] : home.snapshot(eventsOf(calendar))) {
      if (content.find("SUMMARY:" + title + "\r") == std::string::npos) continue;
      return eventsOf(calendar) + "/" + path;
    }
    return "";
  }
  [[nodiscard]] PropertyList lastUpdate() const {
    return home.storedPreferences(kAgentDomain)["lastUpdate"];
  }
  [[nodiscard]] std::size_t ledgerRecords() const {
    const std::string text = home.readFile(kLedger);
    std::size_t count = 0;
    for (auto at = text.find("<object "); at != std::string::npos;
         at = text.find("<object ", at + 1)) {
      ++count;
    }
    return count;
  }
  [[nodiscard]] bool isMarked() const { return home.exists(kMark); }

  TestHome home;
  PosixFileManager disk;
  HookedFiles files{disk};
};

}  // namespace annivo
