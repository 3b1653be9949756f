// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>

#include "tests/run/ControllerHome.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {
namespace {

/// The home in memory, where the power can fail; product and contacts stay on the disk.
class Machine {
 public:
  explicit Machine(TestHome& home)
      : memory(home.clock),
        faults(memory),
        files_(faults, {home.productPath(), home.path(kContacts)}),
        home_(home) {}
  Machine(const Machine&) = delete;

  void run() {
    home_.endRun();
    home_.useFileManager(&files_);
    Platform& platform = home_.platform();
    (void)platform.application().main(platform.mainBundle(), myController::delegateClass(platform));
    home_.endRun();
  }
  /// Titles of all events, and how many of each.
  [[nodiscard]] std::map<std::string, int> events() const {
    std::map<std::string, int> titles;
    for (const auto& [path, text] : memory.files(home_.path("Library/Calendars"))) {
      const auto at = text.find("SUMMARY:");
      if (at != std::string::npos) ++titles[text.substr(at + 8, text.find('\r', at) - at - 8)];
    }
    return titles;
  }
  [[nodiscard]] PropertyList preference(const char* domain, const char* key) const {
    const auto path = home_.path(TestHome::preferencesFile(domain));
    const auto bytes = memory.contentsAtPath(path, NSFileManager::kDefaultLimit);
    const auto list = bytes ? parsePropertyList(*bytes, path) : bytes.error();
    return list ? (*list)[key] : PropertyList();
  }

  MemoryFileManager memory;
  FailingFileManager faults;

 private:
  static constexpr const char* kContacts = "Library/Application Support/AddressBook";

  /// Some folders from the disk, everything else from memory.
  class Files final : public ForwardingFileManager {
   public:
    Files(NSFileManager& inner, std::vector<std::string> fromDisk)
        : ForwardingFileManager(inner), fromDisk_(std::move(fromDisk)) {}
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
      for (const auto& folder : fromDisk_) {
        if (path.starts_with(folder)) return disk_;
      }
      return inner_;
    }
    PosixFileManager disk_;
    std::vector<std::string> fromDisk_;
  };

  Files files_;
  TestHome& home_;
};

/// Of Ann and Joe, whose events are there, Ann gets another name, Joe goes and Sue comes.
class ControllerUnderPowerLoss : public ControllerHome {
 protected:
  ControllerUnderPowerLoss() {
    setPeople({born("Ann", {1980, 6, 10}), born("Joe", {1970, 1, 31})});
    before_.memory.copyFrom(disk, home.path("Library/Preferences"));
    before_.memory.copyFrom(disk, home.path("Library/Calendars"));
    before_.run();
    home.clock.advance(std::chrono::hours{1});
    StoredPerson anna = born("Ann", {1980, 6, 10});
    anna.firstName = "Anna";
    setPeople({anna, born("Sue", {1990, 2, 28})});
    end_ = home.clock.now();
  }
  std::unique_ptr<Machine> machine() {
    auto copy = std::make_unique<Machine>(home);
    copy->memory.copyFrom(before_.memory, home.path());
    home.clock.set(end_);
    return copy;
  }
  [[nodiscard]] std::size_t changesOf(void (*prepare)(Machine&, const TestHome&)) {
    const auto undisturbed = machine();
    prepare(*undisturbed, home);
    undisturbed->run();
    return undisturbed->faults.changes().size();
  }

  const std::map<std::string, int> expected_{{"Anna", 3}, {"Sue", 3}};
  Machine before_{home};
  Date end_{};
};

TEST_F(ControllerUnderPowerLoss, TheTimeOfTheRunIsStoredOnlyWhenTheCalendarsAreDurable) {
  const std::size_t changes = changesOf([](Machine&, const TestHome&) {});
  std::size_t stored = 0;
  for (std::size_t number = 1; number <= changes + 1; ++number) {
    SCOPED_TRACE(number);
    const auto cut = machine();
    cut->faults.killAtChange(number);
    cut->run();
    cut->memory.cutPower(PowerLoss::nothingKept);
    if (cut->preference(kAgentDomain, "lastUpdate") == PropertyList(end_)) {
      ++stored;
      EXPECT_EQ(cut->events(), expected_);
    }
    cut->faults.failNoMore();
    home.clock.advance(std::chrono::hours{1});
    cut->run();
    EXPECT_EQ(cut->events(), expected_);
  }
  EXPECT_GT(stored, 1U);
  EXPECT_LT(stored, changes);
}

TEST_F(ControllerUnderPowerLoss, WhatIsSwitchedOffStaysSo) {
  const auto switchOff = [](Machine& machine, const TestHome& folder) {
    const auto path = folder.path(TestHome::preferencesFile(kAgentDomain));
    ASSERT_TRUE(
        machine.memory
            .writeDurably(path, binaryPropertyList(PropertyList::Dictionary{{"alarmSet", "1"}}))
            .ok());
  };
  const std::size_t changes = changesOf(switchOff);
  for (std::size_t number = 1; number <= changes + 1; ++number) {
    SCOPED_TRACE(number);
    const auto cut = machine();
    switchOff(*cut, home);
    cut->faults.killAtChange(number);
    cut->run();
    cut->memory.cutPower(PowerLoss::nothingKept);
    if (cut->events() != before_.events()) {
      EXPECT_EQ(cut->preference(kParentDomain, "appRunning"), PropertyList(false));
    }
    cut->faults.failNoMore();
    cut->run();
    EXPECT_TRUE(cut->events().empty());
  }
}

}  // namespace
}  // namespace annivo
