// SPDX-License-Identifier: MIT
#include "platform/appkit/Alerts.h"

#include "base/Unicode.h"

namespace annivo {

NSAlert alertWithError(const Error& error) {
  return {.messageText = error.description.empty() ? error.text() : error.description,
          .defaultButton = "OK",
          .alternateButton = "",
          .otherButton = "",
          .informativeText = error.failureReason};
}

std::string causeOf(const Error& error) {
  std::string cause = error.domain + ' ' + std::to_string(error.code) + ' ' + error.operation;
  if (error.code != 0) return cause;
  return cause + ' ' + (error.failureReason.empty() ? error.description : error.failureReason);
}

std::vector<AlertButton> buttonsOf(const NSAlert& alert) {
  std::vector<AlertButton> buttons{
      {alert.defaultButton.empty() ? "OK" : alert.defaultButton, AlertAnswer::defaultButton}};
  if (!alert.alternateButton.empty()) {
    buttons.push_back({alert.alternateButton, AlertAnswer::alternate});
  }
  if (!alert.otherButton.empty()) buttons.push_back({alert.otherButton, AlertAnswer::other});
  return buttons;
}

std::string textOf(const NSAlert& alert, std::string_view between) {
  if (alert.messageText.empty()) return alert.informativeText;
  if (alert.informativeText.empty()) return alert.messageText;
  return alert.messageText + std::string(between) + alert.informativeText;
}

std::string displayableText(const std::string& text) {
  std::string result;
  const std::string valid = repairedUTF8(text);
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    const bool isC1 = byte == 0xC2 && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
    if (isC1) ++i;
    const bool isControl = isC1 || (byte < 0x20 && byte != '\n') || byte == 0x7F;
    result += isControl ? ' ' : valid[i];
  }
  return result;
}

}  // namespace annivo
