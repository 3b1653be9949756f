// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "tests/run/ControllerHome.h"

namespace annivo {
namespace {

using Texts = std::vector<std::string>;

/// What another program does while the run is held.
class ChangesMeanwhile;
struct Meanwhile {
  const char* name;
  void (*happens)(const ChangesMeanwhile& home);
};

/// Over the birthdays of Ann and Eve, of whom Eve comes with the run that is held.
class ChangesMeanwhile : public ControllerHome, public testing::WithParamInterface<Meanwhile> {
 public:
  void SetUp() override {
    setPeople({born("Ann", {1980, 6, 10})});
    ASSERT_EQ(run(), 0);
    home.clock.advance(std::chrono::hours{1});
    setPeople({born("Ann", {1980, 6, 10}), born("Eve", {1985, 6, 10})});
    home.clock.advance(std::chrono::hours{1});
  }
  void deleteEvent() const {
    home.folder().remove(eventOf("B", "Ann"));
    dateEvents();
  }
  void renameEvent() const {
    const std::string path = eventOf("B", "Ann");
    std::string text = home.readFile(path);
    text.replace(text.find("SUMMARY:Ann"), 11, "SUMMARY:Nan");
    home.writeFile(path + ".theirs", text);
    std::filesystem::rename(home.path(path + ".theirs"), home.path(path));
    dateEvents();
  }
  void renameContact() const {
    setPeople({born("Ann", {1980, 6, 10}), [] {
                 StoredPerson eve = born("Eve", {1985, 6, 10});
                 eve.firstName = "Eva";
                 return eve;
               }()});
    home.touch(kMetadata, theirTime());
  }
  void launchParent() const { prefer({{"lastLaunched", theirTime()}}); }

 protected:
  /// Before the end of the run, so that no time tells of it afterwards.
  [[nodiscard]] Date theirTime() const { return home.clock.now() - std::chrono::minutes{1}; }
  void dateEvents() const { home.touch(eventsOf("B"), theirTime()); }

  void expectAnotherPassAndThenQuiet() {
    EXPECT_TRUE(isMarked());
    EXPECT_EQ(lastUpdate(), PropertyList(home.clock.now())) << "the end of the pass";
    EXPECT_EQ(runLater(), 0);
    EXPECT_FALSE(isMarked());
    const auto events = titles("B");
    EXPECT_EQ(std::count(events.begin(), events.end(), "Ann"), 3);
    EXPECT_EQ(events.size(), 6U);
    home.clock.advance(std::chrono::hours{1});
    EXPECT_EQ(decide(), myController::Decision::nothingToUpdate);
  }
};

TEST_F(ChangesMeanwhile, ARunThatNothingDisturbsKeepsNoMark) {
  EXPECT_EQ(run(), 0);
  EXPECT_FALSE(isMarked());
  home.clock.advance(std::chrono::hours{1});
  EXPECT_EQ(decide(), myController::Decision::nothingToUpdate);
}

TEST_P(ChangesMeanwhile, AreSeenByTheNextRunWhereTheyFallIntoTheSync) {
  bool held = false;
  files.hook = [&](const std::string& operation, const std::string&) {
    if (operation == "synchronize" && !std::exchange(held, true)) GetParam().happens(*this);
    return 0;
  };
  EXPECT_EQ(run(), 0);
  ASSERT_TRUE(held);
  expectAnotherPassAndThenQuiet();
}

TEST_P(ChangesMeanwhile, AreSeenByTheNextRunWhereTheyFallIntoAnAlert) {
  // The alert is about a title that no event may have; it comes after Ann's and before Eve's.
  StoredPerson endless = born("Bea", {1983, 6, 10});
  endless.firstName = std::string(70'000, 'x');
  setPeople({born("Ann", {1980, 6, 10}), endless, born("Eve", {1985, 6, 10})});
  bool held = false;
  home.alerts.whenShown([&] {
    if (!std::exchange(held, true)) GetParam().happens(*this);
  });
  EXPECT_EQ(run(), 1);
  ASSERT_TRUE(held);
  EXPECT_TRUE(isMarked());
  home.alerts.whenShown(nullptr);
  setPeople({born("Ann", {1980, 6, 10}), born("Eve", {1985, 6, 10})});
  EXPECT_EQ(runLater(), 0);
  EXPECT_EQ(titles("B"), (Texts{"Ann", "Ann", "Ann", "Eve", "Eve", "Eve"}));
}

TEST_P(ChangesMeanwhile, AreSeenByTheNextRunWhereAPassWritesNothing) {
  ASSERT_EQ(run(), 0);
  home.clock.advance(std::chrono::hours{1});
  home.touch(kMetadata, home.clock.now());
  home.clock.advance(std::chrono::hours{1});
  bool held = false;
  int events = 0;
  files.hook = [&](const std::string& operation, const std::string& path) {
    const bool isLast = operation == "read" && path.ends_with(".ics") && ++events == 6;
    if (isLast && !std::exchange(held, true)) GetParam().happens(*this);
    return 0;
  };
  EXPECT_EQ(run(), 0);
  ASSERT_TRUE(held);
  expectAnotherPassAndThenQuiet();
}

INSTANTIATE_TEST_SUITE_P(
    OfOtherPrograms, ChangesMeanwhile,
    testing::Values(
        Meanwhile{"AnEventDeleted", [](const ChangesMeanwhile& home) { home.deleteEvent(); }},
        Meanwhile{"AnEventRenamed", [](const ChangesMeanwhile& home) { home.renameEvent(); }},
        Meanwhile{"AContactRenamed", [](const ChangesMeanwhile& home) { home.renameContact(); }},
        Meanwhile{"TheParentLaunched", [](const ChangesMeanwhile& home) { home.launchParent(); }}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace annivo
