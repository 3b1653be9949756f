// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "parent/runs/ServiceUnits.h"
#include "tests/parent/support/CommandHome.h"
#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

constexpr const char* kUnits = ".config/systemd/user/";

std::string unitNamed(const std::vector<ServiceUnit>& units, const std::string& suffix) {
  for (const ServiceUnit& unit : units) {
    if (unit.name.ends_with(suffix)) return unit.text;
  }
  return "";
}

class ServiceUnits : public testing::Test {
 protected:
  std::vector<ServiceUnit> units(const std::string& executable) {
    Session session{.platform = world.home.platform(),
                    .executable = executable,
                    .environment = [](const char*) { return std::string(); },
                    .note = [](std::string_view) {}};
    return serviceUnits(session);
  }

  CommandHome world;
};

TEST_F(ServiceUnits, UnitsPassTheServiceManagersOwnCheck) {
  if (std::system("command -v systemd-analyze >/dev/null") != 0) {
    FAIL() << "systemd-analyze is missing: scripts/setup --tests installs it";
  }
  const ProgramHome home;
  home.folder.makeFolder("Library/Application Support/AddressBook/Metadata");
  home.folder.makeFolder("Library/Calendars/100% A $B.calendar/Events");
  home.folder.writeFile("all", home.done({"service", "--print"}));
  std::string files;
  std::string current;
  std::istringstream lines(home.folder.readFile("all"));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ")) {
      current = line.substr(line.rfind('/') + 1);
      files += ' ' + home.folder.path(current);
      home.folder.writeFile(current, "");
    } else {
      home.folder.writeFile(current, home.folder.readFile(current) + line + '\n');
    }
  }
  const std::string command = "SYSTEMD_LOG_LEVEL=warning XDG_RUNTIME_DIR=" + home.folder.path() +
                              " HOME=" + home.folder.path() +
                              " systemd-analyze verify --user --man=no" + files + " > " +
                              home.folder.path("verdict") + " 2>&1";
  const int status = std::system(command.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(home.folder.readFile("verdict").find("annivo"), std::string::npos)
      << home.folder.readFile("verdict");
}

TEST_F(ServiceUnits, WatchesTheFoldersByWhichTheAgentNoticesChanges) {
  world.import(vCard("FN:Ann\nBDAY:--0610\nUID:u1\n"));
  const std::string calendar = world.addCalendar("Dates");
  const std::string path =
      unitNamed(units(world.home.productPath() + "/Contents/Linux/annivo"), ".path");
  for (const char* watched : {"/AddressBook\n", "/AddressBook/Sources\n", "/Metadata\n",
                              "/Library/Calendars\n", "/Events\n"}) {
    EXPECT_NE(path.find(watched), std::string::npos) << watched << path;
  }
  EXPECT_NE(path.find("/Library/Calendars/" + calendar + ".calendar/Events\n"), std::string::npos);
}

TEST_F(ServiceUnits, QuotesWhatTheServiceManagerWouldRead) {
  const std::string service =
      unitNamed(units("/opt/50% \"x\" $y/Annivo 2.app/Contents/Linux/annivo"), ".service");
  EXPECT_NE(service.find("ExecStart=\"/opt/50%% \\\"x\\\" $$y/Annivo 2.app/Contents/Helpers/"),
            std::string::npos)
      << service;
}

TEST_F(ServiceUnits, GoesOnWatchingThroughABurstOfChanges) {
  const std::string service =
      unitNamed(units(world.home.productPath() + "/Contents/Linux/annivo"), ".service");
  EXPECT_NE(service.find("\nStartLimitIntervalSec=0\n"), std::string::npos) << service;
  EXPECT_NE(service.find("\nExecStartPre=/bin/sleep 1\nExecStart="), std::string::npos) << service;
}

TEST_F(ServiceUnits, InstallWritesTheUnitsEvenWhereNoManagerTakesThem) {
  const std::string said = world.refused({"service", "install"});
  EXPECT_NE(said.find("the units are written, but"), std::string::npos) << said;
  for (const char* name : {"annivo-agent.service", "annivo-agent.timer", "annivo-agent.path"}) {
    EXPECT_TRUE(world.home.exists(std::string(kUnits) + name)) << name;
  }
}

TEST_F(ServiceUnits, RemoveTakesTheUnitsAway) {
  (void)world.run({"service", "install"});
  EXPECT_EQ(world.run({"service", "remove"}).status, 0);
  EXPECT_TRUE(world.home.snapshot(kUnits).empty());
  EXPECT_EQ(world.run({"service", "remove"}).err, "The service is not installed.\n");
}

TEST_F(ServiceUnits, PrintWritesNothing) {
  const auto before = world.home.folder().fingerprint();
  EXPECT_NE(world.done({"service", "--print"}).find("[Timer]"), std::string::npos);
  EXPECT_NE(world.done({"service", "install", "--print"}).find("[Path]"), std::string::npos);
  EXPECT_EQ(world.home.folder().fingerprint(), before);
}

TEST_F(ServiceUnits, WatchesTheFoldersOfAnImportMadeAfterItsInstallation) {
  (void)world.run({"service", "install"});
  world.import(vCard("FN:Ann\nBDAY:--0610\nUID:u1\n"));
  EXPECT_NE(world.home.readFile(std::string(kUnits) + "annivo-agent.path").find("/Metadata\n"),
            std::string::npos);
}

TEST_F(ServiceUnits, NeedsAWordOfWhatToDo) {
  EXPECT_EQ(world.refused({"service"}),
            "say \"service install\", \"service remove\" or \"service --print\"");
}

}  // namespace
}  // namespace annivo
