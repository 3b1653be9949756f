// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace annivo {

/// The last `count` hexadecimal digits of `value`, in lower case.
[[nodiscard]] std::string hexDigits(std::uint64_t value, std::size_t count);

}  // namespace annivo
