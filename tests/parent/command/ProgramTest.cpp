// SPDX-License-Identifier: MIT
// The built program, started as a person starts it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

const std::string kAnn = vCard("FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:--0610\nUID:u1\n");
const std::string kBob = vCard("FN:Bob Jones\nN:Jones;Bob;;;\nANNIVERSARY:--0917\nUID:u2\n");

/// Counts the event files in the home.
std::size_t eventFiles(const TemporaryFolder& folder) {
  std::size_t count = 0;
  for (const auto& [path, content] : folder.snapshot()) count += path.ends_with(".ics") ? 1 : 0;
  return count;
}

/// The lines of a list under its heading.
std::size_t linesWith(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
  return count;
}

class Program : public testing::Test {
 protected:
  void importAll() {
    home.folder.writeFile("cards/ann.vcf", kAnn);
    home.folder.writeFile("cards/bob.vcf", kBob);
    (void)home.done({"import", home.folder.path("cards")});
  }
  void chooseCalendar() { (void)home.done({"calendars", "create", "Dates", "--for", "both"}); }

  ProgramHome home;
};

TEST_F(Program, TakesAPersonFromAnEmptyHomeThroughEveryStepAndOutAgain) {
  importAll();
  chooseCalendar();

  const std::string preview = home.done({"preview"});
  EXPECT_NE(preview.find("To add (6)\n"), std::string::npos) << preview;
  EXPECT_EQ(eventFiles(home.folder), 0U);

  const std::string first = home.done({"run"});
  EXPECT_NE(first.find("Added (6)\n"), std::string::npos) << first;
  EXPECT_EQ(linesWith(first, "Ann Smith: birthday"), 3U);
  EXPECT_EQ(linesWith(first, "Bob Jones: anniversary"), 3U);
  EXPECT_EQ(eventFiles(home.folder), 6U);
  EXPECT_NE(home.done({"preview"}).find("To add (0)\nTo change (0)\nTo remove (0)\n"),
            std::string::npos);

  const std::string list = home.done({"list", "--days", "366"});
  EXPECT_NE(list.find("Ann Smith: birthday"), std::string::npos) << list;
  EXPECT_NE(list.find("message 2 days before at 08:00"), std::string::npos) << list;

  home.folder.writeFile("cards/ann.vcf",
                        vCard("FN:Ann Miller\nN:Miller;Ann;;;\nBDAY:--0610\nUID:u1\n"));
  home.folder.remove("cards/bob.vcf");
  (void)home.done({"import", home.folder.path("cards")});
  const std::string second = home.done({"run"});
  EXPECT_NE(second.find("Added (0)\nChanged (3)\n"), std::string::npos) << second;
  EXPECT_NE(second.find("Ann Miller: birthday  [Dates]  (was \"Ann Smith: birthday\")"),
            std::string::npos)
      << second;
  EXPECT_NE(second.find("Removed (3)\n"), std::string::npos);

  EXPECT_EQ(home.done({"off"}), "The agent is off; 3 events were taken out of the calendars.\n");
  EXPECT_EQ(eventFiles(home.folder), 0U);
  EXPECT_NE(home.done({"status"}).find("Agent:         off\n"), std::string::npos);
}

TEST_F(Program, RunsAgainWithoutAnyChange) {
  importAll();
  chooseCalendar();
  (void)home.done({"run"});
  EXPECT_EQ(home.done({"run"}), "Added (0)\nChanged (0)\nRemoved (0)\n");
}

TEST_F(Program, ShowsARunAsJSON) {
  importAll();
  chooseCalendar();
  const std::string out = home.done({"run", "--json"});
  EXPECT_TRUE(out.starts_with("{\n  \"added\": [\n")) << out;
  EXPECT_EQ(linesWith(out, "\"uid\": "), 6U);
}

TEST_F(Program, PreviewsTheSameListsThatARunThenReports) {
  importAll();
  chooseCalendar();
  const std::string preview = home.done({"preview"});
  const std::string run = home.done({"run"});
  EXPECT_EQ(preview.substr(preview.find('\n'), preview.find("To change") - preview.find('\n')),
            run.substr(run.find('\n'), run.find("Changed") - run.find('\n')));
}

TEST_F(Program, LeavesThePersonsOwnEventsAlone) {
  importAll();
  chooseCalendar();
  std::string calendar;
  for (const auto& [path, content] : home.folder.snapshot("Library/Calendars")) {
    if (path.ends_with("Info.plist")) calendar = path.substr(0, path.find('/'));
  }
  const std::string own = "Library/Calendars/" + calendar + "/Events/own.ics";
  const std::string text =
      "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:own\nDTSTART;VALUE=DATE:20261201\n"
      "SUMMARY:Mine\nEND:VEVENT\nEND:VCALENDAR\n";
  home.folder.writeFile(own, text);
  (void)home.done({"run"});
  EXPECT_EQ(home.done({"list"}).find("Mine"), std::string::npos);
  (void)home.done({"off"});
  EXPECT_EQ(home.folder.readFile(own), text);
  EXPECT_EQ(eventFiles(home.folder), 1U);
}

TEST_F(Program, WritesJSONThatAnotherReaderTakes) {
  home.folder.writeFile("odd.vcf",
                        vCard("FN:\xC2\x9B A \\\"\\n\x01 \\\\ \xF0\x9F\x8E\x82\nBDAY:--0610\n"
                              "CATEGORIES:\x7F,\"B\"\nUID:u\\\\1\n"));
  (void)home.done({"import", home.folder.path("odd.vcf"), "--json"});
  chooseCalendar();
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{"people"},
                                             {"groups"},
                                             {"labels"},
                                             {"calendars"},
                                             {"settings"},
                                             {"settings", "sound"},
                                             {"alarms"},
                                             {"preview"},
                                             {"run"},
                                             {"list"},
                                             {"status"},
                                             {"service", "--print"},
                                             {"off"}}) {
    std::vector<std::string> all = words;
    all.emplace_back("--json");
    const CommandOutcome outcome = home.inPipe(all);
    EXPECT_EQ(outcome.status, 0) << words.front() << outcome.err;
    home.folder.writeFile("out", outcome.out);
    const std::string reader = "python3 -m json.tool " + home.folder.path("out") + " > /dev/null";
    EXPECT_EQ(std::system(reader.c_str()), 0) << words.front() << '\n' << outcome.out;
  }
}

TEST_F(Program, WritesColoursOnATerminalOnly) {
  importAll();
  EXPECT_NE(home.onTerminal({"people"}).out.find("\x1b[1m"), std::string::npos);
  EXPECT_EQ(home.inPipe({"people"}).out.find('\x1b'), std::string::npos);
  home.environment["NO_COLOR"] = "1";
  EXPECT_EQ(home.onTerminal({"people"}).out.find('\x1b'), std::string::npos);
  home.environment = {{"NO_COLOR", ""}};
  EXPECT_NE(home.onTerminal({"people"}).out.find('\x1b'), std::string::npos);
  home.environment = {{"TERM", "dumb"}};
  EXPECT_EQ(home.onTerminal({"people"}).out.find('\x1b'), std::string::npos);
}

TEST_F(Program, NamesAWordThatIsNoCommand) {
  const CommandOutcome outcome = home.inPipe({"frobnicate"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err,
            "annivo: there is no command \"frobnicate\" (\"annivo --help\" says more)\n");
}

TEST_F(Program, ShowsNoProgressForQuickWorkOnATerminal) {
  home.folder.writeFile("a.vcf", kAnn);
  const CommandOutcome outcome = home.onTerminal({"import", home.folder.path("a.vcf")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "Source \"vCards\": 1 person, 1 date, 0 groups.\r\n");
}

TEST_F(Program, RunsTheSameOnATerminal) {
  importAll();
  chooseCalendar();
  home.environment["NO_COLOR"] = "1";
  const CommandOutcome preview = home.onTerminal({"preview"});
  EXPECT_EQ(preview.status, 0);
  EXPECT_NE(preview.out.find("To add (6)\r\n"), std::string::npos) << preview.out;
  EXPECT_NE(home.onTerminal({"run"}).out.find("Added (6)\r\n"), std::string::npos);
  EXPECT_NE(home.onTerminal({"list"}).out.find("Ann Smith: birthday"), std::string::npos);
  EXPECT_NE(home.onTerminal({"off"}).out.find("6 events were taken out"), std::string::npos);
}

TEST_F(Program, EndsWithTheStatusOfItsOutcome) {
  EXPECT_EQ(home.inPipe({"people"}).status, 0);
  EXPECT_EQ(home.inPipe({"import", "/nowhere"}).status, 1);
  EXPECT_EQ(home.inPipe({"frobnicate"}).status, 2);
  EXPECT_EQ(home.inPipe({}).status, 2);
}

TEST_F(Program, RefusesToWorkWithoutAHome) {
  home.environment["HOME"] = "";
  const CommandOutcome outcome = home.inPipe({"people"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "annivo: HOME is not set to your home folder\n");
}

TEST_F(Program, FailsWhereItsResultsCannotBeWritten) {
  home.environment["FULL"] = "1";
  const std::string command = "HOME=" + home.folder.path() + " '" +
                              ProgramHome::programPath("annivo") + "' people > /dev/full 2>&1";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
}

TEST_F(Program, FindsItsBundleThroughALink) {
  importAll();
  chooseCalendar();
  const std::string link = home.folder.path("annivo-link");
  std::filesystem::create_symlink(ProgramHome::programPath("annivo"), link);
  const std::string command = "HOME=" + home.folder.path() + " TZ=UTC '" + link + "' run > " +
                              home.folder.path("out") + " 2>&1";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 0);
  EXPECT_NE(home.folder.readFile("out").find("Added (6)"), std::string::npos);
}

// The parent application, which is the same program under another name.

TEST_F(Program, ShowsTheStatusWhenTheApplicationIsStartedOnATerminal) {
  const CommandOutcome outcome = home.onTerminal({}, "Annivo 2");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("Last run:"), std::string::npos) << outcome.out;
}

TEST_F(Program, UnderTheApplicationsNameTakesTheSameCommands) {
  EXPECT_EQ(home.inPipe({"groups"}, "Annivo 2").out, "0 groups.\n");
}

}  // namespace
}  // namespace annivo
