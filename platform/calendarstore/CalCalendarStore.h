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
  [[nodiscard]] const std::string& uid() const { return uid_; }
  [[nodiscard]] const std::string& title() const { return title_; }
  void setTitle(std::string title) { title_ = std::move(title); }
  /// False for Type Subscription, Birthday or Birthdays, for Editable false, and where the Events
  /// folder cannot be written.
  [[nodiscard]] bool isEditable() const { return editable_; }
  /// The calendar's folder; "" while it is not in a store.
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  friend class CalCalendarStore;
  std::string uid_;
  std::string title_;
  bool editable_ = true;
  std::string path_;
  std::shared_ptr<const ReadableFolder> events_;  ///< opened when first needed
};

enum class CalSpan { thisEvent };

/// The calendars of one home, over ~/Library/Calendars. Calendar folders are found once, at the
/// first request; events are read one at a time, when asked for, and none is kept.
///
/// An event file that is not one (a folder, a link, a FIFO), is over 1 MiB or cannot be parsed
/// counts as not there: it is named in a log line and never changed or removed.
class CalCalendarStore {
 public:
  CalCalendarStore(NSFileManager& files, const Clock& clock, Log& log, NSTimeZone zone,
                   std::string home);
  ~CalCalendarStore();

  [[nodiscard]] const std::vector<std::shared_ptr<CalCalendar>>& calendars();
  /// Null when there is none (for "" and, with a log line, UIDs that are no file name too). Of two
  /// with the same UID the last in the order of a walk through the folders.
  [[nodiscard]] std::shared_ptr<CalCalendar> calendarWithUID(const std::string& uid);
  /// Adds a new calendar with its Info.plist and Events. The folder is made whole under another
  /// name and then renamed, so that a calendar is there complete or not at all.
  Result<void> saveCalendar(const std::shared_ptr<CalCalendar>& calendar);

  /// The event with that UID, in whichever calendar; null when there is none, and, with a log line
  /// that names the file, when its file cannot be read or parsed. Found by file name first
  /// ("<uid>.ics"), and only where that fails by an index over all files, built once.
  [[nodiscard]] std::shared_ptr<CalEvent> eventWithUID(const std::string& uid);
  /// The events that eventWithUID will be asked for after the ones of the last call. Those that lie
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

  /// Every event of ours: those whose file carries a ledger identity. Reads all event files.
  [[nodiscard]] std::vector<std::shared_ptr<CalEvent>> eventsWithLedgerIdentity();

  /// The event of ours with that ledger identity, null when there is none. Built on an index that
  /// reads all event files once.
  [[nodiscard]] std::shared_ptr<CalEvent> eventWithLedgerIdentity(const LedgerIdentity& identity);

  /// Takes away what a killed run or a power loss left half written in the Events folders:
  /// temporary files, and event files begun by us that break off before their end. Lists all Events
  /// folders and, with `Remains::damagedEvents`, reads all event files.
  enum class Remains { temporaries, damagedEvents };
  void removeRemains(Remains remains);

  /// Begins to watch the events of a calendar, before any is read.
  void watch(const CalCalendar& calendar);
  /// Whether another program has made, replaced or removed an event file of a watched calendar
  /// since, as the time of its folder tells.
  [[nodiscard]] bool wasChangedByOthers() { return watch_.sawOthers(); }

  /// Makes all that was written durable. Does nothing when nothing was. Where very much is written,
  /// another thread begins with it before.
  Result<void> synchronize();

 private:
  struct Folders;
  struct Index;
  Folders& folders();
  void findCalendars(const std::string& folder, int depth);
  void addCalendarAt(const std::string& path, const std::string& name, int depth);
  Result<void> makeCalendar(const CalCalendar& calendar, const std::string& path);
  [[nodiscard]] Result<std::string> contentsInFolder(CalCalendar& calendar,
                                                     const std::string& name) const;
  [[nodiscard]] std::optional<std::string> contentsOfEventFile(const std::string& path) const;
  [[nodiscard]] std::optional<std::string> loggedIfUnreadable(Result<std::string> contents) const;
  [[nodiscard]] std::shared_ptr<CalEvent> eventInFile(const std::shared_ptr<CalCalendar>& calendar,
                                                      const std::string& name,
                                                      const std::string& uid) const;
  const std::shared_ptr<const ReadableFolder>& openedEvents(CalCalendar& calendar) const;
  void forEachFile(const std::shared_ptr<CalCalendar>& calendar,
                   const std::function<void(const std::string& name)>& visit) const;
  void forEachEvent(const std::shared_ptr<CalCalendar>& calendar,
                    const std::function<void(const std::string& name,
                                             const std::shared_ptr<CalEvent>&)>& visit) const;
  void buildIndex();
  void buildIdentityIndex();
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
