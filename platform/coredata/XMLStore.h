// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/coredata/NSManagedObjectContext.h"

namespace annivo {

/// Opens the XML object store at `path`; its content is read at the first use. See
/// docs/formats/ledger.md for the form of the file and of the journal beside it.
[[nodiscard]] Result<std::unique_ptr<NSPersistentStore>> openXMLStore(
    const NSManagedObjectModel& model, const StoreEnvironment& environment,
    const std::string& path);

}  // namespace annivo
