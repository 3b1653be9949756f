// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/calendar/WriterHome.h"

namespace annivo {
namespace {

using Home = WriterHome;
const Date kDay = utc(2026, 12, 24, 12);

/// Runs that find the mark of one that was cut off.
class Recovery : public testing::Test {
 protected:
  void SetUp() override { home.makeCalendar("A", "Birthdays"); }
  void markThatNames(const std::string& uid, const std::string& key) const {
    home.home.writeFile(Home::kMark, xmlPropertyList(PropertyList::Dictionary{
                                         {"calendars", PropertyList::Array{PropertyList::Dictionary{
                                                           {"uid", uid}, {"key", key}}}}}));
  }
  /// Writes one event into A and gives its path and bytes.
  std::pair<std::string, std::string> writeEvent() {
    home.write("A", {eventOn(kDay, "D-1", "Ada")});
    const std::string path = Home::eventFile("A", home.ledger().at(0).iCalUID);
    return {path, home.home.readFile(path)};
  }
  void recover() {
    home.home.writeFile(Home::kMark, "");
    home.run([](ZPKCalendarItems&) {});
  }
  Home home;
};

TEST_F(Recovery, AdoptsACalendarOnlyWhereItsPreferenceNamesNoOtherThatExists) {
  home.makeCalendar("NEW", "Made by the run that was cut off");
  const struct {
    PropertyList stored;
    const char* afterwards;
  } rows[] = {{"A", "A"}, {"NEW", "NEW"}, {"GONE", "NEW"}, {"", "NEW"}, {PropertyList(), "NEW"}};
  for (const auto& [stored, afterwards] : rows) {
    home.home.parentPreferences({{"birthCalUID", stored}});
    markThatNames("NEW", "birthCalUID");
    home.run([](ZPKCalendarItems&) {});
    EXPECT_EQ(home.home.storedPreferences(kParentDomain)["birthCalUID"], PropertyList(afterwards))
        << stored.stringOr("nothing stored");
  }
}

TEST_F(Recovery, AdoptsNoCalendarThatIsNotThere) {
  home.home.parentPreferences({{"birthCalUID", "GONE"}});
  markThatNames("NEVER MADE", "birthCalUID");
  home.run([](ZPKCalendarItems&) {});
  EXPECT_EQ(home.home.storedPreferences(kParentDomain)["birthCalUID"], PropertyList("GONE"));
}

TEST_F(Recovery, RemovesASecondEventOnlyOnTheDayItWasWrittenFor) {
  const auto [path, bytes] = writeEvent();
  home.home.folder().remove(path);
  home.home.folder().remove(Home::kLedger);
  const auto [kept, keptBytes] = writeEvent();
  ASSERT_NE(kept, path);

  home.home.writeFile(path, bytes);
  recover();
  EXPECT_FALSE(home.home.exists(path)) << "the record names another";
  EXPECT_EQ(home.home.readFile(kept), keptBytes);

  std::string moved = bytes;
  for (auto at = moved.find("20261224"); at != moved.npos; at = moved.find("20261224")) {
    moved.replace(at, 8, "20261223");
  }
  home.home.writeFile(path, moved);
  recover();
  EXPECT_EQ(home.home.readFile(path), moved) << "somebody has made it his own";
  EXPECT_EQ(home.home.readFile(kept), keptBytes);
}

}  // namespace
}  // namespace annivo
