// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "calendar/ZPKCalendarItems.h"
#include "contacts/ZPKAddressBookDates.h"
#include "platform/Platform.h"
#include "run/AnvCalPrefs.h"

namespace annivo {

/// The application controller: one run from start to end.
///
/// 1. initialize() runs the version gate, awakeFromNib() sets up preferences.
/// 2. applicationDidFinishLaunching() checks for an update of the parent, decides, and ends in one
///    of five ways: hand-over to the parent, emptied calendars (twice), nothing to update, or a
///    full pass. Each end is a terminate, which does not return.
/// 3. On destruction the calendar writer goes and saves the ledger.
class myController final : public NSApplicationDelegate, public SUUpdaterDelegate {
 public:
  explicit myController(Platform& platform) : platform_(platform) {}

  /// The class as the interface file names it.
  [[nodiscard]] static DelegateClass delegateClass(Platform& platform);
  /// Run once, before the controller is made.
  static void initialize(Platform& platform);

  void awakeFromNib(NSWindow window) override;
  void applicationDidFinishLaunching() override;
  /// Always: terminate at once.
  TerminateReply applicationShouldTerminate() override { return TerminateReply::now; }

  /// What a run does after the update check.
  enum class Decision { emptyCalendars, nothingToUpdate, pass };
  /// Makes the calendar writer and decides.
  [[nodiscard]] Decision decide();
  /// The pass: anniversaries, birthdays, stale events, the time of the run.
  void pass();
  /// `sendCalendarType:withFormat:`. One calendar pass.
  void sendCalendarTypeWithFormat(CalendarType type, const std::vector<std::string>& titleFormat);
  /// Whether other programs have changed, since the pass began, what it reads. `addressBook` is the
  /// time of the address book then.
  [[nodiscard]] bool somethingChangedMeanwhile(Date addressBook);
  /// Takes the program's events out of the calendars, switches the agent off and terminates.
  void emptyAndOuit();
  /// Starts the parent application and terminates.
  void openParentAndOuit();

  /// Checks for an update of the parent when one is due and waits for the answer.
  void launchSparkle();
  /// Backdates the parent's last check by 365 days, so that the parent checks by itself.
  void setCheckDate();
  void updaterDidFindValidUpdate(const SUAppcastItem& item) override;
  void updaterDidNotFindUpdate() override { sparkleLoading = false; }

  /// The dates of the pass; null before it.
  [[nodiscard]] ZPKAddressBookDates* dates() const { return theDates.get(); }

 private:
  /// Presents preferences that are there and cannot be used, and terminates: what they order is
  /// not known, so that nothing may be changed. Returns where all can be used.
  void endIfPreferencesCannotBeUsed();
  void log(const std::string& line);

  Platform& platform_;
  NSUserDefaults* defaults = nullptr;
  std::unique_ptr<AnvCalPrefs> appPrefs;
  std::unique_ptr<ZPKCalendarItems> myCalendarItems;
  std::unique_ptr<ZPKAddressBookDates> theDates;
  NSWindow mainWindow;
  bool sparkleLoading = false;
  std::unique_ptr<SUFramework> sparkle_;
};

}  // namespace annivo
