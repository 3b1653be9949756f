// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/foundation/Error.h"

namespace annivo {

/// A modal question or message. Absent buttons are "".
struct NSAlert {
  std::string messageText;
  std::string defaultButton = "OK";
  std::string alternateButton;
  std::string otherButton;
  std::string informativeText;
};

enum class AlertAnswer { alternate = 0, defaultButton = 1, other = -1 };

/// Shows alerts and waits for the answer.
class Alerts {
 public:
  virtual ~Alerts() = default;
  virtual AlertAnswer runModal(const NSAlert& alert) = 0;
};

/// The alert that shows an error (alertWithError:): its description, then its reason.
[[nodiscard]] NSAlert alertWithError(const Error& error);

}  // namespace annivo
