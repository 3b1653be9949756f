// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "parent/command/CommandLine.h"
#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

using Words = std::vector<std::string>;

class Completion : public testing::Test {
 protected:
  Words complete(const Words& words) {
    CommandSession session = world.session(console);
    Words found = CommandLine().completions(session, words);
    world.home.endRun();
    std::sort(found.begin(), found.end());
    return found;
  }

  CommandHome world;
  std::ostringstream out, err;
  Console console{.out = out, .err = err};
};

TEST_F(Completion, KnowsCommandsAndTheirParts) {
  EXPECT_EQ(complete({"p"}), (Words{"people", "preview"}));
  EXPECT_EQ(complete({"calendars", ""}), (Words{"choose", "create", "none"}));
  EXPECT_EQ(complete({"calendars", "choose", "b"}), (Words{"birthdays", "both"}));
  EXPECT_EQ(complete({"alarms", "add", ""}), (Words{"email", "file", "message", "sound"}));
  EXPECT_EQ(complete({"alarms", "add", "email", "--for", "a"}), (Words{"anniversaries"}));
  EXPECT_EQ(complete({"alarms", "remove", ""}), (Words{"1"}));
  EXPECT_EQ(complete({"list", "--f"}), (Words{"--from"}));
  EXPECT_EQ(complete({"people", "--j"}), (Words{"--json"}));
  EXPECT_EQ(complete({"nonsense", ""}), (Words{}));
}

TEST_F(Completion, KnowsSettingsAndTheirValues) {
  world.import(vCard("FN:Ann\nBDAY:--0610\nCATEGORIES:Book club\nUID:u1\n"));
  (void)world.addCalendar("Home");
  EXPECT_EQ(complete({"settings", "up"}), (Words{"update-checks", "update-interval"}));
  EXPECT_EQ(complete({"settings", "logging", ""}), (Words{"off", "on"}));
  EXPECT_EQ(complete({"settings", "group", ""}), (Words{"Book club", "all"}));
  EXPECT_EQ(complete({"settings", "excluded-labels", "b"}), (Words{"birthday"}));
  EXPECT_EQ(complete({"settings", "birthday-title", "ord"}), (Words{"ordinal-age"}));
  EXPECT_EQ(complete({"calendars", "choose", "both", "H"}), (Words{"Home"}));
}

TEST(CompletionScripts, AreFoundRightByTheirShells) {
  const ProgramHome home;
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const std::string script = home.done({"completions", shell});
    EXPECT_NE(script.find("annivo __complete"), std::string::npos);
    const std::string probe = std::string("command -v ") + shell + " >/dev/null";
    if (std::system(probe.c_str()) != 0) continue;
    home.folder.writeFile("script", script);
    const std::string check = std::string(shell) + " -n " + home.folder.path("script");
    EXPECT_EQ(std::system(check.c_str()), 0) << shell;
  }
}

TEST(CompletionScripts, OfBashCompletesWordsWithSpaces) {
  const ProgramHome home;
  home.folder.writeFile("a.vcf", vCard("FN:Ann\nBDAY:--0610\nCATEGORIES:Book club\nUID:u1\n"));
  (void)home.done({"import", home.folder.path("a.vcf")});
  home.folder.writeFile("script", home.done({"completions", "bash"}));
  const std::string program = ProgramHome::programPath("");
  const std::string command = "HOME=" + home.folder.path() + " PATH='" + program +
                              "':$PATH bash -c '. " + home.folder.path("script") +
                              "; COMP_WORDS=(annivo settings group B); COMP_CWORD=3; _annivo; echo "
                              "\"${COMPREPLY[0]}\"' > " +
                              home.folder.path("out");
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(home.folder.readFile("out"), "Book\\ club\n");
}

}  // namespace
}  // namespace annivo
