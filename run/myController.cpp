// SPDX-License-Identifier: MIT
#include "run/myController.h"

#include "format/ZPKAnvCCalendarItemsFormat.h"
#include "platform/LoggingSwitch.h"
#include "run/PreferenceTypes.h"
#include "run/ZPKLimitSystem.h"

namespace annivo {

namespace {

const ContactDates& datesOf(CalendarType type, ZPKAddressBookDates& dates) {
  switch (type) {
    case CalendarType::birthdays:
      return dates.addressBookBirthDates();
    case CalendarType::anniversaries:
      break;
  }
  return dates.addressBookCustomDates();
}

}  // namespace

DelegateClass myController::delegateClass(Platform& platform) {
  return {.name = "myController",
          .initialize = [&platform] { initialize(platform); },
          .make = [&platform] { return std::make_unique<myController>(platform); }};
}

void myController::initialize(Platform& platform) { ZPKLimitSystem::alert(platform); }

void myController::awakeFromNib(NSWindow window) {
  log("Annivo open");  // Silent: the defaults that hold the switch are not there yet.
  defaults = &platform_.standardUserDefaults();
  defaults->registerDefaults({{keys::kLastUpdate, kUnixEpoch}, {keys::kAlarmSet, "0"}});
  endIfPreferencesCannotBeUsed();
  reportOwnTypes(platform_);
  appPrefs = std::make_unique<AnvCalPrefs>(platform_);
  log("Annivo starting");
  mainWindow = window;
  mainWindow.center();
}

void myController::applicationDidFinishLaunching() {
  launchSparkle();
  switch (decide()) {
    case Decision::emptyCalendars:
      emptyAndOuit();
      break;
    case Decision::nothingToUpdate:
      log("Annivo ending - nothing to update");
      platform_.application().terminate();
      break;
    case Decision::pass:
      pass();
      break;
  }
}

myController::Decision myController::decide() {
  myCalendarItems = std::make_unique<ZPKCalendarItems>(platform_);
  if (defaults->objectForKey(keys::kAlarmSet).isEqualToString("1")) return Decision::emptyCalendars;
  if (!appPrefs->valueForKey(keys::kAppRunning).isTheTrueObject()) return Decision::emptyCalendars;
  const PropertyList& stored = defaults->objectForKey(keys::kLastUpdate);
  // A time that is still to come is no time of a run: a clock was wrong then, or is now.
  const bool isPast = stored.date() && *stored.date() <= platform_.clock().now();
  const Date last = isPast ? *stored.date() : kUnixEpoch;
  const bool changed = myCalendarItems->hasUnfinishedRun() ||
                       myCalendarItems->hasCalendarBeenUpdatedSinceLastRun(
                           appPrefs->text(keys::kBirthCalUID), last) ||
                       myCalendarItems->hasCalendarBeenUpdatedSinceLastRun(
                           appPrefs->text(keys::kAneeCalUID), last) ||
                       ZPKAddressBookDates::shouldHelperRun(platform_, last);
  return changed ? Decision::pass : Decision::nothingToUpdate;
}

void myController::pass() {
  log("Starting to add");
  myCalendarItems->expectLedger();
  const Date addressBook = ZPKAddressBookDates::addressBookLastModifed(platform_);
  theDates = std::make_unique<ZPKAddressBookDates>(platform_);

  const std::string anniversaryUID = appPrefs->text(keys::kAneeCalUID);
  const std::string anniversaryTitle = appPrefs->text(keys::kAneeCalTitle);
  if (!anniversaryUID.empty()) {
    myCalendarItems->setThisCalendarWithUIDForType(anniversaryTitle, anniversaryUID,
                                                   CalendarType::anniversaries);
    if (!myCalendarItems->calendarLocked()) {
      sendCalendarTypeWithFormat(CalendarType::anniversaries,
                                 appPrefs->texts(keys::kTitleAnniversaries));
    }
  }

  const std::string birthdayUID = appPrefs->text(keys::kBirthCalUID);
  const std::string birthdayTitle = appPrefs->text(keys::kBirthCalTitle);
  if (!birthdayUID.empty()) {
    if (birthdayTitle == anniversaryTitle) {
      if (birthdayUID != anniversaryUID) {
        const auto& shared = myCalendarItems->thisCalendar();
        myCalendarItems->setDefaultUIDForType(shared ? std::optional(shared->uid()) : std::nullopt,
                                              CalendarType::birthdays);
      }
    } else {
      myCalendarItems->setThisCalendarWithUIDForType(birthdayTitle, birthdayUID,
                                                     CalendarType::birthdays);
    }
    if (!myCalendarItems->calendarLocked()) {
      sendCalendarTypeWithFormat(CalendarType::birthdays, appPrefs->texts(keys::kTitleBirthdays));
    }
  }

  // Nobody's events go because his contact could not be read.
  if (!theDates->wasReadWhole()) myCalendarItems->confirmEventsOfDatesNotIn(theDates->dateUIDs());
  myCalendarItems->removeOtherEvents();
  // The time of the run says that the calendars are as they should be, so they must be on disk
  // before it is.
  myCalendarItems->synchronizeCalendars();
  // Of what changes from here on the folders' times tell the next run, of what changed since the
  // pass began only the mark can.
  const Date end = platform_.clock().now();
  if (somethingChangedMeanwhile(addressBook)) myCalendarItems->askForAnotherPass();
  if (!myCalendarItems->couldNotBegin()) {
    defaults->setObjectForKey(end, keys::kLastUpdate);
    (void)defaults->synchronize();  // Logged where it fails; the next run then does the pass again.
  }
  log("Annivo ending");
  platform_.application().terminate();
}

bool myController::somethingChangedMeanwhile(Date addressBook) {
  if (myCalendarItems->wereChangedMeanwhile()) return true;
  if (ZPKAddressBookDates::addressBookLastModifed(platform_) != addressBook) return true;
  PreferenceDomains stored(platform_.fileManager(), platform_.clock(), platform_.log(),
                           platform_.homeDirectory());
  const auto& parent = stored.domain(kParentDomain);
  return parent &&
         PropertyList(*parent)[keys::kLastLaunched] != appPrefs->valueForKey(keys::kLastLaunched);
}

void myController::sendCalendarTypeWithFormat(CalendarType type,
                                              const std::vector<std::string>& titleFormat) {
  {
    ZPKAnvCCalendarItemsFormat formatter(platform_, *myCalendarItems, titleFormat);
    formatter.setAlarmsWithDataForType(appPrefs->prefs(), type);
    const auto& records = datesOf(type, *theDates);
    formatter.settleTitles(records);
    formatter.setEventsWithOriginals(records);
  }
  log(std::string(textsOf(type).word) + " Ended");
}

void myController::emptyAndOuit() {
  log("Annivo emptying calendar");
  platform_.appPreferences().setAppValue(keys::kAppRunning, false, kParentDomain);
  (void)platform_.appPreferences().appSynchronize(kParentDomain);  // Logged where it fails.
  // One writer at a time: two would hold the ledger open side by side.
  myCalendarItems.reset();
  myCalendarItems = std::make_unique<ZPKCalendarItems>(platform_);
  myCalendarItems->removeOtherEvents();
  log("Annivo ending");
  platform_.application().terminate();
}

void myController::openParentAndOuit() {
  NSWorkspace& workspace = platform_.workspace();
  if (const auto path = workspace.absolutePathForAppBundleWithIdentifier(kParentDomain)) {
    (void)workspace.launchApplication(*path);
  }
  platform_.application().terminate();
}

void myController::endIfPreferencesCannotBeUsed() {
  bool usable = true;
  for (const char* domain : {kParentDomain, kAgentDomain}) {
    if (const Error* failure = platform_.preferenceDomains().failure(domain)) {
      Error error = *failure;
      error.failureReason += " Nothing was changed; the next run that can read it goes on.";
      platform_.application().presentError(error);
      usable = false;
    }
  }
  if (!usable) platform_.application().terminate();
}

void myController::log(const std::string& line) {
  if (defaults != nullptr) logOptionally(platform_, line);
}

}  // namespace annivo
