// SPDX-License-Identifier: MIT
#include "calendar/ZPKCalendarItems.h"

#include "platform/LoggingSwitch.h"

namespace annivo {

using Ledger = core_data_for_dates_AppDelegate::Ledger;

ZPKCalendarItems::ZPKCalendarItems(Platform& platform)
    : platform_(platform),
      myStore(platform.defaultCalendarStore()),
      coreDataSpace(std::make_unique<core_data_for_dates_AppDelegate>(platform)),
      moc(coreDataSpace->managedObjectContext()),
      mark_(platform, coreDataSpace->applicationSupportFolder(), coreDataSpace->temporaryFolder()) {
  if (mark_.wasFound()) reconcile();
}

ZPKCalendarItems::~ZPKCalendarItems() {
  if (moc && !coreDataSpace->saveAction()) noteFailure();
  if (!coreDataSpace->closeLedger()) noteFailure();
  moc = nullptr;
  coreDataSpace.reset();
  synchronizeCalendars();
  if (failed_ || !(mark_.isSet() || mark_.wasFound())) return;
  if (const auto removed = mark_.remove(); !removed) {
    platform_.log().write(removed.error().text());
  }
}

std::string ZPKCalendarItems::calendarsFolder() const {
  const std::string folder = platform_.homeDirectory() + "/Library/Calendars";
  return platform_.fileManager().fileExistsAtPath(folder) ? folder : platform_.homeDirectory();
}

void ZPKCalendarItems::synchronizeCalendars() {
  const auto check = [this](const Result<void>& done) {
    if (done) return;
    platform_.log().write(done.error().text());
    noteFailure(done.error());
  };
  // What the run that was cut off wrote or removed need not be on disk either.
  if (mark_.wasFound()) check(platform_.fileManager().synchronize(calendarsFolder()));
  check(myStore.synchronize());
}

Ledger ZPKCalendarItems::ledger() {
  const Ledger ledger = coreDataSpace->readLedger();
  if (reconciled_) return ledger;
  if (ledger == Ledger::damaged) {
    reconcile();
  } else if (ledger == Ledger::absent) {
    reconciled_ = true;
    adoptEvents();
  }
  return ledger;
}

std::optional<std::vector<NSManagedObject*>> ZPKCalendarItems::dataFetchedWithPredicate(
    std::optional<NSPredicate> predicate) {
  ledger();
  if (!moc) return std::nullopt;
  auto fetched = moc->executeFetchRequest({.entity = "Event", .predicate = std::move(predicate)});
  if (!fetched) {
    platform_.log().write(fetched.error().text());
    return std::nullopt;
  }
  return std::move(*fetched);
}

void ZPKCalendarItems::beginChanges() {
  if (mark_.isSet() || markFailed_) return;
  if (const auto set = mark_.set(); !set) {
    markFailed_ = true;
    platform_.application().presentError(set.error());
  }
}

void ZPKCalendarItems::noteFailure(const Error& error) {
  // What was refused will be refused again: nothing to make good.
  if (error.kind != Error::Kind::refused && error.kind != Error::Kind::malformed) noteFailure();
}

void ZPKCalendarItems::noteFailure() {
  failed_ = true;
  beginChanges();
}

}  // namespace annivo
