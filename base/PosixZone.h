// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace annivo {

/// The offset east of UTC of standard time in a POSIX TZ value such as "UTC+5", "<+0530>-5:30" or
/// "CET-1CEST,M3.5.0,M10.5.0/3" (whose signs count west of Greenwich). Rules of summer time are
/// not followed: whoever wants them names a zone of the zone database. Nothing for another form.
[[nodiscard]] std::optional<std::chrono::seconds> standardOffsetOfPosixZone(std::string_view value);

}  // namespace annivo
