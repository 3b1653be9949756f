// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

class ContactCommands : public testing::Test {
 protected:
  void importAll() { world.import(sampleCards()); }
  CommandHome world;
};

TEST_F(ContactCommands, ImportSaysWhatItTookAndWhatNot) {
  world.home.writeFile("a.vcf", sampleCards() + vCard("FN:Late\nBDAY:---10\n") + "BEGIN:VCARD\n");
  const std::string file = world.home.path("a.vcf");
  EXPECT_EQ(world.done({"import", file}),
            "skipped card " + file +
                ":36: the card never ends (END:VCARD is missing)\n"
                "skipped date " +
                file +
                ":31 Late: BDAY: names a day without a month (\"---10\")\n"
                "Source \"vCards\": 5 people, 4 dates, 1 group.\n");
  EXPECT_EQ(world.done({"import", file}).substr(world.done({"import", file}).rfind(';')),
            "; nothing has changed.\n");
}

TEST_F(ContactCommands, ImportAsJSON) {
  world.home.writeFile("a.vcf", vCard("FN:Ann \\\"A\\\"\nBDAY:19800610\n"));
  EXPECT_EQ(world.done({"import", world.home.path("a.vcf"), "--source", "x", "--json"}),
            "{\n  \"changed\": true,\n  \"dates\": 1,\n  \"groups\": 0,\n  \"people\": 1,\n"
            "  \"skippedCards\": [],\n  \"skippedDates\": [],\n  \"source\": \"x\"\n}\n");
}

TEST_F(ContactCommands, ImportOfAMissingPathIsOneLine) {
  EXPECT_NE(world.refused({"import", "/nowhere.vcf"}).find("/nowhere.vcf"), std::string::npos);
}

// people, groups, labels

TEST_F(ContactCommands, PeopleShowsEverybodyWithTheirDates) {
  importAll();
  EXPECT_EQ(world.done({"people"}),
            "NAME       DATES                                        UID\n"
            "Ann Smith  1980-06-10 birthday, 2005-09-17 anniversary  u1:ABPerson\n"
            "Bob Jones  --02-29 birthday                             u2:ABPerson\n"
            "Carl Day   2010-01-02 First met                         u3:ABPerson\n"
            "Nobody                                                  u4:ABPerson\n"
            "4 people, 4 dates.\n");
}

TEST_F(ContactCommands, PeopleAsJSON) {
  world.import(vCard("FN:Ann\nBDAY:--0229\nUID:u1\n"));
  EXPECT_EQ(world.done({"people", "--json"}),
            "[\n  {\n    \"dates\": [\n      {\n        \"date\": \"--02-29\",\n"
            "        \"label\": \"birthday\",\n        \"shown\": \"birthday\",\n"
            "        \"uid\": \"u1:ABPerson\"\n      }\n    ],\n    \"name\": \"Ann\",\n"
            "    \"uid\": \"u1:ABPerson\"\n  }\n]\n");
}

TEST_F(ContactCommands, ListingsOfAnEmptyHomeSayWhatToDo) {
  EXPECT_EQ(world.done({"people"}), "0 people, 0 dates. \"annivo import\" brings in vCards.\n");
  EXPECT_EQ(world.done({"groups"}), "0 groups.\n");
  EXPECT_EQ(world.done({"labels"}), "0 labels.\n");
  EXPECT_EQ(world.done({"calendars"}),
            "0 calendars.\nNone is chosen, so no event is written: \"annivo calendars choose both "
            "CALENDAR\".\n");
  EXPECT_EQ(world.done({"list"}), "0 events.\n");
  for (const char* command : {"people", "groups", "labels", "calendars", "list"}) {
    EXPECT_EQ(world.done({command, "--json"}), "[]\n") << command;
  }
}

TEST_F(ContactCommands, NamesCannotSteerATerminalOrAddALine) {
  world.import(
      vCard("FN:A\x1b[31m\\nB\xC2\x9B"
            "2J\nBDAY:20000101\nUID:u\n"));
  const std::string out = world.done({"people"});
  EXPECT_EQ(out.find('\x1b'), std::string::npos);
  EXPECT_EQ(out.find("\xC2\x9B"), std::string::npos);
  EXPECT_NE(out.find("A\\x1b[31m B\\u009b2J"), std::string::npos) << out;
}

TEST_F(ContactCommands, PeopleAlignsNamesOfWideAndOfCombinedCharacters) {
  world.import(vCard("FN:\u5C71\u7530\nBDAY:--0101\nUID:u1\n") +
               vCard("FN:Zoe\u0308\nBDAY:--0102\nUID:u2\n") +
               vCard("FN:Anna\nBDAY:--0103\nUID:u3\n"));
  EXPECT_EQ(world.done({"people"}),
            "NAME  DATES             UID\n"
            "\u5C71\u7530  --01-01 birthday  u1:ABPerson\n"
            "Zoe\u0308   --01-02 birthday  u2:ABPerson\n"
            "Anna  --01-03 birthday  u3:ABPerson\n"
            "3 people, 3 dates.\n");
}

TEST_F(ContactCommands, GroupsCountsPeopleWithDates) {
  importAll();
  const std::string out = world.done({"groups"});
  EXPECT_NE(out.find("Family  1"), std::string::npos) << out;
  EXPECT_NE(out.find("1 group.\n"), std::string::npos);
}

TEST_F(ContactCommands, GroupsAndLabelsAsJSON) {
  world.import(vCard("FN:Ann\nBDAY:20000101\nCATEGORIES:A\\, \"B\"\nUID:u\n"));
  const std::string groups = world.done({"groups", "--json"});
  EXPECT_TRUE(groups.starts_with(
      "[\n  {\n    \"name\": \"A, \\\"B\\\"\",\n    \"people\": 1,\n    \"uid\": "))
      << groups;
  EXPECT_EQ(world.done({"labels", "--json"}),
            "[\n  {\n    \"dates\": 1,\n    \"label\": \"birthday\",\n"
            "    \"shown\": \"birthday\"\n  }\n]\n");
}

TEST_F(ContactCommands, LabelsShowsWordsAndWhatIsStored) {
  importAll();
  EXPECT_EQ(world.done({"labels"}),
            "LABEL        DATES  STORED AS\n"
            "birthday     2      birthday\n"
            "anniversary  1      Anniversary\n"
            "First met    1      First met\n"
            "3 labels.\n");
}

}  // namespace
}  // namespace annivo
