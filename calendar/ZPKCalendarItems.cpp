// SPDX-License-Identifier: MIT
#include "calendar/ZPKCalendarItems.h"

#include "platform/LoggingSwitch.h"

namespace annivo {

ZPKCalendarItems::ZPKCalendarItems(Platform& platform)
    : platform_(platform),
      myStore(platform.defaultCalendarStore()),
      coreDataSpace(std::make_unique<core_data_for_dates_AppDelegate>(platform)),
      moc(coreDataSpace->managedObjectContext()),
      mark_(platform, coreDataSpace->applicationSupportFolder(), coreDataSpace->temporaryFolder()),
      records_(platform, *coreDataSpace),
      recovery_(platform, *coreDataSpace, records_, mark_) {
  hasUnfinishedRun_ = mark_.wasFound();
  if (hasUnfinishedRun_) {
    adoptCalendars();
    recovery_.reconcile();
  } else if (!mark_.lockedCalendars().empty()) {
    hasUnfinishedRun_ = recovery_.takeUpUnlocked();
  }
}

ZPKCalendarItems::~ZPKCalendarItems() {
  // Without the mark no event was written, and no record of one is.
  if (moc && !mark_.couldNotBeSet() && !coreDataSpace->saveAction()) mark_.noteFailure();
  if (!coreDataSpace->closeLedger()) mark_.noteFailure();
  moc = nullptr;
  coreDataSpace.reset();
  synchronizeCalendars();
  mark_.endChanges();
}

std::string ZPKCalendarItems::calendarsFolder() const {
  const std::string folder = platform_.folders().calendars();
  return platform_.fileManager().fileExistsAtPath(folder) ? folder : platform_.homeDirectory();
}

void ZPKCalendarItems::synchronizeCalendars() {
  const auto check = [this](const Result<void>& done) {
    if (done) return;
    platform_.log().write(done.error().text());
    mark_.noteFailure(done.error());
  };
  // What an interrupted run wrote or removed may not be on disk either.
  if (mark_.wasFound()) check(platform_.fileManager().synchronize(calendarsFolder()));
  check(myStore.synchronize());
}

std::optional<EventRecords::Records> ZPKCalendarItems::dataFetchedWithPredicate(
    std::optional<NSPredicate> predicate) {
  recovery_.ledger();
  return records_.fetch(std::move(predicate));
}

}  // namespace annivo
