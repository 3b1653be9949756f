// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>

#include "platform/appkit/Alerts.h"

namespace annivo {
namespace {

std::string titles(const NSAlert& alert) {
  std::string all;
  for (const AlertButton& button : buttonsOf(alert)) all += button.title + ";";
  return all;
}

TEST(Alerts, HaveTheirPresentButtonsInOrder) {
  EXPECT_EQ(titles({.messageText = "m"}), "OK;");
  EXPECT_EQ(titles({.messageText = "m", .defaultButton = ""}), "OK;");
  EXPECT_EQ(titles({.defaultButton = "Quit", .alternateButton = "Continue"}), "Quit;Continue;");
  EXPECT_EQ(titles({.defaultButton = "A", .alternateButton = "B", .otherButton = "C"}), "A;B;C;");
  EXPECT_EQ(titles({.defaultButton = "A", .otherButton = "C"}), "A;C;");
}

TEST(Alerts, SayTheirMessageThenTheirInformativeText) {
  EXPECT_EQ(textOf({.messageText = "a", .informativeText = "b"}), "a\n\nb");
  EXPECT_EQ(textOf({.messageText = "a"}), "a");
  EXPECT_EQ(textOf({.messageText = "", .informativeText = "b"}), "b");
}

TEST(Alerts, ShowAnErrorsDescriptionAndReason) {
  Error error;
  error.description = "The file cannot be read.";
  error.failureReason = "It is damaged.";
  const NSAlert alert = alertWithError(error);
  EXPECT_EQ(alert.messageText, "The file cannot be read.");
  EXPECT_EQ(alert.informativeText, "It is damaged.");
  EXPECT_EQ(buttonsOf(alert).size(), 1u);
}

TEST(Alerts, ShowAnErrorWithoutADescriptionByItsCode) {
  Error error;
  error.domain = "NSPOSIXErrorDomain";
  error.code = 28;
  EXPECT_EQ(alertWithError(error).messageText, error.text());
  EXPECT_FALSE(error.text().empty());
}

TEST(Alerts, KnowWhichErrorsHaveOneCause) {
  const Error full = errorFromErrno(ENOSPC, "write", "/a");
  const Error uncoded{.domain = "D", .description = "/a is bad.", .failureReason = "It is long."};
  const struct {
    const char* name;
    Error one;
    Error other;
    bool same;
  } rows[] = {{"another file", full, errorFromErrno(ENOSPC, "write", "/b"), true},
              {"another code", full, errorFromErrno(EACCES, "write", "/a"), false},
              {"another operation", full, errorFromErrno(ENOSPC, "synchronize", "/a"), false},
              {"another domain", {.domain = "D", .code = 1}, {.domain = "E", .code = 1}, false},
              {"a code, another text",
               {.domain = "D", .code = 1, .description = "One."},
               {.domain = "D", .code = 1, .description = "Two."},
               true},
              {"no code, the same reason",
               uncoded,
               {.domain = "D", .description = "/b is bad.", .failureReason = "It is long."},
               true},
              {"no code, another reason",
               uncoded,
               {.domain = "D", .description = "/a is bad.", .failureReason = "It is short."},
               false},
              {"neither code nor reason",
               {.domain = "D", .description = "/a is bad."},
               {.domain = "D", .description = "/b is bad."},
               false}};
  for (const auto& row : rows) {
    EXPECT_EQ(causeOf(row.one) == causeOf(row.other), row.same) << row.name;
  }
}

TEST(Alerts, TurnControlCharactersIntoSpaces) {
  EXPECT_EQ(displayableText("a\x1B[31mb\a\tc\r\n\x7F"), "a [31mb  c \n ");
  EXPECT_EQ(displayableText(std::string("a\0b", 3)), "a b");
  EXPECT_EQ(displayableText("\xC2\x9B"
                            "31m"),
            " 31m")
      << "the C1 form of an escape";
  EXPECT_EQ(displayableText("Zo\u00EB \u00A0\U0001F382"), "Zo\u00EB \u00A0\U0001F382");
}

TEST(Alerts, RepairTextThatIsNoUtf8) {
  EXPECT_EQ(displayableText("a\xFF"
                            "b"),
            "a\uFFFDb");
  EXPECT_EQ(displayableText("a\xC2"), "a\uFFFD");
}

}  // namespace
}  // namespace annivo
