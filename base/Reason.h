// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

#include "base/Error.h"

namespace annivo {

/// An error that is nothing but its sentence.
[[nodiscard]] inline Error reason(std::string sentence, Error::Kind kind = Error::Kind::refused) {
  return {kind, "", 0, std::move(sentence), ""};
}

}  // namespace annivo
