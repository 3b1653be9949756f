// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <future>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/ProductCopy.h"
#include "tests/support/VirtualDisplay.h"

namespace annivo {
namespace {

constexpr const char* kText =
    "This application is developed for use under OSX 10.5, Leopard and later.\n\n"
    "It will not work under earlier versions of OSX and it is likely not to work under later "
    "versions.";

/// An agent on a system of the test's choice, with logging on.
class VersionGate : public testing::Test {
 protected:
  void SetUp() override { home.setOwn({{"doLog", 1}}); }
  void setVersion(const std::string& version) const { product.setSystemVersion(version); }
  [[nodiscard]] AgentRun run(const std::map<std::string, std::string>& environment = {}) const {
    return home.run(environment, product.agent());
  }
  /// Runs the agent on a terminal on which a person types `keys` once asked; what the terminal
  /// showed.
  [[nodiscard]] std::string runOnTerminal(const std::string& keys, int& status) const {
    int terminal = -1;
    const std::string agent = product.agent(), variable = "HOME=" + home.folder.path();
    const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process == 0) {
      const char* const environment[] = {variable.c_str(), "TZ=UTC", nullptr};
      ::execle(agent.c_str(), agent.c_str(), static_cast<char*>(nullptr), environment);
      ::_exit(127);
    }
    std::string screen;
    char buffer[512];
    bool typed = false;
    for (ssize_t size = 0; (size = ::read(terminal, buffer, sizeof buffer)) > 0;) {
      screen.append(buffer, static_cast<std::size_t>(size));
      if (!typed && screen.find("(Return for 1): ") != std::string::npos) {
        typed = ::write(terminal, keys.data(), keys.size()) > 0;
      }
    }
    ::waitpid(process, &status, 0);
    ::close(terminal);
    return screen;
  }

  AgentHome home;
  ProductCopy product;
};

TEST_F(VersionGate, GoesOnBefore10_5WithNobodyToAsk) {
  setVersion("10.7.5");
  const std::vector<std::string> unwarned = run().log;
  setVersion("10.4.11");
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  ASSERT_FALSE(agent.log.empty());
  EXPECT_TRUE(agent.log[0].starts_with("Nobody to ask, taken as \"Continue\": Annivo 2\\n\\nThis"))
      << agent.errors;
  EXPECT_EQ(std::vector<std::string>(agent.log.begin() + 1, agent.log.end()), unwarned)
      << "as if there had been no warning";
  EXPECT_EQ(unwarned.back(), "Annivo ending - nothing to update");
}

TEST_F(VersionGate, WarnsUpTo10_4AndSaysNothingFrom10_5On) {
  const std::pair<const char*, bool> rows[] = {
      {"10.0", true},    {"10.4.11", true}, {"10.4.15", true}, {"10.4.99", true}, {"10.5", false},
      {"10.5.0", false}, {"10.7.5", false}, {"10.8", false},   {"10.15.7", false}};
  for (const auto& [version, isWarned] : rows) {
    setVersion(version);
    const AgentRun agent = run();
    EXPECT_EQ(agent.mentions("developed for use"), isWarned) << version;
    EXPECT_TRUE(agent.logged("Annivo starting")) << version;
  }
}

TEST_F(VersionGate, SaysNothingWithoutAReadableVersion) {
  const std::string file = "SharedSupport/System/Library/CoreServices/SystemVersion.plist";
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"another family", [&] { setVersion("14.1"); }},
      {"no version", [&] { setVersion(""); }},
      {"damaged", [&] { product.replace(file, "<plist><dict>"); }},
      {"empty", [&] { product.replace(file, ""); }},
      {"missing", [&] { product.remove(file); }},
      {"unreadable", [&] { std::filesystem::create_directory(product.path(file)); }}};
  for (const auto& [name, change] : rows) {
    change();
    const AgentRun agent = run();
    EXPECT_FALSE(agent.mentions("developed for use")) << name;
    EXPECT_TRUE(agent.logged("Annivo starting")) << name;
  }
}

TEST_F(VersionGate, QuitsOnTheTerminal) {
  setVersion("10.4.11");
  home.setOwn({});  // the line is written without the logging switch
  home.folder.makeFolder("Library/Caches");
  const auto before = home.fingerprint();
  int status = -1;
  const std::string screen = runOnTerminal("1\n", status);
  EXPECT_EQ(status, 0);
  EXPECT_NE(screen.find("[1] Quit  [2] Continue"), std::string::npos) << screen;
  EXPECT_NE(screen.find("] quit\r\n"), std::string::npos) << screen;
  EXPECT_EQ(home.fingerprint(), before) << "before anything else of the run";
}

TEST_F(VersionGate, ContinuesOnTheTerminal) {
  setVersion("10.4.11");
  int status = -1;
  const std::string screen = runOnTerminal("2\n", status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(screen.find("] quit"), std::string::npos) << screen;
  EXPECT_NE(screen.find("] Annivo starting"), std::string::npos) << screen;
}

/// With a display and a person before it.
class ShownVersionGate : public VersionGate {
 protected:
  void SetUp() override {
    VersionGate::SetUp();
    setVersion("10.4.11");
    agent = std::async(std::launch::async, [this] {
      return run({{"DISPLAY", display.name()}, {"PATH", "/usr/bin:/bin"}, {"NO_AT_BRIDGE", "1"}});
    });
    window = display.waitForWindow("Annivo 2");
    ASSERT_NE(window, "");
  }
  std::future<AgentRun> agent;  // outlives the display, whose end ends the alert
  VirtualDisplay display;
  std::string window;
};

TEST_F(ShownVersionGate, ShowsItsTextAndGoesOnWhenDismissed) {
  const std::string text = std::string("Annivo 2\n\n") + kText;
  EXPECT_EQ(display.waitForMessage(window, text), text);
  const AgentRun continued = display.pressFor(agent, window, "Escape");
  EXPECT_EQ(continued.status, 0);
  EXPECT_EQ(continued.log,
            (std::vector<std::string>{"Annivo starting", "Annivo ending - nothing to update"}))
      << continued.errors;
}

TEST_F(ShownVersionGate, GoesOnWhenContinueIsPressed) {
  const AgentRun continued = display.pressFor(agent, window, "Left space");
  EXPECT_EQ(continued.status, 0);
  EXPECT_EQ(continued.log,
            (std::vector<std::string>{"Annivo starting", "Annivo ending - nothing to update"}))
      << continued.errors;
}

TEST_F(ShownVersionGate, EndsWhenQuitIsPressed) {
  const AgentRun quit = display.pressFor(agent, window, "Return");
  EXPECT_EQ(quit.status, 0);
  EXPECT_EQ(quit.log, std::vector<std::string>{"quit"}) << quit.errors;
  EXPECT_FALSE(home.own().contains("lastUpdate"));
}

}  // namespace
}  // namespace annivo
