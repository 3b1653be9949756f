// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/coredata/NSManagedObjectContext.h"

namespace annivo {

/// Opens a contacts store for reading; nothing is ever written to it.
[[nodiscard]] Result<std::unique_ptr<NSPersistentStore>> openSQLiteStore(
    const NSManagedObjectModel& model, const StoreEnvironment& environment,
    const std::string& path);

}  // namespace annivo
