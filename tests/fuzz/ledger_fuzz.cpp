// SPDX-License-Identifier: MIT
// Any bytes as a ledger file and as its journal: read without harm; what was read is written and
// read back the same; what the store does not know of a file stays in it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/coredata/XMLStoreFile.h"
#include "platform/coredata/XMLStoreJournal.h"
#include "tests/fuzz/require.h"

namespace annivo {
namespace {

const NSManagedObjectModel& model() {
  static const NSManagedObjectModel loaded = [] {
    PosixFileManager files;
    auto read = NSManagedObjectModel::initWithContentsOfURL(
        files, ANNIVO_SOURCE_DIR "/resources/agent/Resources/Ledger.mom");
    if (!read) std::abort();
    return std::move(*read);
  }();
  return loaded;
}

bool sameValues(const NSManagedObject& a, const NSManagedObject& b) {
  for (std::size_t i = 0; i < a.entity().attributes.size(); ++i) {
    if (!(a.attributeAt(i) == b.attributeAt(i))) return false;
  }
  return a.objectID() == b.objectID();
}

using fuzz::require;

void checkFile(std::string_view bytes) {
  auto content = parseXMLStore(bytes, model());
  if (!content) return;
  // Unchanged rows stay; of the others every second goes and the rest is rewritten.
  std::vector<XMLStoreRow*> changed;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < content->rows.size(); ++i) {
    XMLStoreRow& row = content->rows[i];
    row.removed = i % 3 == 1;
    if (i % 3 != 0) changed.push_back(&row);
    if (!row.removed) ++kept;
  }
  XMLStoreInfo info = content->info;
  ++info.generation;
  const std::string edited = editedXMLStore(bytes, *content, info, changed);
  const auto again = parseXMLStore(edited, model());
  require(again.ok());
  require(again->rows.size() == kept);
  auto row = again->rows.begin();
  for (const auto& before : content->rows) {
    if (!before.removed) require(sameValues(before, *row++));
  }
}

}  // namespace
}  // namespace annivo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  annivo::checkFile(bytes);
  (void)annivo::parseJournal(bytes, annivo::model());
  (void)annivo::parseXMLChanges(bytes, annivo::model());
  return 0;
}
