// SPDX-License-Identifier: MIT
#include <algorithm>

#include "platform/coredata/ContentHash.h"
#include "platform/coredata/XMLPersistentStore.h"
#include "platform/foundation/OtherThread.h"

namespace annivo {

namespace {

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

Result<void> XMLPersistentStore::load() {
  if (!loaded_) loaded_ = loading_.valid() ? loading_.get() : read();
  return *loaded_;
}

void XMLPersistentStore::beginLoading() {
  if (loaded_ || loading_.valid() || !files_.supportsOtherThreads()) return;
  loading_ = onAnotherThread([this] { return read(); });
}

Result<std::optional<XMLPersistentStore::Stamp>> XMLPersistentStore::stampOf(
    const std::string& path) const {
  const auto attributes = files_.attributesAtPath(path, Links::follow);
  if (attributes) return std::optional(Stamp{attributes->size, attributes->modificationDate});
  if (attributes.error().kind == Error::Kind::absent) return std::optional<Stamp>();
  return attributes.error();
}

Result<void> XMLPersistentStore::read() {
  auto target = files_.linkTarget(path_);
  if (!target) return target.error();
  path_ = *std::move(target);
  const auto stamp = stampOf(path_);
  if (!stamp) return stamp.error();
  if (*stamp) {
    const auto bytes = files_.contentsAtPath(path_, kXMLStoreLimit);
    if (!bytes) return bytes.error();
    fileStamp_ = **stamp;
    auto content = parseXMLStore(*bytes, model_);
    if (content) {
      content_ = std::move(*content);
      noteFile(*bytes);
      if (content_.info.version > kXMLStoreVersion) {
        readOnly_ = Error{.kind = Error::Kind::refused,
                          .domain = "NSCocoaErrorDomain",
                          .code = 134020,
                          .description = "The file " + path_ + " is not changed.",
                          .failureReason = "It was written by a newer version of the program."};
      }
    } else {
      reportDamage(path_, content.error().failureReason);
    }
  }
  return readJournal();
}

Result<void> XMLPersistentStore::readJournal() {
  const auto bytes = files_.contentsAtPath(journalPath_, kXMLStoreLimit);
  if (!bytes && bytes.error().kind == Error::Kind::absent) return {};
  if (!bytes) return bytes.error();
  journalSize_ = bytes->size();
  XMLStoreJournal journal = parseJournal(*bytes, model_);
  if (journal.base.generation < 0) return {};  // It says nothing.
  if (damage_ || !fileStamp_) {
    reportDamage(journalPath_, "The file that it continues is gone.");
  } else if (journal.state == XMLStoreJournal::State::newer) {
    readOnly_ = Error{.kind = Error::Kind::refused,
                      .domain = "NSCocoaErrorDomain",
                      .code = 134020,
                      .description = "The file " + journalPath_ + " is not changed.",
                      .failureReason = "It was written by a newer version of the program."};
  } else if (journal.state == XMLStoreJournal::State::damaged) {
    reportDamage(journalPath_, "It is no journal.");
  } else if (journal.base == base_) {
    replay(std::move(journal));
  } else if (journal.base.generation >= base_.generation) {
    reportDamage(journalPath_, "The file that it continues was replaced by another one.");
  }
  // A journal of an earlier generation was folded into the file already; it goes at the next
  // occasion.
  return {};
}

void XMLPersistentStore::replay(XMLStoreJournal journal) {
  for (XMLStoreChange& change : journal.changes) {
    if (!apply(change)) {
      content_.notes.push_back("The journal " + journalPath_ + " contradicts itself.");
      return;
    }
  }
}

bool XMLPersistentStore::apply(XMLStoreChange& change) {
  auto& rows = content_.rows;
  auto found =
      std::lower_bound(rows.begin(), rows.end(), change.objectID,
                       [](const XMLStoreRow& row, std::int64_t id) { return row.objectID() < id; });
  if (found == rows.end() && change.entity && change.objectID > content_.info.nextObjectID) {
    content_.info.nextObjectID = change.objectID;
    rows.emplace_back(*change.entity, change.objectID);
    found = std::prev(rows.end());
  }
  if (found == rows.end() || found->objectID() != change.objectID) return !change.entity;
  if (change.entity && change.entity != &found->entity()) return false;
  found->removed = change.entity == nullptr;
  found->saved = !found->removed;
  for (std::size_t i = 0; i < change.attributes.size(); ++i) {
    found->attributeAt(i) = std::move(change.attributes[i]);
  }
  if (!found->changed) changed_.push_back(&*found);
  found->changed = true;
  return true;
}

void XMLPersistentStore::reportDamage(const std::string& path, const std::string& reason) {
  const std::string aside = files_.pathAside(path, environment_.clock.now());
  aside_.emplace_back(path, aside);
  if (damage_) return;
  damage_ = Error{.kind = Error::Kind::malformed,
                  .domain = "NSCocoaErrorDomain",
                  .code = 259,
                  .description = "The file " + path + " is damaged and is set aside as \"" +
                                 nameOf(aside) + "\".",
                  .failureReason = reason};
}

void XMLPersistentStore::noteFile(std::string_view bytes) {
  base_ = {
      .generation = content_.info.generation, .size = bytes.size(), .hash = contentHash(bytes)};
}

}  // namespace annivo
