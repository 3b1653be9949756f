// SPDX-License-Identifier: MIT
#pragma once

#include "base/Date.h"

namespace annivo {

/// The present moment.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Date now() const = 0;
};

class SystemClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override;
};

}  // namespace annivo
