// SPDX-License-Identifier: MIT
#pragma once

namespace annivo {

/// Opens /dev/null in place of each standard descriptor (0 to 2) that the process was started
/// without: a file opened later would get its number, and the log would be written into it. Call
/// before anything else is opened. False where there is nothing to put in its place.
[[nodiscard]] bool openStandardDescriptors();

/// Lets a write fail with EPIPE (nobody reads) or EFBIG (a limit of file sizes) where its signal
/// would end the process in the middle of its work.
void survivePipesWithoutReader();
void surviveFileSizeLimits();

}  // namespace annivo
