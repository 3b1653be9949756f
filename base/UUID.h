// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace annivo {

/// A fresh random UUID in upper case, "XXXXXXXX-XXXX-4XXX-XXXX-XXXXXXXXXXXX".
[[nodiscard]] std::string freshUUID();

}  // namespace annivo
