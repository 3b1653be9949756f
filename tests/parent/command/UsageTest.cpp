// SPDX-License-Identifier: MIT
// Words that make no command, and help.
#include <gtest/gtest.h>

#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

struct Words {
  const char* name;
  std::vector<std::string> words;
  const char* said;  ///< without "annivo: " and the line break
};

class Usage : public testing::TestWithParam<Words> {};

TEST_P(Usage, EndsWithTwoAndOneLineThatNamesTheFault) {
  CommandHome world;
  const CommandOutcome outcome = world.run(GetParam().words);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, std::string("annivo: ") + GetParam().said + '\n');
}

INSTANTIATE_TEST_SUITE_P(
    All, Usage,
    testing::Values(
        Words{"Nothing", {}, "no command is given (\"annivo --help\" says more)"},
        Words{"UnknownCommand",
              {"frobnicate"},
              "there is no command \"frobnicate\" (\"annivo --help\" says more)"},
        Words{"UnknownCommandWithMore",
              {"frobnicate", "--x", "y"},
              "there is no command \"frobnicate\" (\"annivo --help\" says more)"},
        Words{"UnknownSubcommand",
              {"calendars", "frob"},
              "there is no command \"frob\" (\"annivo calendars --help\" says more)"},
        Words{"UnknownCommandOfAlarms",
              {"alarms", "drop", "1"},
              "there is no command \"drop\" (\"annivo alarms --help\" says more)"},
        Words{"ControlCharacters",
              {"a\x1b[31mb\nc"},
              "there is no command \"a\\x1b[31mb c\" (\"annivo --help\" says more)"},
        Words{"UnknownOption",
              {"people", "--nope"},
              "there is no option \"--nope\" (\"annivo people --help\" says more)"},
        Words{"UnknownOptionOfNoCommand",
              {"--nope"},
              "there is no option \"--nope\" (\"annivo --help\" says more)"},
        Words{"MisspeltOptionOfSettings",
              {"settings", "sound", "--now"},
              "there is no option \"--now\" (\"annivo settings --help\" says more)"},
        Words{"OneWordTooMany",
              {"people", "extra"},
              "\"extra\" is a word too many (\"annivo people --help\" says more)"},
        Words{"NoPath", {"import"}, "PATH is missing (\"annivo import --help\" says more)"},
        Words{"NoKind",
              {"calendars", "choose"},
              "KIND is missing (\"annivo calendars choose --help\" says more)"},
        Words{"NoShell",
              {"completions"},
              "SHELL is missing (\"annivo completions --help\" says more)"},
        Words{"NoOptionValue",
              {"list", "--from"},
              "--from needs a value (\"annivo list --help\" says more)"},
        Words{"OtherKind",
              {"calendars", "choose", "weekdays", "x"},
              "KIND: there is no \"weekdays\"; give birthdays, anniversaries or both (\"annivo "
              "calendars choose --help\" says more)"},
        Words{"OtherAlarm",
              {"alarms", "add", "fax"},
              "KIND: there is no \"fax\"; give message, email, sound or file (\"annivo alarms add "
              "--help\" says more)"},
        Words{"NoNumber",
              {"alarms", "add", "message", "--days", "x"},
              "--days: \"x\" is no number from 0 to 3650 (\"annivo alarms add --help\" says more)"},
        Words{"NoDays",
              {"list", "--days", "0"},
              "--days: \"0\" is no number from 1 to 36500 (\"annivo list --help\" says more)"}),
    [](const auto& row) { return row.param.name; });

TEST(Help, GoesToTheResults) {
  CommandHome world;
  EXPECT_NE(world.done({"--help"}).find("preview"), std::string::npos);
  EXPECT_NE(world.done({"alarms", "add", "--help"}).find("--time"), std::string::npos);
  EXPECT_EQ(world.done({"--version"}), "annivo 2.0.0\n");
}

}  // namespace
}  // namespace annivo
