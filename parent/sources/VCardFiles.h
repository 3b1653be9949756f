// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/Error.h"
#include "codecs/vcard/VCardSplitter.h"

namespace annivo {

struct VCardFile {
  std::string path;
  std::uint64_t size = 0;
};

/// The files that `paths` name: a file itself whatever its name, a folder with all that lies under
/// it and ends in ".vcf" or ".vcard", in the order of their names; hidden entries are passed over
/// and links to folders not entered. The error names the first path that is missing or cannot be
/// read.
[[nodiscard]] Result<std::vector<VCardFile>> findVCardFiles(const std::vector<std::string>& paths);

/// Reads a file piece by piece and delivers its cards. UTF-16 with a byte-order mark is read too.
/// `progress` gets the number of bytes of each piece.
[[nodiscard]] Result<void> readVCardFile(const std::string& path,
                                         const std::function<void(VCardText)>& deliver,
                                         const std::function<void(std::size_t)>& progress);

}  // namespace annivo
