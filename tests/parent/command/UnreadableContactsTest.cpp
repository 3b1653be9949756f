// SPDX-License-Identifier: MIT
// What commands say when contacts are there and cannot be read.
#include <gtest/gtest.h>

#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

class UnreadableContacts : public testing::Test {
 protected:
  UnreadableContacts() {
    home.folder.writeFile("cards.vcf", sampleCards());
    (void)home.done({"import", home.folder.path("cards.vcf")});
    (void)home.done({"calendars", "create", "Dates", "--for", "both"});
    (void)home.done({"settings", "group", "Family"});
    (void)home.done({"run"});
    home.folder.writeFile(kStore, "no database");
  }
  /// The command's results; it must fail and name the store.
  std::string failed(const std::vector<std::string>& words) {
    const CommandOutcome outcome = home.inPipe(words);
    EXPECT_EQ(outcome.status, 1) << outcome.out << outcome.err;
    EXPECT_NE(outcome.err.find(home.folder.path(kStore)), std::string::npos) << outcome.err;
    return outcome.out;
  }

  const std::string kStore = "Library/Application Support/AddressBook/AddressBook-v22.abcddb";
  ProgramHome home;
};

TEST_F(UnreadableContacts, AreNamedBesideWhatCouldBeRead) {
  EXPECT_NE(failed({"people"}).find("4 people, 4 dates.\n"), std::string::npos);
  EXPECT_NE(failed({"groups"}).find("1 group.\n"), std::string::npos);
  EXPECT_NE(failed({"labels"}).find("3 labels.\n"), std::string::npos);
  EXPECT_NE(failed({"status"}).find("Group:         Family\n"), std::string::npos);
  EXPECT_NE(failed({"people", "--json"}).find("\"Ann Smith\""), std::string::npos);
}

TEST_F(UnreadableContacts, AreNotNoContacts) {
  home.folder.remove("Library/Application Support/AddressBook/Sources");
  EXPECT_EQ(failed({"people"}), "0 people, 0 dates.\n");
  EXPECT_EQ(failed({"status"}).find("no such group"), std::string::npos);
  const CommandOutcome outcome = home.inPipe({"settings", "group", "Work"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("annivo: not all contacts could be read; nothing is changed\n"),
            std::string::npos)
      << outcome.err;
}

TEST_F(UnreadableContacts, AreToldOfByAPreview) {
  const CommandOutcome outcome = home.inPipe({"preview"});
  EXPECT_EQ(outcome.status, 1) << outcome.out;
  EXPECT_NE(outcome.err.find(home.folder.path(kStore)), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.out.find("To add (0)\n"), std::string::npos) << outcome.out;
  EXPECT_EQ(home.inPipe({"preview", "--json"}).status, 1);
}

TEST_F(UnreadableContacts, AreNotTakenForAnAgentThatDidNotEndWell) {
  const CommandOutcome run = home.inPipe({"run"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.out.find("Added (0)\nChanged (0)\n"), std::string::npos) << run.out;
  EXPECT_NE(run.err.find(home.folder.path(kStore)), std::string::npos) << run.err;
  EXPECT_TRUE(run.err.ends_with(
      "annivo: the agent met a failure, which its messages name; what it could do is done, and "
      "\"annivo run\" tries again\n"))
      << run.err;
}

TEST_F(UnreadableContacts, DoNotKeepEventsFromBeingTakenOut) {
  EXPECT_EQ(home.done({"off"}), "The agent is off; 6 events were taken out of the calendars.\n");
}

}  // namespace
}  // namespace annivo
