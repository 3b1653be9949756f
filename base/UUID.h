// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace annivo {

/// A fresh random UUID in upper case, "XXXXXXXX-XXXX-4XXX-XXXX-XXXXXXXXXXXX".
[[nodiscard]] std::string freshUUID();

/// The UUID of version 5 (SHA-1, RFC 9562) of a name in a namespace, in upper case. `space` is a
/// UUID in its text form; anything else is a mistake of the program, which it ends.
[[nodiscard]] std::string nameBasedUUID(const char* space, std::string_view name);

}  // namespace annivo
