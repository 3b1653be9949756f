// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace annivo {

/// The UID of a new event: an upper-case UUID whose last twelve digits follow from the others. A
/// file that is named after it is so known for ours even when nothing of its content is left.
[[nodiscard]] std::string freshEventUID();
/// Whether freshEventUID made it.
[[nodiscard]] bool isOurEventUID(std::string_view uid);

}  // namespace annivo
