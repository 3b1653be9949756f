// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/calendar/WriterHome.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {

/// A home in memory, on which runs can be cut off, fail and lose their power. The product's own
/// files stay on the disk.
class FaultyMachine {
 public:
  static constexpr const char* kForeign = "Birthdays' neighbour";
  struct Input {
    std::vector<ZPKCalendarItems::BasicEvent> anniversaries;
    std::vector<ZPKCalendarItems::BasicEvent> birthdays;
    std::vector<ZPKCalendarItems::Alarm> alarms;
  };

  explicit FaultyMachine(TestHome& home)
      : home_(home),
        memory_(home.clock),
        disk_(memory_),
        faults_(disk_),
        files_(faults_, home.productPath()) {
    memory_.makeFolders(home.path());
  }
  /// A machine of its own with the same files.
  FaultyMachine(const FaultyMachine& other) : FaultyMachine(other.home_) {
    memory_.copyFrom(other.memory_, home_.path());
  }
  FaultyMachine& operator=(const FaultyMachine&) = delete;

  [[nodiscard]] FailingFileManager& faults() { return faults_; }
  [[nodiscard]] MemoryFileManager& memory() { return memory_; }

  /// One run as the controller makes it.
  void pass(const Input& input) {
    Platform& platform = start();
    // Read before the writer is made, as the controller does, and not again.
    const std::string anniversaryUID = preference(platform, "aneeCalUID");
    const std::string birthdayUID = preference(platform, "birthCalUID");
    {
      ZPKCalendarItems writer(platform);
      writer.setThisCalendarWithUIDForType("Anniversaries", anniversaryUID,
                                           CalendarType::anniversaries);
      writeEvents(writer, input.anniversaries, input.alarms);
      writer.setThisCalendarWithUIDForType("Birthdays", birthdayUID, CalendarType::birthdays);
      writeEvents(writer, input.birthdays, input.alarms);
      writer.removeOtherEvents();
      writer.synchronizeCalendars();
    }
    home_.endRun();
  }
  /// The run of an agent that was switched off.
  void empty() {
    Platform& platform = start();
    { ZPKCalendarItems first(platform); }
    {
      ZPKCalendarItems second(platform);
      second.removeOtherEvents();
    }
    home_.endRun();
  }

  /// Calendars, ledger and preferences in words that do not depend on identifiers, and every file
  /// that should not be there.
  std::string state() {
    std::string found = stateOf(start());
    home_.endRun();
    return found;
  }
  /// Whether the person or the log was told of `path`.
  [[nodiscard]] bool told(const std::string& path) const {
    if (home_.log.count(path) > 0) return true;
    return std::any_of(
        home_.alerts.shown().begin(), home_.alerts.shown().end(),
        [&](const NSAlert& alert) { return textOf(alert).find(path) != std::string::npos; });
  }
  void forgetMessages() {
    home_.log.clear();
    home_.alerts.clear();
  }

 private:
  /// As on a disk, a temporary file that was left is used up by the next write.
  class Disk final : public ForwardingFileManager {
   public:
    using ForwardingFileManager::ForwardingFileManager;
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
      useUpTemporary(path);
      return inner_.writeAtomically(path, bytes);
    }
    Result<void> writeDurably(const std::string& path, std::string_view bytes) override {
      useUpTemporary(path);
      return inner_.writeDurably(path, bytes);
    }

   private:
    void useUpTemporary(const std::string& path) {
      const auto slash = path.rfind('/') + 1;
      (void)inner_.removeFile(path.substr(0, slash) + "." + path.substr(slash) + ".tmp").ok();
    }
  };
  /// The product's folder from the disk, everything else from memory.
  class Files final : public ForwardingFileManager {
   public:
    Files(NSFileManager& inner, std::string product)
        : ForwardingFileManager(inner), product_(std::move(product)) {}
    Result<FileAttributes> attributesAtPath(const std::string& path, Links links) const override {
      return of(path).attributesAtPath(path, links);
    }
    Result<std::string> contentsAtPath(const std::string& path, std::size_t limit) const override {
      return of(path).contentsAtPath(path, limit);
    }
    Result<std::vector<DirectoryEntry>> contentsOfDirectory(
        const std::string& path) const override {
      return of(path).contentsOfDirectory(path);
    }

   private:
    [[nodiscard]] const NSFileManager& of(const std::string& path) const {
      return path.starts_with(product_) ? static_cast<const NSFileManager&>(disk_) : inner_;
    }
    PosixFileManager disk_;
    std::string product_;
  };

  std::string stateOf(Platform& platform) {
    std::map<std::string, std::string> calendarNames;
    std::map<std::string, std::string> eventNames;
    std::multiset<std::string> lines;
    CalCalendarStore& store = platform.defaultCalendarStore();
    for (const auto& calendar : store.calendars()) {
      calendarNames[calendar->uid()] = calendar->title();
      lines.insert("calendar " + calendar->title());
    }
    for (const auto& event : store.events(kEarliestDate, kLatestDate, store.calendars())) {
      std::string line = event->calendar()->title() + " / " + event->title().value_or("(null)") +
                         " " + describe(event->startDate()) + " " + event->url().value_or("");
      for (const auto& alarm : event->alarms()) {
        line += " " + std::to_string(alarm.relativeTrigger.value_or(0));
      }
      if (const auto& identity = event->ledgerIdentity()) {
        line += " = " + identity->myUID + " " + calendarNames[identity->calendarUID] + " " +
                describe(identity->date);
      }
      eventNames[event->uid()] = line;
      lines.insert("event " + line);
    }
    core_data_for_dates_AppDelegate ledger(platform);
    const auto records = ledger.managedObjectContext()->executeFetchRequest({"Event", {}});
    if (!records) return records.error().text();
    for (const NSManagedObject* record : *records) {
      const auto* date = record->valueForKey("date").date();
      lines.insert("record " + record->valueForKey("myUID").stringOr("nil") + " " +
                   calendarNames[record->valueForKey("calendarUID").stringOr("nil")] + " " +
                   describe(date ? std::optional(*date) : std::nullopt) + " -> " +
                   eventNames[record->valueForKey("iCalUID").stringOr("nil")]);
    }
    for (const char* key : {"aneeCalUID", "birthCalUID"}) {
      lines.insert(std::string(key) + " " + calendarNames[preference(platform, key)]);
    }
    for (const auto& [path, content] : memory_.files(home_.path())) {
      const std::string name = path.substr(path.rfind('/') + 1);
      const bool expected = path.ends_with(".ics")
                                ? !name.starts_with('.')
                                : name == "Info.plist" || path.find("/Preferences/") != path.npos ||
                                      name == "Annivo 2.xml";
      if (!expected) lines.insert("stray file " + path);
    }
    std::ostringstream out;
    for (const auto& line : lines) out << line << '\n';
    return out.str();
  }

  Platform& start() {
    home_.endRun();
    home_.useFileManager(&files_);
    return home_.platform();
  }
  static std::string preference(Platform& platform, const char* key) {
    const auto& domain = platform.standardUserDefaults().persistentDomainForName(kParentDomain);
    return domain ? PropertyList(*domain)[key].stringOr("none") : "none";
  }
  static void writeEvents(ZPKCalendarItems& writer,
                          const std::vector<ZPKCalendarItems::BasicEvent>& events,
                          const std::vector<ZPKCalendarItems::Alarm>& alarms) {
    writer.initAlarmArray();
    for (const auto& alarm : alarms) writer.addAlarm(alarm);
    if (writer.calendarLocked()) return;
    for (const auto& event : events) writer.addBasicEvent(event);
  }

  TestHome& home_;
  MemoryFileManager memory_;
  Disk disk_;
  FailingFileManager faults_;
  Files files_;
};

}  // namespace annivo
