// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace annivo {

/// Names in the log, each once, the values of the parent's domain and of the agent's own that are
/// of another type than their keys have. Nothing is changed: whoever reads such a value gets it as
/// it is.
void reportParentTypes(Platform& platform);
void reportOwnTypes(Platform& platform);

}  // namespace annivo
