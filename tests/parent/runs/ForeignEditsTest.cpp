// SPDX-License-Identifier: MIT
// What commands say of events whose files other programs have rewritten, renamed or moved.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

const std::string kCards = vCard("FN:Ann Smith\nN:Smith;Ann;;;\nBDAY:19800610\nUID:u1\n");

/// What another program does to the calendar's folder.
struct Edit {
  const char* name;
  void (*apply)(const TemporaryFolder& home, const std::string& calendar);
};
void PrintTo(const Edit& edit, std::ostream* out) { *out << edit.name; }

void nothing(const TemporaryFolder&, const std::string&) {}

void dropProperties(const TemporaryFolder& home, const std::string& calendar) {
  for (auto [name, text] : home.snapshot(calendar + "/Events")) {
    const auto at = text.find("\r\nX-ANNIVO-IDENTITY");
    ASSERT_NE(at, text.npos) << text;
    auto end = text.find("\r\n", at + 2);
    while (text[end + 2] == ' ') end = text.find("\r\n", end + 2);
    home.writeFile(calendar + "/Events/" + name, text.erase(at, end - at));
  }
}

void rename(const TemporaryFolder& home, const std::string& calendar) {
  int number = 0;
  for (const auto& [name, text] : home.snapshot(calendar + "/Events")) {
    fs::rename(home.path(calendar + "/Events/" + name),
               home.path(calendar + "/Events/" + std::to_string(++number) + ".ics"));
  }
}

void dropAndRename(const TemporaryFolder& home, const std::string& calendar) {
  dropProperties(home, calendar);
  rename(home, calendar);
}

void moveBehindALink(const TemporaryFolder& home, const std::string& calendar) {
  fs::rename(home.path(calendar), home.path("elsewhere"));
  fs::create_directory_symlink(home.path("elsewhere"), home.path(calendar));
}

class ForeignEdits : public testing::TestWithParam<Edit> {
 protected:
  ForeignEdits() {
    import(kCards);
    const std::string made = home.done({"calendars", "create", "Dates", "--for", "both"});
    calendar = "Library/Calendars/" + made.substr(0, made.find('\n')) + ".calendar";
    const std::string first = home.done({"run"});
    EXPECT_TRUE(first.starts_with("Added (3)\n")) << first;
    GetParam().apply(home.folder, calendar);
  }
  void import(const std::string& cards) {
    home.folder.writeFile("cards.vcf", cards);
    (void)home.done({"import", home.folder.path("cards.vcf")});
  }
  void renameAnn() { import(vCard("FN:Ann Jones\nN:Jones;Ann;;;\nBDAY:19800610\nUID:u1\n")); }
  static std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
    return found;
  }

  ProgramHome home;
  std::string calendar;
};

INSTANTIATE_TEST_SUITE_P(All, ForeignEdits,
                         testing::Values(Edit{"None", nothing},
                                         Edit{"PropertiesDropped", dropProperties},
                                         Edit{"FilesRenamed", rename},
                                         Edit{"DroppedAndRenamed", dropAndRename},
                                         Edit{"BehindALink", moveBehindALink}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ForeignEdits, PreviewSaysWhatARunWouldChange) {
  renameAnn();
  const std::string out = home.done({"preview"});
  EXPECT_NE(out.find("To add (0)\nTo change (3)\n"), std::string::npos) << out;
  EXPECT_EQ(count(out, "(was \"Ann Smith: "), 3U) << out;
  EXPECT_NE(out.find("To remove (0)\n"), std::string::npos) << out;
}

TEST_P(ForeignEdits, RunSaysWhatItChanged) {
  renameAnn();
  const std::string out = home.done({"run"});
  EXPECT_NE(out.find("Added (0)\nChanged (3)\n"), std::string::npos) << out;
  EXPECT_EQ(count(out, "[Dates]  (was \"Ann Smith: "), 3U) << out;
  EXPECT_NE(out.find("Removed (0)\n"), std::string::npos) << out;
}

TEST_P(ForeignEdits, ListShowsOurEvents) {
  home.folder.writeFile(calendar + "/Events/own.ics",
                        "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:x\r\nBEGIN:VEVENT\r\nUID:own\r\n"
                        "SUMMARY:My own\r\nDTSTART;VALUE=DATE:20270101\r\nEND:VEVENT\r\n"
                        "END:VCALENDAR\r\n");
  const std::string out = home.done({"list", "--from", "2020-01-01", "--days", "36500"});
  EXPECT_EQ(count(out, "Ann Smith: "), 3U) << out;
  EXPECT_NE(out.find("3 events.\n"), std::string::npos) << out;
}

TEST_P(ForeignEdits, OffSaysHowManyEventsItTookOut) {
  EXPECT_EQ(home.done({"off"}), "The agent is off; 3 events were taken out of the calendars.\n");
  EXPECT_EQ(home.folder.snapshot(calendar + "/Events").size(), 0U);
}

}  // namespace
}  // namespace annivo
