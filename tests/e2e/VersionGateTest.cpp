// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

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
  product.setSystemVersion("10.4.11");
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0) << agent.errors;
  EXPECT_TRUE(agent.mentions("taken as \"Continue\": Annivo 2")) << agent.errors;
  EXPECT_TRUE(agent.logged("Annivo starting"));
}

TEST_F(VersionGate, SaysNothingFrom10_5OnNorWithoutAReadableVersion) {
  for (const char* version : {"10.5.0", "10.7.5", "10.15.7", "14.1"}) {
    product.setSystemVersion(version);
    const AgentRun agent = run();
    EXPECT_FALSE(agent.mentions("developed for use")) << version;
    EXPECT_TRUE(agent.logged("Annivo starting")) << version;
  }
  product.remove("SharedSupport/System/Library/CoreServices/SystemVersion.plist");
  EXPECT_TRUE(run().logged("Annivo starting"));
}

TEST_F(VersionGate, QuitsOnTheTerminal) {
  product.setSystemVersion("10.4.11");
  home.setOwn({});  // the line is written without the logging switch
  int status = -1;
  const std::string screen = runOnTerminal("1\n", status);
  EXPECT_EQ(status, 0);
  EXPECT_NE(screen.find("[1] Quit  [2] Continue"), std::string::npos) << screen;
  EXPECT_NE(screen.find("] quit\r\n"), std::string::npos) << screen;
  EXPECT_FALSE(home.folder.exists("Library/Application Support/Annivo 2"));
}

TEST_F(VersionGate, ContinuesOnTheTerminal) {
  product.setSystemVersion("10.4.11");
  int status = -1;
  const std::string screen = runOnTerminal("2\n", status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(screen.find("] quit"), std::string::npos) << screen;
  EXPECT_NE(screen.find("] Annivo starting"), std::string::npos) << screen;
}

TEST_F(VersionGate, ShowsItsTextOnADisplayAndTakesTheButtonPressed) {
  product.setSystemVersion("10.4.11");
  const VirtualDisplay display;
  const std::map<std::string, std::string> environment{
      {"DISPLAY", display.name()}, {"PATH", "/usr/bin:/bin"}, {"NO_AT_BRIDGE", "1"}};
  const auto start = [&] {
    return std::async(std::launch::async, [&] { return run(environment); });
  };
  auto quitting = start();
  const std::string window = display.waitForWindow("Annivo 2");
  ASSERT_NE(window, "");
  EXPECT_EQ(display.messageOf(window), std::string("Annivo 2\n\n") + kText);
  display.press(window, "Tab");
  display.press(window, "Escape");
  const AgentRun continued = quitting.get();
  EXPECT_TRUE(continued.logged("Annivo starting")) << continued.errors;

  auto again = start();
  display.press(display.waitForWindow("Annivo 2"), "Return");
  const AgentRun quit = again.get();
  EXPECT_EQ(quit.status, 0);
  EXPECT_EQ(quit.log, std::vector<std::string>{"quit"}) << quit.errors;
}

}  // namespace
}  // namespace annivo
