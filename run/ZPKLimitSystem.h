// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/Platform.h"

namespace annivo {

/// Answers for the release family of the operating system.
class ZPKLimitSystem {
 public:
  /// 1030 when the system version cannot be had, else 1040 (before 10.5), 1050, 1060, 1070, or
  /// 1080 (10.8 and everything later).
  [[nodiscard]] static std::int32_t versionVal(const Gestalt& gestalt);
  /// Warns, modally, on systems before 10.5; "Quit" terminates the application.
  static void alert(Platform& platform);
};

}  // namespace annivo
