// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "platform/coredata/NSManagedObject.h"

namespace annivo {

/// One object of an XML store, with its position in the file.
struct XMLStoreRow : NSManagedObject {
  using NSManagedObject::NSManagedObject;
  std::uint32_t offset = 0;  ///< of its element in the file
  std::uint32_t length = 0;  ///< 0: the file does not hold it
  bool pending = false;      ///< changed since the last save
  bool changed = false;      ///< differs from the file
  bool saved = false;        ///< the file or the journal holds it
  bool removed = false;
};

/// The limits within which a store file is read; what lies beyond is malformed.
inline constexpr std::size_t kXMLStoreLimit = std::size_t{256} * 1024 * 1024;
inline constexpr std::size_t kXMLObjectLimit = std::size_t{1024} * 1024;
inline constexpr std::size_t kXMLObjectCount = 1'000'000;
/// The version that this program writes; files of a higher one are never written.
inline constexpr std::int64_t kXMLStoreVersion = 134481920;

/// The databaseInfo of a store file.
struct XMLStoreInfo {
  std::int64_t version = kXMLStoreVersion;
  std::string uuid;
  std::int64_t nextObjectID = 101;  ///< the highest number used so far
  std::int64_t generation = 0;      ///< how often the file was written; kept in the metadata
};

/// What a store file holds. Objects of entities that the model does not know, attributes that it
/// lacks and all other text are in the file only, where they stay.
struct XMLStoreContent {
  XMLStoreInfo info;
  std::string infoText;  ///< the databaseInfo element as it stands
  std::size_t infoOffset = 0;
  std::size_t rootEnd = 0;       ///< where the root's end tag begins
  std::deque<XMLStoreRow> rows;  ///< in ascending objectID
  std::vector<std::string> notes;
};

/// Reads a store file; the error's reason says what is wrong.
[[nodiscard]] Result<XMLStoreContent> parseXMLStore(std::string_view bytes,
                                                    const NSManagedObjectModel& model);

/// One element of a fragment: an object to be there as it stands, or, without one, a removal.
struct XMLStoreChange {
  std::int64_t objectID = 0;
  const NSEntityDescription* entity = nullptr;  ///< null: removed
  std::vector<PropertyList> attributes;
};
/// Reads a run of object and removal elements, as the journal holds them.
[[nodiscard]] Result<std::vector<XMLStoreChange>> parseXMLChanges(
    std::string_view fragment, const NSManagedObjectModel& model);

/// Whether an element can be taken apart with all that it holds: comments, processing instructions.
[[nodiscard]] bool isWellFormedXML(std::string_view element);

/// The size in bytes that a ledger object rarely exceeds; used to reserve memory.
inline constexpr std::size_t kXMLUsualObject = 420;
/// Appends the object's element, without white space around it.
void appendXMLObject(std::string& out, const NSManagedObject& object);
void appendXMLRemoval(std::string& out, std::int64_t objectID);

/// A new store file with the rows that are not removed; fills in where everything stands.
[[nodiscard]] std::string newXMLStore(XMLStoreContent& content);
/// The file `bytes`, which was read as `content`, with the rows `changed` brought in and its
/// databaseInfo brought up to `info`; everything else byte for byte.
[[nodiscard]] std::string editedXMLStore(std::string_view bytes, const XMLStoreContent& content,
                                         const XMLStoreInfo& info,
                                         const std::vector<XMLStoreRow*>& changed);

}  // namespace annivo
