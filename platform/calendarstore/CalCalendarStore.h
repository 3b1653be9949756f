// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/NSCalendarDate.h"
#include "codecs/icalendar/CalEvent.h"
#include "platform/calendarstore/FolderWatch.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/ReadAhead.h"

namespace annivo {

/// One calendar: <UID>.calendar with Info.plist and Events.
class CalCalendar {
 public:
  /// A new calendar, not yet in a store, with its UID.
  static std::shared_ptr<CalCalendar> calendar();
  /// What stands for a calendar that cannot be read for now: not editable, in no store.
  static std::shared_ptr<CalCalendar> unreadable(std::string uid, std::string title);
  [[nodiscard]] const std::string& uid() const { return uid_; }
  [[nodiscard]] const std::string& title() const { return title_; }
  void setTitle(std::string title) { title_ = std::move(title); }
  /// False for Type Subscription, Birthday or Birthdays, for Editable false, and where the Events
  /// folder cannot be written.
  [[nodiscard]] bool isEditable() const { return editable_; }
  /// Whether no event in it is ours, whatever it carries: others fill it (Type Subscription,
  /// Birthday or Birthdays), or it is a copy of another calendar, under the same UID.
  [[nodiscard]] bool isOthers() const { return others_; }
  /// The calendar's folder; "" while it is not in a store.
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  friend class CalCalendarStore;
  std::string uid_;
  std::string title_;
  bool editable_ = true;
  bool others_ = false;
  std::string path_;
  std::shared_ptr<const ReadableFolder> events_;  ///< opened when first needed
};

enum class CalSpan { thisEvent };

/// The calendars of one home, over ~/Library/Calendars. Calendar folders are found once, at the
/// first request; events are read one at a time, when asked for, and none is kept.
///
/// Absent, unreadable and malformed are three different things. Absent is what is known not to be
/// there. Unreadable is what may be there: a file or folder that the system does not give us, and
/// a malformed file that was changed within the last day, which somebody may still be writing.
/// Malformed is an event file that was read and cannot be parsed, or is over 1 MiB. What is
/// unreadable or malformed is named in a log line.
class CalCalendarStore {
 public:
  CalCalendarStore(NSFileManager& files, const Clock& clock, Log& log, NSTimeZone zone,
                   std::string home);
  ~CalCalendarStore();

  [[nodiscard]] const std::vector<std::shared_ptr<CalCalendar>>& calendars();
  /// The calendar with that UID. Absent also for "" and, with a log line, UIDs that are no file
  /// name; unreadable when it may be among folders that could not be read. Of several with the same
  /// UID the one whose folder is named after it, else the last in the order of a walk.
  [[nodiscard]] Result<std::shared_ptr<CalCalendar>> findCalendar(const std::string& uid);
  /// The same; null for any error.
  [[nodiscard]] std::shared_ptr<CalCalendar> calendarWithUID(const std::string& uid);
  /// Adds a new calendar with its Info.plist and Events. The folder is made whole under another
  /// name and then renamed, so that a calendar is there complete or not at all.
  Result<void> saveCalendar(const std::shared_ptr<CalCalendar>& calendar);

  /// The event with that UID that stands for an occurrence. In the occurrence's own calendar that
  /// is whatever has the UID; in others, where somebody may have put a copy, only what carries the
  /// identity. Found by file name first ("<uid>.ics"), and only where that fails by an index over
  /// all files, built once. Malformed only when the file of that name in its own calendar is.
  [[nodiscard]] Result<std::shared_ptr<CalEvent>> findEvent(const std::string& uid,
                                                            const LedgerIdentity& identity);
  /// The event with that UID in whichever calendar; null for any error.
  [[nodiscard]] std::shared_ptr<CalEvent> eventWithUID(const std::string& uid);
  /// Renames the malformed file of that event in its own calendar (NSFileManager::setAside), so
  /// that it is no event file any more.
  Result<void> setEventAside(const std::string& uid, const std::string& calendarUID);
  /// The events that findEvent will be asked for after the ones of the last call. Those that lie
  /// in that calendar are read meanwhile. No result depends on it.
  void readAhead(CalCalendar& calendar, std::vector<std::string> uids);
  /// Writes a new event into its calendar, or the changed properties of one that is in the store
  /// into its file, all other lines of which stay byte for byte. The error names the file. A file
  /// above the limit is refused.
  Result<void> saveEvent(CalEvent& event, CalSpan span);
  /// Removes the event's file; where the file holds other events too, only this one from it. Ok
  /// when the event is gone already.
  Result<void> removeEvent(CalEvent& event, CalSpan span);

  /// All events that overlap [start, end] in the given calendars. A recurring event counts once, by
  /// its first occurrence.
  [[nodiscard]] std::vector<std::shared_ptr<CalEvent>> events(
      Date start, Date end, const std::vector<std::shared_ptr<CalCalendar>>& calendars);

  /// Events of ours, and whether all that may be one could be looked at.
  struct OwnEvents {
    std::vector<std::shared_ptr<CalEvent>> events;
    bool complete = true;
  };
  /// Every event of the calendars, but for others' ones, whose file carries a ledger identity.
  /// Reads all event files but those named after a UID that `isKnown`.
  [[nodiscard]] OwnEvents ownEvents(
      const std::vector<std::shared_ptr<CalCalendar>>& calendars,
      const std::function<bool(const std::string& uid)>& isKnown = nullptr);

  /// Removes what a killed run or a power loss left half written in the Events folders: temporary
  /// files and event files that break off before their end, where their name or what is left in
  /// them says that they are ours. Reads all event files.
  void removeRemains();

  /// Begins to watch the events of a calendar, before any is read.
  void watch(const CalCalendar& calendar);
  /// Whether another program has made, replaced or removed an event file of a watched calendar
  /// since, as the time of its folder tells.
  [[nodiscard]] bool wasChangedByOthers() { return watch_.sawOthers(); }

  /// Makes all that was written durable. Does nothing when nothing was. Where very much is written,
  /// another thread begins with it before.
  Result<void> synchronize();

 private:
  using Calendar = std::shared_ptr<CalCalendar>;
  using Event = std::shared_ptr<CalEvent>;
  struct Folders;
  struct Index;
  Folders& folders();
  void findCalendars(const std::string& folder, int depth);
  void addCalendarAt(const std::string& path, const std::string& name, int depth);
  Result<void> makeCalendar(const CalCalendar& calendar, const std::string& path);
  /// Logs what could not be read and that calendars may be missing for it.
  void noteUnread(Error error);

  [[nodiscard]] Result<std::string> contentsInFolder(CalCalendar& calendar,
                                                     const std::string& name) const;
  [[nodiscard]] Result<std::vector<Event>> eventsInFile(const Calendar& calendar,
                                                        const std::string& name) const;
  [[nodiscard]] Error unusable(const std::string& path, const std::optional<Error>& failure) const;
  [[nodiscard]] Result<Event> eventInFile(const Calendar& calendar, const std::string& name,
                                          const std::string& uid) const;
  [[nodiscard]] Result<Event> findMoved(const std::string& uid, const Calendar& own,
                                        const LedgerIdentity* identity);
  [[nodiscard]] Result<Event> findIndexed(const Calendar& calendar, const std::string& uid);
  const std::shared_ptr<const ReadableFolder>& openedEvents(CalCalendar& calendar) const;
  /// `stem` is the name without ".ics". What was wrong, and is logged, when the files could not be
  /// listed.
  std::optional<Error> forEachEventFile(
      const Calendar& calendar,
      const std::function<void(const std::string& name, const std::string& stem)>& visit) const;
  /// Whether a calendar's files not named by us were looked at for renamed events, or all.
  enum class Indexed { none, notNamedByUs, all };
  void buildIndex(const Calendar& calendar, Indexed files);
  [[nodiscard]] bool isRemains(const std::string& path) const;
  Result<void> writeEventFile(const CalCalendar& calendar, const std::string& path,
                              std::string_view text);
  void syncBehind();
  void finishSyncingBehind();
  Result<void> saveChanges(CalEvent& event);
  Result<void> removeFromFile(const std::string& path, const std::string& uid);

  NSFileManager& files_;
  const Clock& clock_;
  Log& log_;
  NSTimeZone zone_;
  std::string home_;
  std::string root_;
  mutable std::string memory_;  ///< of the last event file, for the next
  bool wrote_ = false;
  FolderWatch watch_;
  std::size_t writtenFiles_ = 0;
  std::future<Result<void>> syncingBehind_;
  Result<void> syncedBehind_;  ///< how that went so far
  std::unique_ptr<Folders> folders_;
  std::unique_ptr<Index> index_;
  mutable ReadAhead ahead_;
};

}  // namespace annivo
