// SPDX-License-Identifier: MIT
#include "parent/runs/Preview.h"

#include <algorithm>
#include <set>

#include "contacts/ZPKAddressBookDates.h"
#include "format/Occurrences.h"
#include "parent/runs/OverlayFileManager.h"
#include "parent/settings/Contacts.h"
#include "parent/settings/Words.h"
#include "run/myController.h"

namespace annivo {

namespace {

/// Keeps lines instead of writing them.
class KeepingLog final : public Log {
 public:
  explicit KeepingLog(std::vector<std::string>& lines) : lines_(lines) {}
  void write(std::string_view text) override { lines_.emplace_back(text); }

 private:
  std::vector<std::string>& lines_;
};

/// Keeps what would be shown and goes on as when it is dismissed.
class KeepingAlerts final : public Alerts {
 public:
  explicit KeepingAlerts(std::vector<std::string>& messages) : messages_(messages) {}
  AlertAnswer runModal(const NSAlert& alert) override {
    std::string message = alert.messageText;
    if (!alert.informativeText.empty()) message += ": " + alert.informativeText;
    messages_.push_back(std::move(message));
    return AlertAnswer::alternate;
  }

 private:
  std::vector<std::string>& messages_;
};

class NoLauncher final : public Launcher {
 public:
  Result<void> launch(const std::string&, const std::vector<std::string>&) override { return {}; }
};

/// Why contact dates yield no event, by the choices in force after the run.
class Reasons {
 public:
  using Reason = DateWithoutEvent::Reason;

  Reasons(Platform& platform, ZPKAddressBookDates& dates)
      : platform_(platform),
        prefs_(platform),
        dates_(dates),
        birthdays_(calendarProblem(CalendarType::birthdays)),
        others_(calendarProblem(CalendarType::anniversaries)) {}

  std::optional<Reason> of(const ContactDateRecord& record, CalendarType kind) {
    const std::string& group = dates_.filterGroupID();
    if (!group.empty() &&
        std::find(record.groups.begin(), record.groups.end(), group) == record.groups.end()) {
      return Reason::notInGroup;
    }
    if (!dates_.filterLabels().empty() && dates_.filterArrayByLabels({record}).empty()) {
      return Reason::labelExcluded;
    }
    const auto& problem = kind == CalendarType::birthdays ? birthdays_ : others_;
    if (problem) return problem;
    if (!record.thisDate) return Reason::noDay;
    const Date now = platform_.clock().now();
    if (*record.thisDate > now &&
        occurrences(*record.thisDate, now, platform_.defaultTimeZone()).empty()) {
      return Reason::tooFarAhead;
    }
    return std::nullopt;
  }

 private:
  std::optional<Reason> calendarProblem(CalendarType type) {
    const std::string uid = prefs_.text(textsOf(type).uidKey);
    if (uid.empty()) return Reason::noCalendar;
    const auto calendar = platform_.defaultCalendarStore().calendarWithUID(uid);
    if (!calendar) return Reason::calendarMissing;
    return calendar->isEditable() ? std::nullopt : std::optional(Reason::calendarLocked);
  }

  Platform& platform_;
  AnvCalPrefs prefs_;
  ZPKAddressBookDates& dates_;
  std::optional<Reason> birthdays_, others_;
};

std::vector<DateWithoutEvent> datesLeftOut(Platform& platform, ZPKAddressBookDates& dates) {
  std::vector<DateWithoutEvent> leftOut;
  Reasons reasons(platform, dates);
  ZPKQueryAddressBook& book = dates.addressBook();
  const auto examine = [&](const std::vector<ContactDateRecord>& records, CalendarType kind) {
    for (const ContactDateRecord& record : records) {
      const auto why = reasons.of(record, kind);
      if (!why) continue;
      leftOut.push_back({.person = personName(record),
                         .label = shownLabel(record.dateType, platform),
                         .date = record.thisDate,
                         .kind = kind,
                         .reason = *why});
    }
  };
  examine(book.birthdayDates(), CalendarType::birthdays);
  examine(book.anniversaryDates(), CalendarType::anniversaries);
  return leftOut;
}

std::vector<std::string> newCalendars(Session& session, Platform& after) {
  std::set<std::string> known;
  for (const auto& calendar : session.platform.defaultCalendarStore().calendars()) {
    known.insert(calendar->uid());
  }
  std::vector<std::string> titles;
  for (const auto& calendar : after.defaultCalendarStore().calendars()) {
    if (!known.contains(calendar->uid())) titles.push_back(calendar->title());
  }
  return titles;
}

bool isOn(Platform& platform) {
  AnvCalPrefs prefs(platform);
  return prefs.prefs()[keys::kAppRunning].isTheTrueObject();
}

/// The agent's controller, which at the end of its run is asked about the dates that it read.
class PreviewedController final : public NSApplicationDelegate {
 public:
  PreviewedController(Platform& platform, Preview& preview, bool& cameToItsEnd)
      : platform_(platform), preview_(preview), end_(cameToItsEnd), controller_(platform) {}

  void awakeFromNib(NSWindow window) override { controller_.awakeFromNib(window); }
  void applicationDidFinishLaunching() override { controller_.applicationDidFinishLaunching(); }
  TerminateReply applicationShouldTerminate() override {
    preview_.switchedOff = !isOn(platform_);
    if (ZPKAddressBookDates* dates = controller_.dates(); dates && !preview_.switchedOff) {
      preview_.leftOut = datesLeftOut(platform_, *dates);
    }
    end_ = true;
    return controller_.applicationShouldTerminate();
  }

 private:
  Platform& platform_;
  Preview& preview_;
  bool& end_;
  myController controller_;
};

}  // namespace

Preview previewRun(Session& session) {
  Platform& real = session.platform;
  Preview preview;
  std::vector<std::string> lines;
  PlatformParts parts = agentParts(
      real.homeDirectory(), agentExecutable(real.fileManager(), parentBundlePath(session)),
      session.environment, std::make_unique<BorrowedClock>(real.clock()));
  auto overlay = std::make_unique<OverlayFileManager>(real.fileManager(), real.clock());
  OverlayFileManager& files = *overlay;
  parts.files = std::move(overlay);
  parts.log = std::make_unique<KeepingLog>(lines);
  parts.alerts = std::make_unique<KeepingAlerts>(preview.messages);
  parts.launcher = std::make_unique<NoLauncher>();
  Platform platform(std::move(parts));

  // A run that is started now finds the parent just launched; a preview looks for no update.
  setLaunch(platform);
  platform.appPreferences().setAppValue(keys::kSUEnableAutomaticChecks, false, kParentDomain);
  DelegateClass agent = myController::delegateClass(platform);
  bool cameToItsEnd = false;
  agent.make = [&] {
    return std::make_unique<PreviewedController>(platform, preview, cameToItsEnd);
  };
  const int status = platform.application().main(platform.mainBundle(), agent);
  // One that presented a failure is shown with it.
  if (status != 0 && !cameToItsEnd) {
    throw Refusal{lines.empty() ? translated("the agent cannot run")
                                : translated("the agent cannot run: {1}", printable(lines.back()))};
  }
  preview.presentedFailure = platform.application().presentedFailure();
  preview.changes = eventChanges(real, real.fileManager(), files, files.changedFiles());
  preview.newCalendars = newCalendars(session, platform);
  return preview;
}

}  // namespace annivo
