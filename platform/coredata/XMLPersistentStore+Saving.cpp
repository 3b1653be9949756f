// SPDX-License-Identifier: MIT
#include <algorithm>

#include "base/UUID.h"
#include "platform/coredata/ContentHash.h"
#include "platform/coredata/XMLPersistentStore.h"

namespace annivo {

namespace {

bool haveSameValues(const NSManagedObject& one, const NSManagedObject& other) {
  if (&one.entity() != &other.entity()) return false;
  for (std::size_t i = 0; i < one.entity().attributes.size(); ++i) {
    if (one.attributeAt(i) != other.attributeAt(i)) return false;
  }
  return true;
}

}  // namespace

Result<void> XMLPersistentStore::save() {
  if (!hasChanges()) return {};
  if (readOnly_) return *readOnly_;
  if (auto moved = setDamagedAside(); !moved) return moved;
  auto saved = !fileStamp_ ? writeNewFile() : (journal_ ? appendToJournal() : beginJournal());
  if (!saved) return saved;
  for (XMLStoreRow* row : pending_) {
    if (fileStamp_ && journal_ && !row->changed && (row->saved || !row->removed)) {
      row->changed = true;
      changed_.push_back(row);
    }
    row->pending = false;
    row->saved = !row->removed;
  }
  pending_.clear();
  return {};
}

std::string XMLPersistentStore::elementsOf(const std::vector<XMLStoreRow*>& rows) const {
  std::string elements;
  elements.reserve(rows.size() * kXMLUsualObject);
  for (const XMLStoreRow* row : rows) {
    if (!row->removed) {
      appendXMLObject(elements, *row);
    } else if (row->saved || row->length > 0) {
      appendXMLRemoval(elements, row->objectID());
    }
  }
  return elements;
}

Result<void> XMLPersistentStore::setDamagedAside() {
  while (!aside_.empty()) {
    const auto& [from, to] = aside_.back();
    auto moved = files_.rename(from, to);
    if (!moved && moved.error().kind != Error::Kind::absent) return moved;
    (from == path_ ? fileStamp_.reset() : journalSize_.reset());
    aside_.pop_back();
  }
  return {};
}

Result<void> XMLPersistentStore::writeNewFile() {
  const auto untouched = isUntouched();
  if (!untouched) return untouched.error();
  if (!*untouched) return changedByOthers();
  content_.info.uuid = freshUUID();
  content_.info.generation = 1;
  const std::string text = newXMLStore(content_);
  if (auto written = files_.writeDurably(path_, text); !written) return written;
  const auto stamp = stampOf(path_);
  if (!stamp) return stamp.error();
  fileStamp_ = *stamp;
  noteFile(text);
  return {};
}

/// A journal is written whole at first and again after anything that may have left a part of an
/// entry at its end; so an entry never follows a torn one.
Result<void> XMLPersistentStore::beginJournal() {
  const auto untouched = isUntouched();
  if (!untouched) return untouched.error();
  if (!*untouched) return changedByOthers();
  std::string text = journalHeader(base_);
  if (const auto before = elementsOf(changed_); !before.empty()) text += journalEntry(before);
  const auto elements = elementsOf(pending_);
  if (elements.empty() && !journalSize_) return {};
  if (!elements.empty()) text += journalEntry(elements);
  if (auto written = files_.writeAtomically(journalPath_, text); !written) return written;
  journalSize_ = text.size();
  auto journal = files_.openForAppending(journalPath_);
  if (!journal) return journal.error();
  journal_ = std::move(*journal);
  return {};
}

Result<void> XMLPersistentStore::appendToJournal() {
  const auto elements = elementsOf(pending_);
  if (elements.empty()) return {};
  const auto stamp = stampOf(journalPath_);
  if (!stamp) return stamp.error();
  if (!*stamp || (*stamp)->size != journalSize_) return changedByOthers();
  const std::string entry = journalEntry(elements);
  if (auto appended = journal_->append(entry); !appended) {
    journal_.reset();
    const auto left = stampOf(journalPath_);
    if (left && *left) journalSize_ = (*left)->size;
    return appended;
  }
  *journalSize_ += entry.size();
  return {};
}

Result<bool> XMLPersistentStore::isUntouched() const {
  const auto file = stampOf(path_);
  if (!file) return file.error();
  const auto journal = stampOf(journalPath_);
  if (!journal) return journal.error();
  const auto size = *journal ? std::optional((*journal)->size) : std::nullopt;
  return *file == fileStamp_ && size == journalSize_;
}

Error XMLPersistentStore::changedByOthers() const {
  return {.kind = Error::Kind::refused,
          .domain = "NSCocoaErrorDomain",
          .code = 133020,
          .description = "The changes could not be saved to " + path_ + ".",
          .failureReason = "Another program has changed it since it was read."};
}

Result<void> XMLPersistentStore::close() {
  if (!loaded_ || !*loaded_ || hasChanges() || readOnly_) return {};
  journal_.reset();
  if (auto moved = setDamagedAside(); !moved) return moved;
  const auto untouched = isUntouched();
  if (!untouched) return untouched.error();
  if (!*untouched) return isSavedByOthers() ? Result<void>() : changedByOthers();
  if (!changed_.empty()) {
    if (auto folded = fold(); !folded) return folded;
  }
  if (!journalSize_) return {};
  auto removed = files_.removeFile(journalPath_);
  if (!removed && removed.error().kind != Error::Kind::absent) return removed;
  journalSize_.reset();
  return {};
}

/// Whether what this store saved is there though another program has changed file or journal: one
/// that opened them since has it from the journal.
bool XMLPersistentStore::isSavedByOthers() const {
  XMLPersistentStore found(model_, environment_, givenPath_);
  if (!found.load() || found.damage_) return false;
  if (changed_.empty()) return found.base_ == base_;
  const auto& rows = found.content_.rows;
  return std::all_of(changed_.begin(), changed_.end(), [&](const XMLStoreRow* row) {
    const auto same = std::lower_bound(
        rows.begin(), rows.end(), row->objectID(),
        [](const XMLStoreRow& other, std::int64_t id) { return other.objectID() < id; });
    const bool isThere =
        same != rows.end() && same->objectID() == row->objectID() && !same->removed;
    return isThere ? !row->removed && haveSameValues(*row, *same) : row->removed;
  });
}

Result<void> XMLPersistentStore::fold() {
  const auto bytes = files_.contentsAtPath(path_, kXMLStoreLimit);
  if (!bytes) return bytes.error();
  if (bytes->size() != base_.size || contentHash(*bytes) != base_.hash) return changedByOthers();
  XMLStoreInfo info = content_.info;
  ++info.generation;
  const std::string text = editedXMLStore(*bytes, content_, info, changed_);
  if (auto written = files_.writeDurably(path_, text); !written) return written;
  changed_.clear();
  return {};
}

}  // namespace annivo
