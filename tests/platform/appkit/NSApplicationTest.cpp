// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "base/Reason.h"
#include "platform/appkit/NSApplication.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

/// Writes down what happens to it and does, when launched, what the test wants.
class RecordingDelegate final : public NSApplicationDelegate {
 public:
  RecordingDelegate(std::string& events, std::function<void()> work, std::function<void()> atEnd,
                    TerminateReply reply)
      : events_(events), work_(std::move(work)), atEnd_(std::move(atEnd)), reply_(reply) {
    events_ += "make ";
  }
  ~RecordingDelegate() override {
    events_ += "release ";
    atEnd_();
  }
  RecordingDelegate(const RecordingDelegate&) = delete;
  RecordingDelegate& operator=(const RecordingDelegate&) = delete;
  void awakeFromNib(NSWindow window) override {
    window.center();
    events_ += "awake(" + std::to_string(static_cast<int>(window.x)) + "," +
               std::to_string(static_cast<int>(window.y)) + "," +
               std::to_string(static_cast<int>(window.width)) + "," +
               std::to_string(static_cast<int>(window.height)) + ") ";
  }
  void applicationDidFinishLaunching() override {
    events_ += "launched ";
    work_();
  }
  TerminateReply applicationShouldTerminate() override {
    events_ += "asked ";
    return reply_;
  }

 private:
  std::string& events_;
  std::function<void()> work_;
  std::function<void()> atEnd_;
  TerminateReply reply_;
};

class NSApplicationTest : public testing::Test {
 protected:
  NSApplicationTest() {
    write("Contents/Info.plist", {{"NSMainNibFile", "Main"}});
    writeInterface({{"NSDelegateClass", "Controller"},
                    {"NSWindow", PropertyList::Dictionary{
                                     {"x", 1}, {"y", 2}, {"width", 624}, {"height", 368.0}}}});
  }
  void write(const std::string& path, const PropertyList::Dictionary& values) const {
    folder_.writeFile("A.app/" + path, xmlPropertyList(values));
  }
  void writeInterface(const PropertyList::Dictionary& values) const {
    write("Contents/Resources/Main.nib", values);
  }
  int main() {
    return application_.main(NSBundle(files_, folder_.path("A.app")),
                             {.name = "Controller",
                              .initialize =
                                  [this] {
                                    events_ += "initialize ";
                                    if (initialize_) initialize_();
                                  },
                              .make =
                                  [this] {
                                    return std::make_unique<RecordingDelegate>(events_, work_,
                                                                               atEnd_, reply_);
                                  }});
  }

  ScriptedAlerts alerts_;
  RecordingLog log_;
  NSApplication application_{alerts_, log_};
  std::string events_;
  std::function<void()> initialize_;
  std::function<void()> work_ = [] {};
  std::function<void()> atEnd_ = [] {};
  TerminateReply reply_ = TerminateReply::now;
  TemporaryFolder folder_;
  PosixFileManager files_;
};

TEST_F(NSApplicationTest, InitializesMakesWakesAndLaunchesInThisOrder) {
  EXPECT_EQ(main(), 0);
  EXPECT_EQ(events_, "initialize make awake(200,200,624,368) launched release ");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(NSApplicationTest, UnwindsFromTerminateAndReleasesTheDelegate) {
  struct Guard {
    std::string& events;
    ~Guard() { events += "unwound "; }
  };
  work_ = [this] {
    const Guard guard{events_};
    application_.terminate();
    events_ += "came back ";
  };
  EXPECT_EQ(main(), 0);
  EXPECT_EQ(events_, "initialize make awake(200,200,624,368) launched asked unwound release ");
}

TEST_F(NSApplicationTest, GoesOnWhenTheDelegateCancelsTermination) {
  reply_ = TerminateReply::cancel;
  work_ = [this] {
    application_.terminate();
    events_ += "went on ";
  };
  EXPECT_EQ(main(), 0);
  EXPECT_EQ(events_, "initialize make awake(200,200,624,368) launched asked went on release ");
}

TEST_F(NSApplicationTest, EndsWhenTheClassInitializerTerminates) {
  initialize_ = [this] { application_.terminate(); };
  EXPECT_EQ(main(), 0);
  EXPECT_EQ(events_, "initialize ");
}

TEST_F(NSApplicationTest, FailsWithALogLineAfterAnUncaughtException) {
  const std::pair<std::function<void()>, std::string> rows[] = {
      {[] { throw NSInternalInconsistencyException{"Managed object model is nil"}; },
       "Managed object model is nil"},
      {[] { throw std::runtime_error("out of luck"); }, "out of luck"},
      {[] { throw 7; }, "unknown type"}};
  for (const auto& [work, text] : rows) {
    log_.clear();
    events_.clear();
    work_ = work;
    EXPECT_EQ(main(), 1);
    EXPECT_EQ(log_.lines().size(), 1u);
    EXPECT_EQ(log_.count(text), 1u) << text;
    EXPECT_EQ(events_, "initialize make awake(200,200,624,368) launched release ");
  }
}

TEST_F(NSApplicationTest, FailsWithALogLineWithoutAUsableInterfaceFile) {
  const PropertyList window = PropertyList::Dictionary{};
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"no Info.plist", [&] { folder_.remove("A.app/Contents/Info.plist"); }},
      {"no name", [&] { write("Contents/Info.plist", {}); }},
      {"no file",
       [&] {
         write("Contents/Info.plist", {{"NSMainNibFile", "Other"}});
       }},
      {"no property list",
       [&] { folder_.writeFile("A.app/Contents/Resources/Main.nib", "<plist>"); }},
      {"another class",
       [&] {
         writeInterface({{"NSDelegateClass", "Other"}, {"NSWindow", window}});
       }},
      {"no class",
       [&] {
         writeInterface({{"NSWindow", window}});
       }},
      {"no window",
       [&] {
         writeInterface({{"NSDelegateClass", "Controller"}});
       }},
      {"a folder", [&] {
         folder_.remove("A.app/Contents/Resources/Main.nib");
         folder_.makeFolder("A.app/Contents/Resources/Main.nib");
       }}};
  for (const auto& [name, damage] : rows) {
    write("Contents/Info.plist", {{"NSMainNibFile", "Main"}});
    damage();
    log_.clear();
    EXPECT_EQ(main(), 1) << name;
    EXPECT_EQ(events_, "") << name;
    EXPECT_EQ(log_.lines().size(), 1u) << name;
  }
}

TEST_F(NSApplicationTest, OfOneCauseShowsTheFirstErrorAndLogsTheOthers) {
  const Error first = errorFromErrno(ENOSPC, "write", "/home/a.ics");
  const Error second = errorFromErrno(ENOSPC, "write", "/home/b.ics");
  EXPECT_FALSE(application_.presentError(first));
  EXPECT_FALSE(application_.presentError(second));
  application_.runAlertWithError(first);
  ASSERT_EQ(alerts_.shown().size(), 1u);
  EXPECT_EQ(alerts_.shown()[0].messageText, "Cannot write /home/a.ics.");
  EXPECT_EQ(log_.lines(), (std::vector<std::string>{second.text(), first.text()}));
  application_.runAlertWithError(errorFromErrno(ENOSPC, "synchronize", "/home/a.ics"));
  EXPECT_EQ(alerts_.shown().size(), 2u) << "another operation has a cause of its own";
}

TEST_F(NSApplicationTest, TellsAtTheEndHowManyFailuresOfACauseThereWere) {
  work_ = [this] {
    application_.presentError(errorFromErrno(EIO, "read", "/home/x"));
    application_.presentError(errorFromErrno(EIO, "read", "/home/x"));  // No other failure.
    for (const char* path : {"/home/a", "/home/b", "/home/c"}) {
      application_.presentError(errorFromErrno(ENOSPC, "write", path));
    }
    application_.terminate();
  };
  EXPECT_EQ(main(), 1);
  ASSERT_EQ(alerts_.shown().size(), 3u);
  EXPECT_EQ(textOf(alerts_.shown()[2]),
            "There were more failures than were shown.\n\n"
            "3 like this one: Cannot write /home/a. No space left on device.\n"
            "The log names each of them.");
}

TEST_F(NSApplicationTest, EndsWithStatus1WhereAFailureWasPresented) {
  EXPECT_EQ(main(), 0);
  EXPECT_FALSE(application_.presentedFailure());
  work_ = [this] {
    application_.presentError(reason("It failed."));
    application_.terminate();
  };
  EXPECT_EQ(main(), 1);
  EXPECT_TRUE(application_.presentedFailure());
}

TEST_F(NSApplicationTest, EndsWithStatus1AfterAnAlertToo) {
  work_ = [this] { application_.runAlertWithError(reason("It failed.")); };
  EXPECT_EQ(main(), 1);
}

TEST_F(NSApplicationTest, EndsWithStatus1WhereTheDelegateFailsWhileItGoes) {
  atEnd_ = [this] { application_.presentError(reason("It could not be saved.")); };
  EXPECT_EQ(main(), 1);
  EXPECT_EQ(alerts_.shown().size(), 1u);
}

TEST_F(NSApplicationTest, APanelIsNoFailure) {
  work_ = [this] { application_.runAlertPanel({.messageText = "Really?"}); };
  EXPECT_EQ(main(), 0);
  EXPECT_EQ(alerts_.shown().size(), 1u);
}

TEST_F(NSApplicationTest, ShowsPanelsEachTime) {
  alerts_.answerNext(AlertAnswer::alternate);
  alerts_.answerNext(AlertAnswer::defaultButton);
  const NSAlert panel{.messageText = "Really?", .alternateButton = "No"};
  EXPECT_EQ(application_.runAlertPanel(panel), AlertAnswer::alternate);
  EXPECT_EQ(application_.runAlertPanel(panel), AlertAnswer::defaultButton);
  EXPECT_EQ(alerts_.shown().size(), 2u);
}

}  // namespace
}  // namespace annivo
