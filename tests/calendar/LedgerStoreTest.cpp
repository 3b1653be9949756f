// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"
#include "tests/support/FailingFileManager.h"

namespace annivo {
namespace {

using Home = WriterHome;
using Delegate = core_data_for_dates_AppDelegate;
const Date kDay = utc(2026, 12, 24, 12);

NSManagedObject& insert(Delegate& delegate, const std::string& myUID) {
  NSManagedObjectContext& context = *delegate.managedObjectContext();
  NSManagedObject& record = context.insertNewObjectForEntityForName("Event");
  context.setValueForKey(record, myUID, "myUID");
  context.setValueForKey(record, kDay, "date");
  return record;
}

std::size_t count(Delegate& delegate) {
  const auto found = delegate.managedObjectContext()->executeFetchRequest({"Event", {}});
  return found ? found->size() : 999;
}

TEST(LedgerStore, TheFirstSaveMakesFolderAndFile) {
  Home home;
  {
    Delegate delegate(home.home.platform());
    EXPECT_FALSE(home.home.exists(Home::kLedgerFolder)) << "nothing is opened before it is wanted";
    insert(delegate, "D-1");
    EXPECT_TRUE(home.home.exists(Home::kLedgerFolder));
    EXPECT_FALSE(home.home.exists(Home::kLedger));
    EXPECT_TRUE(delegate.saveAction());
    EXPECT_TRUE(home.home.exists(Home::kLedger));
  }
  EXPECT_EQ(home.ledger().size(), 1U);
}

TEST(LedgerStore, ASecondStoreSeesWhatTheFirstSaved) {
  Home home;
  Delegate first(home.home.platform());
  insert(first, "D-1");
  first.saveAction();
  insert(first, "D-2");
  first.saveAction();
  insert(first, "not saved");
  Delegate second(home.home.platform());
  EXPECT_EQ(count(second), 2U);
  EXPECT_EQ(count(first), 3U);
}

TEST(LedgerStore, TwoStoresOverOneFileLoseNothingThatWasSaved) {
  Home home;
  {
    auto first = std::make_unique<Delegate>(home.home.platform());
    insert(*first, "D-1");
    first->saveAction();
    insert(*first, "D-2");
    first->saveAction();
    Delegate second(home.home.platform());
    EXPECT_EQ(count(second), 2U);
    insert(second, "D-3");
    EXPECT_TRUE(second.saveAction());
    insert(*first, "late");
    EXPECT_FALSE(first->saveAction()) << "it would undo what the second saved";
    EXPECT_EQ(home.home.alerts.shown().size(), 1U);
  }
  EXPECT_EQ(home.ledger().size(), 3U);
}

TEST(LedgerStore, WhatIsNotSavedIsForgotten) {
  Home home;
  {
    Delegate delegate(home.home.platform());
    insert(delegate, "D-1");
    delegate.saveAction();
    insert(delegate, "D-2");
  }
  EXPECT_EQ(home.ledger().size(), 1U);
}

TEST(LedgerStore, AnUnreadableLedgerIsPresentedOnceAndNothingIsSetAside) {
  Home home;
  home.home.folder().makeFolder(Home::kLedger);  // A folder in its place.
  home.makeCalendar("A", "Birthdays");
  const std::vector events = {eventOn(kDay, "D-1", "One"),
                              eventOn(kDay + std::chrono::hours{24}, "D-2", "Two")};
  home.write("A", events);
  const auto& shown = home.home.alerts.shown();
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_NE(textOf(shown.front()).find(home.home.path(Home::kLedger)), std::string::npos);
  EXPECT_EQ(home.titles("A").size(), 2U) << "the run goes on";
  EXPECT_TRUE(home.home.exists(Home::kLedger));
  home.write("A", events);
  EXPECT_EQ(home.titles("A").size(), 2U) << "the calendars themselves tell what is there";
  home.home.folder().remove(Home::kLedger);
  home.write("A", events);
  EXPECT_EQ(home.titles("A").size(), 2U);
  EXPECT_EQ(home.ledger().size(), 2U) << "the events were adopted";
}

TEST(LedgerStore, ADamagedLedgerIsSetAsideAndRebuiltFromTheCalendars) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  const std::vector events = {eventOn(kDay, "D-1", "One"),
                              eventOn(kDay + std::chrono::hours{24}, "D-2", "Two")};
  home.write("A", events);
  const std::string damaged = home.home.readFile(Home::kLedger).substr(0, 900);
  home.home.writeFile(Home::kLedger, damaged);
  home.write("A", events);
  ASSERT_EQ(home.home.alerts.shown().size(), 1U);
  EXPECT_NE(textOf(home.home.alerts.shown().front()).find(home.home.path(Home::kLedger)),
            std::string::npos);
  EXPECT_EQ(home.titles("A").size(), 2U);
  EXPECT_EQ(home.ledger().size(), 2U);
  EXPECT_EQ(home.home.readFile(std::string(Home::kLedger) + ".damaged-20261120T184600Z"), damaged);
  home.write("A", events);
  EXPECT_EQ(home.home.alerts.shown().size(), 1U) << "all is well again";
}

TEST(LedgerStore, ALedgerOfANewerVersionIsReadAndNeverWritten) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  home.write("A", {eventOn(kDay, "D-1", "One")});
  std::string ledger = home.home.readFile(Home::kLedger);
  ledger.replace(ledger.find("134481920"), 9, "134481921");
  home.home.writeFile(Home::kLedger, ledger);
  const std::vector events = {eventOn(kDay, "D-1", "One"),
                              eventOn(kDay + std::chrono::hours{24}, "D-2", "Two")};
  for (int run = 0; run < 3; ++run) {
    home.write("A", events);
    EXPECT_EQ(home.titles("A"), (std::vector<std::string>{"One", "Two"})) << "run " << run;
    EXPECT_EQ(home.home.readFile(Home::kLedger), ledger);
  }
  EXPECT_GE(home.home.alerts.shown().size(), 1U);
  EXPECT_NE(textOf(home.home.alerts.shown().front()).find("newer version"), std::string::npos);
}

TEST(LedgerStore, QuittingWithoutAContextOrChangesTerminates) {
  Home home;
  {
    Delegate delegate(home.home.platform());
    EXPECT_EQ(delegate.applicationShouldTerminate(), TerminateReply::now);
    EXPECT_FALSE(home.home.exists(Home::kLedgerFolder)) << "nor does the question open anything";
    (void)delegate.managedObjectContext();
    EXPECT_EQ(delegate.applicationShouldTerminate(), TerminateReply::now);
    insert(delegate, "D-1");
    EXPECT_EQ(delegate.applicationShouldTerminate(), TerminateReply::now);
  }
  EXPECT_EQ(home.ledger().size(), 1U) << "it was saved on the way";
}

TEST(LedgerStore, QuittingWithUnsavedChangesThatCannotBeSavedAsks) {
  for (const AlertAnswer answer :
       {AlertAnswer::defaultButton, AlertAnswer::alternate, AlertAnswer::other}) {
    Home home;
    PosixFileManager disk;
    FailingFileManager files(disk);
    home.home.useFileManager(&files);
    Delegate delegate(home.home.platform());
    insert(delegate, "D-1");
    files.failChangesFrom(1, ENOSPC);
    home.home.alerts.answerNext(AlertAnswer::defaultButton);  // The error itself.
    home.home.alerts.answerNext(answer);
    EXPECT_EQ(delegate.applicationShouldTerminate(),
              answer == AlertAnswer::defaultButton ? TerminateReply::now : TerminateReply::cancel);
    ASSERT_EQ(home.home.alerts.shown().size(), 2U);
    const NSAlert& asked = home.home.alerts.shown().back();
    EXPECT_EQ(asked.messageText, "");
    EXPECT_EQ(asked.informativeText, "Could not save changes while quitting. Quit anyway?");
    EXPECT_EQ(asked.defaultButton, "Quit anyway");
    EXPECT_EQ(asked.alternateButton, "Cancel");
  }
}

TEST(LedgerStore, ThereIsNothingToUndo) {
  Home home;
  Delegate delegate(home.home.platform());
  EXPECT_EQ(delegate.windowWillReturnUndoManager(), nullptr);
  EXPECT_EQ(delegate.managedObjectContext()->undoManager(), nullptr);
}

TEST(LedgerStore, TheFolderIsInApplicationSupport) {
  Home home;
  Delegate delegate(home.home.platform());
  EXPECT_EQ(delegate.applicationSupportFolder(), home.home.path(Home::kLedgerFolder));
}

TEST(LedgerStore, WithoutApplicationSupportTheTemporaryFolderServes) {
  Home home;
  home.home.writeFile("Library", "a file in the way");
  Delegate delegate(home.home.platform());
  EXPECT_EQ(delegate.applicationSupportFolder(),
            home.home.platform().temporaryDirectory() + "/Annivo 2");
}

TEST(LedgerStore, AnErrorOfTheModelIsPresentedAndTheRunGoesOn) {
  Home home;
  home.makeCalendar("A", "Birthdays");
  PosixFileManager disk;
  FailingFileManager files(disk);
  files.makeUnreadable(home.home.productPath() +
                       "/Contents/Helpers/AnnivoAgent.app/Contents/Resources/Ledger.mom");
  home.home.useFileManager(&files);
  home.write("A", {eventOn(kDay, "D-1", "One")});
  home.write("A", {eventOn(kDay, "D-1", "One")});
  EXPECT_GE(home.home.alerts.shown().size(), 1U);
  home.home.useFileManager(nullptr);
  EXPECT_EQ(home.titles("A").size(), 1U);
}

}  // namespace
}  // namespace annivo
