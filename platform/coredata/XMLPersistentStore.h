// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/coredata/NSManagedObjectContext.h"
#include "platform/coredata/XMLStoreFile.h"
#include "platform/coredata/XMLStoreIndex.h"
#include "platform/coredata/XMLStoreJournal.h"

namespace annivo {

/// An XML store over one file and the journal beside it, "<file>.journal".
///
/// 1. Opened without reading anything from disk.
/// 2. load() reads the file and brings in the journal that an interrupted process left.
/// 3. The first save writes the file, if there is none, or else begins a journal; each further save
///    appends one entry to that.
/// 4. close() writes the file with all that was saved, durably, and removes the journal.
///
/// Without close() nothing that was saved is lost: the next load() finds it in the journal. A save
/// that finds file or journal changed by somebody else fails and changes neither; so does a close,
/// unless what was saved is in them. A file that is a link stays one: what it stands for is read
/// and replaced, the journal lies beside the link.
class XMLPersistentStore final : public NSPersistentStore {
 public:
  XMLPersistentStore(const NSManagedObjectModel& model, StoreEnvironment environment,
                     std::string path);

  Result<void> load() override;
  void beginLoading() override;
  const std::optional<Error>& damage() const override { return damage_; }
  bool isNew() const override { return !fileStamp_ && !damage_; }
  std::vector<std::string> notes() const override { return content_.notes; }
  Result<std::vector<NSManagedObject*>> execute(const NSFetchRequest& request) override;
  NSManagedObject* insert(const NSEntityDescription& entity) override;
  void set(NSManagedObject& object, std::string_view attribute, const PropertyList& value) override;
  void remove(NSManagedObject& object) override;
  bool hasChanges() const override { return !pending_.empty(); }
  Result<void> save() override;
  Result<void> close() override;

 private:
  /// What tells that a file is the one we know, without reading it.
  struct Stamp {
    std::uint64_t size = 0;
    Date modified{};
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };

  // Loading.
  Result<void> read();
  Result<void> readJournal();
  void replay(XMLStoreJournal journal);
  bool apply(XMLStoreChange& change);
  Result<std::optional<Stamp>> stampOf(const std::string& path) const;
  void reportDamage(const std::string& path, const std::string& reason);

  // Saving.
  void markPending(XMLStoreRow& row);
  [[nodiscard]] std::string elementsOf(const std::vector<XMLStoreRow*>& rows) const;
  Result<void> setDamagedAside();
  Result<void> writeNewFile();
  Result<void> beginJournal();
  Result<void> appendToJournal();
  Result<void> fold();
  [[nodiscard]] bool isSavedByOthers() const;
  [[nodiscard]] Result<bool> isUntouched() const;
  [[nodiscard]] Error changedByOthers() const;
  void noteFile(std::string_view bytes);

  const NSManagedObjectModel& model_;
  StoreEnvironment environment_;
  NSFileManager& files_;
  std::string givenPath_;
  std::string path_;  ///< of the file, also where the given path is a link's
  std::string journalPath_;
  std::optional<Result<void>> loaded_;
  std::optional<Error> damage_;
  std::vector<std::pair<std::string, std::string>> aside_;  ///< damaged files and their new names
  std::optional<Error> readOnly_;                           ///< why nothing may be written

  XMLStoreContent content_;
  XMLStoreIndex index_;
  std::vector<XMLStoreRow*> pending_;  ///< changed since the last save
  std::vector<XMLStoreRow*> changed_;  ///< what the journal says beyond the file

  XMLStoreBase base_;
  std::optional<Stamp> fileStamp_;            ///< nothing: there is no file
  std::optional<std::uint64_t> journalSize_;  ///< nothing: there is no journal
  std::unique_ptr<AppendingFile> journal_;
  /// While this thread runs, it owns all other members. It is the last member, so that it ends
  /// before they are destroyed.
  std::future<Result<void>> loading_;
};

}  // namespace annivo
