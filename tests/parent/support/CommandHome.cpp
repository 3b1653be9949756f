// SPDX-License-Identifier: MIT
#include "tests/parent/support/CommandHome.h"

#include <gtest/gtest.h>

#include <sstream>

#include "parent/command/CommandLine.h"
#include "run/myController.h"

namespace annivo {

CommandSession CommandHome::session(Console& console) {
  return {{.platform = home.platform(),
           .executable = home.productPath() + "/Contents/Linux/annivo",
           .environment =
               [](const char* name) { return std::string(name == std::string("TZ") ? "UTC" : ""); },
           .note = [&](std::string_view text) { console.note(text); }},
          console};
}

CommandOutcome CommandHome::run(const std::vector<std::string>& words) {
  std::ostringstream out;
  std::ostringstream err;
  Console console{.out = out, .err = err};
  CommandLine commandLine;
  CommandOutcome outcome;
  switch (commandLine.parse(words, out, err)) {
    case CommandLine::Outcome::usage:
      outcome.status = 2;
      break;
    case CommandLine::Outcome::done:
      outcome.status = 0;
      break;
    case CommandLine::Outcome::command: {
      console.json = commandLine.json();
      CommandSession inHome = session(console);
      try {
        commandLine.run(inHome);
        outcome.status = home.platform().application().presentedFailure() ? 1 : 0;
      } catch (const Refusal& refusal) {
        err << "annivo: " << refusal.sentence << '\n';
        outcome.status = 1;
      }
      home.endRun();
    }
  }
  outcome.out = out.str();
  outcome.err = err.str();
  return outcome;
}

std::string CommandHome::done(const std::vector<std::string>& words) {
  const CommandOutcome outcome = run(words);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

std::string CommandHome::refused(const std::vector<std::string>& words) {
  const CommandOutcome outcome = run(words);
  EXPECT_EQ(outcome.status, 1) << outcome.out << outcome.err;
  const std::string prefix = "annivo: ";
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  if (!outcome.err.starts_with(prefix)) return outcome.err;
  return outcome.err.substr(prefix.size(), outcome.err.size() - prefix.size() - 1);
}

void CommandHome::import(const std::string& cards, const std::vector<std::string>& more) {
  home.writeFile("cards.vcf", cards);
  std::vector<std::string> words{"import", home.path("cards.vcf")};
  words.insert(words.end(), more.begin(), more.end());
  (void)done(words);
}

void CommandHome::runAgent() {
  Platform& platform = home.platform();
  markLaunch(platform);
  EXPECT_EQ(
      platform.application().main(platform.mainBundle(), myController::delegateClass(platform)), 0);
  home.endRun();
}

PropertyList CommandHome::stored(const std::string& key) const {
  return home.storedPreferences(kParentDomain)[key];
}

std::string CommandHome::addCalendar(const std::string& title) {
  const std::string uid = done({"calendars", "create", title});
  return uid.substr(0, uid.find('\n'));
}

std::string sampleCards() {
  return vCard(
             "FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:19800610\nANNIVERSARY:20050917\nUID:u1\n"
             "CATEGORIES:Family\n") +
         vCard("FN:Bob Jones\nN:Jones;Bob;;;\nBDAY:--0229\nUID:u2\n") +
         vCard(
             "FN:Carl Day\nN:Day;Carl;;;\nUID:u3\nitem1.X-ABDATE:2010-01-02\n"
             "item1.X-ABLabel:First met\n") +
         vCard("FN:Nobody\nN:Nobody;;;;\nUID:u4\n");
}

std::string vCard(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:3.0\n" + lines + "END:VCARD\n";
}

}  // namespace annivo
