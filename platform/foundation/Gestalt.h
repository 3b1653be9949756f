// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/foundation/NSFileManager.h"

namespace annivo {

inline constexpr std::uint32_t kGestaltSystemVersion = 0x73797376;  // 'sysv'

/// System queries, answered from <systemFolder>/Library/CoreServices/SystemVersion.plist.
class Gestalt {
 public:
  Gestalt(const NSFileManager& files, std::string systemFolder);
  /// For 'sysv': 0x1000 + 0x10 * M + N for ProductVersion 10.M.N (".N" may be missing and is then
  /// 0), M and N held at 15. Nothing (a failed query) for another selector, and for a file that is
  /// missing, unreadable or of another form.
  [[nodiscard]] std::optional<std::int32_t> query(std::uint32_t selector) const;

 private:
  const NSFileManager& files_;
  std::string systemFolder_;
};

}  // namespace annivo
