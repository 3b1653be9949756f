// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "parent/sources/ImportedSource.h"
#include "platform/Platform.h"

namespace annivo {

struct ImportRequest {
  std::vector<std::string> paths;
  std::string source;
  /// The UID of the own card; without one, that of the source's last import, if it is still there.
  std::optional<std::string> me;
};

struct ImportReport {
  std::size_t people = 0;
  std::size_t dates = 0;
  std::size_t groups = 0;
  std::vector<LeftOut> skippedCards;
  std::vector<LeftOut> skippedDates;
  bool changed = false;  ///< whether the source differs from what it held before
};

/// How far an import is, in bytes.
using ImportProgress = std::function<void(std::uint64_t done, std::uint64_t all)>;

/// Reads vCards into a source of the person's address book, whose content it replaces as a whole.
///
/// Its folder is SourceFolder's; a failure leaves the old content intact.
[[nodiscard]] Result<ImportReport> importVCards(Platform& platform, const ImportRequest& request,
                                                const ImportProgress& progress);

}  // namespace annivo
