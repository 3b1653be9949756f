// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"

namespace annivo {

/// A modal question or message. Absent buttons are "".
struct NSAlert {
  std::string messageText{};
  std::string defaultButton = "OK";
  std::string alternateButton{};
  std::string otherButton{};
  std::string informativeText{};
};

enum class AlertAnswer { alternate = 0, defaultButton = 1, other = -1 };

struct AlertButton {
  std::string title;
  AlertAnswer answer;
};

/// Shows alerts and waits for the answer.
class Alerts {
 public:
  virtual ~Alerts() = default;
  virtual AlertAnswer runModal(const NSAlert& alert) = 0;
};

/// The alert that shows an error (alertWithError:): its description, then its reason.
[[nodiscard]] NSAlert alertWithError(const Error& error);
/// What errors about different files have in common when one thing made them all: the same domain,
/// code and operation, a disk that is full, say, for all files that cannot be written. Where no
/// code tells errors apart, their reasons do, or else their descriptions.
[[nodiscard]] std::string causeOf(const Error& error);
/// The buttons that an alert has, default first; never empty. The last one answers for a person
/// who dismisses the alert or is not there.
[[nodiscard]] std::vector<AlertButton> buttonsOf(const NSAlert& alert);
/// All that the alert says: its message and, after what is `between`, its informative text.
[[nodiscard]] std::string textOf(const NSAlert& alert, std::string_view between = "\n\n");
/// `text` as valid UTF-8 without control characters other than line feeds: each other one, which a
/// terminal might obey, becomes a space.
[[nodiscard]] std::string displayableText(const std::string& text);

}  // namespace annivo
