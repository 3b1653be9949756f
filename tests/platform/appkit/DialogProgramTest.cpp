// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/appkit/DialogProgram.h"

namespace annivo {
namespace {

using Arguments = std::vector<std::string>;

const NSAlert kOne{.messageText = "Message", .informativeText = "Why"};
const NSAlert kTwo{
    .messageText = "Message", .defaultButton = "Quit", .alternateButton = "Continue"};
const NSAlert kThree{
    .messageText = "M", .defaultButton = "A", .alternateButton = "B", .otherButton = "C"};
/// All that programs might take for something else.
const NSAlert kHostile{.messageText = "--help <b>&amp; %s \\n _x \"'\nsecond",
                       .defaultButton = "-_&<i>",
                       .alternateButton = "--b"};

TEST(DialogProgram, AsksZenityForOneTwoOrThreeButtons) {
  EXPECT_EQ(dialogArguments(DialogProgram::zenity, kOne),
            (Arguments{"--warning", "--no-markup", "--width=420", "--title=Message",
                       "--text=Message\n\nWhy", "--ok-label=OK"}));
  EXPECT_EQ(dialogArguments(DialogProgram::zenity, kTwo),
            (Arguments{"--question", "--no-markup", "--width=420", "--title=Message",
                       "--text=Message", "--ok-label=Quit", "--cancel-label=Continue"}));
  EXPECT_EQ(dialogArguments(DialogProgram::zenity, kThree),
            (Arguments{"--question", "--no-markup", "--width=420", "--title=M", "--text=M",
                       "--ok-label=A", "--cancel-label=C", "--extra-button=B"}));
}

TEST(DialogProgram, AsksKdialogForOneTwoOrThreeButtons) {
  EXPECT_EQ(dialogArguments(DialogProgram::kdialog, kOne),
            (Arguments{"--title=Message", "--msgbox=<qt>Message<br/><br/>Why</qt>"}));
  EXPECT_EQ(dialogArguments(DialogProgram::kdialog, kTwo),
            (Arguments{"--title=Message", "--yesno=<qt>Message</qt>", "--yes-label=Quit",
                       "--no-label=Continue"}));
  EXPECT_EQ(dialogArguments(DialogProgram::kdialog, kThree),
            (Arguments{"--title=M", "--yesnocancel=<qt>M</qt>", "--yes-label=A", "--no-label=B",
                       "--cancel-label=C"}));
}

TEST(DialogProgram, KeepsTextsText) {
  EXPECT_EQ(dialogArguments(DialogProgram::zenity, kHostile),
            (Arguments{"--question", "--no-markup", "--width=420",
                       "--title=--help <b>&amp; %s \\n _x \"'",
                       "--text=--help <b>&amp; %s \\n _x \"'\nsecond", "--ok-label=-__&<i>",
                       "--cancel-label=--b"}));
  EXPECT_EQ(dialogArguments(DialogProgram::kdialog, kHostile),
            (Arguments{"--title=--help <b>&amp; %s \\n _x \"'",
                       "--yesno=<qt>--help &lt;b&gt;&amp;amp; %s &#92;n _x &quot;'<br/>second</qt>",
                       "--yes-label=-_&&<i>", "--no-label=--b"}));
}

TEST(DialogProgram, PutsEveryTextIntoItsOptionsOwnArgument) {
  for (const auto program : {DialogProgram::zenity, DialogProgram::kdialog}) {
    for (const std::string& argument : dialogArguments(program, kHostile)) {
      EXPECT_TRUE(argument.starts_with("--")) << argument;
      EXPECT_FALSE(argument.starts_with("--help")) << argument;
    }
  }
}

struct AnswerCase {
  const char* name;
  DialogProgram program;
  NSAlert alert;
  EndedProcess ended;
  std::optional<AlertAnswer> answer;
};
void PrintTo(const AnswerCase& row, std::ostream* out) { *out << row.name; }
struct DialogAnswer : testing::TestWithParam<AnswerCase> {};

TEST_P(DialogAnswer, IsReadFromTheProgramsEnd) {
  EXPECT_EQ(dialogAnswer(GetParam().program, GetParam().alert, GetParam().ended),
            GetParam().answer);
}

constexpr auto kZenity = DialogProgram::zenity;
constexpr auto kKdialog = DialogProgram::kdialog;
const std::string kNoDisplay = "(zenity:1): Gtk-WARNING **: 18:46:00.000: cannot open display: :9";

INSTANTIATE_TEST_SUITE_P(
    Ends, DialogAnswer,
    testing::Values(
        AnswerCase{"ZenityOK", kZenity, kOne, {0, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"ZenityOneDismissed", kZenity, kOne, {1, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"ZenityQuit", kZenity, kTwo, {0, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"ZenityContinue", kZenity, kTwo, {1, "", ""}, AlertAnswer::alternate},
        AnswerCase{"ZenityWarnsAndContinues",
                   kZenity,
                   kTwo,
                   {1, "", "Gtk-WARNING: theme"},
                   AlertAnswer::alternate},
        AnswerCase{"ZenityNoDisplay", kZenity, kTwo, {1, "", kNoDisplay}, std::nullopt},
        AnswerCase{"ZenityKilled", kZenity, kTwo, {-1, "", ""}, std::nullopt},
        AnswerCase{"ZenityUnknownOption", kZenity, kTwo, {255, "", ""}, std::nullopt},
        AnswerCase{"ZenityMiddle", kZenity, kThree, {1, "B\n", ""}, AlertAnswer::alternate},
        AnswerCase{"ZenityLast", kZenity, kThree, {1, "", ""}, AlertAnswer::other},
        AnswerCase{"KdialogOK", kKdialog, kOne, {0, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"KdialogOneDismissed", kKdialog, kOne, {2, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"KdialogYes", kKdialog, kTwo, {0, "", ""}, AlertAnswer::defaultButton},
        AnswerCase{"KdialogNo", kKdialog, kTwo, {1, "", ""}, AlertAnswer::alternate},
        AnswerCase{"KdialogCancel", kKdialog, kThree, {2, "", ""}, AlertAnswer::other},
        AnswerCase{"KdialogNoDisplay", kKdialog, kTwo, {-1, "", ""}, std::nullopt},
        AnswerCase{"KdialogUnknownOption", kKdialog, kTwo, {254, "", ""}, std::nullopt}),
    [](const auto& answerCase) { return answerCase.param.name; });

}  // namespace
}  // namespace annivo
