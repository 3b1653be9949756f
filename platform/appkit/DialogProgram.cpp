// SPDX-License-Identifier: MIT
#include "platform/appkit/DialogProgram.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace annivo {

namespace {

/// `text` with each character that `table` names replaced by its text there.
struct Replacement {
  char character;
  std::string_view text;
};

std::string replacing(const std::string& text, std::initializer_list<Replacement> table) {
  std::string result;
  for (const char c : text) {
    std::string_view by{&c, 1};
    for (const Replacement& entry : table) {
      if (entry.character == c) by = entry.text;
    }
    result += by;
  }
  return result;
}

std::string titleOf(const NSAlert& alert) {
  const std::string text = displayableText(textOf(alert));
  return text.substr(0, text.find('\n'));
}

/// Button titles take "_" for the mark of a mnemonic.
std::string zenityButton(const std::string& title) {
  return replacing(displayableText(title), {{'_', "__"}, {'\n', " "}});
}

std::vector<std::string> zenityArguments(const NSAlert& alert) {
  const auto buttons = buttonsOf(alert);
  std::vector<std::string> arguments{buttons.size() == 1 ? "--warning" : "--question",
                                     "--no-markup",
                                     "--width=420",
                                     "--title=" + titleOf(alert),
                                     "--text=" + displayableText(textOf(alert)),
                                     "--ok-label=" + zenityButton(buttons.front().title)};
  if (buttons.size() > 1) {
    arguments.push_back("--cancel-label=" + zenityButton(buttons.back().title));
  }
  if (buttons.size() > 2) {
    arguments.push_back("--extra-button=" + zenityButton(buttons[1].title));
  }
  return arguments;
}

/// Rich text that says exactly `text`. It is asked for outright, since the program would otherwise
/// guess; character references keep its backslash escapes away.
std::string kdialogText(const std::string& text) {
  return "<qt>" +
         replacing(displayableText(text), {{'&', "&amp;"},
                                           {'<', "&lt;"},
                                           {'>', "&gt;"},
                                           {'"', "&quot;"},
                                           {'\\', "&#92;"},
                                           {'\n', "<br/>"}}) +
         "</qt>";
}
std::string kdialogButton(const std::string& title) {
  return replacing(displayableText(title), {{'&', "&&"}, {'\n', " "}});
}

std::vector<std::string> kdialogArguments(const NSAlert& alert) {
  static constexpr const char* kKinds[] = {"--msgbox=", "--yesno=", "--yesnocancel="};
  static constexpr const char* kLabels[] = {"--yes-label=", "--no-label=", "--cancel-label="};
  const auto buttons = buttonsOf(alert);
  std::vector<std::string> arguments{"--title=" + titleOf(alert),
                                     kKinds[buttons.size() - 1] + kdialogText(textOf(alert))};
  // A message box has a button of its own, for which there is no option.
  const std::size_t labelled =
      buttons.size() > 1 ? std::min(buttons.size(), std::size(kLabels)) : 0;
  for (std::size_t i = 0; i < labelled; ++i) {
    arguments.push_back(kLabels[i] + kdialogButton(buttons[i].title));
  }
  return arguments;
}

std::optional<AlertAnswer> zenityAnswer(const NSAlert& alert, const EndedProcess& ended) {
  const auto buttons = buttonsOf(alert);
  if (ended.status == 0) return buttons.front().answer;
  if (ended.status != 1) return std::nullopt;
  if (buttons.size() > 2 && !ended.output.empty()) return buttons[1].answer;
  // Status 1 is the cancel button, the closed window and, alas, the display that cannot be opened.
  if (ended.errors.find("open display") != std::string::npos) return std::nullopt;
  return buttons.back().answer;
}

std::optional<AlertAnswer> kdialogAnswer(const NSAlert& alert, const EndedProcess& ended) {
  const auto buttons = buttonsOf(alert);
  if (ended.status >= 0 && static_cast<std::size_t>(ended.status) < buttons.size()) {
    return buttons[static_cast<std::size_t>(ended.status)].answer;
  }
  if (ended.status == 1 || ended.status == 2) return buttons.back().answer;
  return std::nullopt;
}

}  // namespace

const char* nameOf(DialogProgram program) {
  return program == DialogProgram::zenity ? "zenity" : "kdialog";
}

std::vector<std::string> dialogArguments(DialogProgram program, const NSAlert& alert) {
  return program == DialogProgram::zenity ? zenityArguments(alert) : kdialogArguments(alert);
}

std::optional<AlertAnswer> dialogAnswer(DialogProgram program, const NSAlert& alert,
                                        const EndedProcess& ended) {
  return program == DialogProgram::zenity ? zenityAnswer(alert, ended)
                                          : kdialogAnswer(alert, ended);
}

}  // namespace annivo
