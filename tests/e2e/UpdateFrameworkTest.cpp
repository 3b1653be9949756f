// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <future>

#include "tests/e2e/UpdateHome.h"

namespace annivo {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const std::string kFramework = "Frameworks/Sparkle.framework/";
const std::string kExecutable = kFramework + "Versions/A/Sparkle";

using UpdateFramework = UpdateHome;

TEST_F(UpdateFramework, IsLoadedOnlyWhenACheckIsDueAndTheNetworkLibraryWithIt) {
  const std::map<std::string, std::string> traced{{"LD_DEBUG", "files"}};
  feed("/none");
  const AgentRun due = run(traced);
  EXPECT_NE(due.errors.find("Sparkle.framework"), std::string::npos);
  EXPECT_NE(due.errors.find("libcurl"), std::string::npos);

  const std::pair<const char*, PropertyList::Dictionary> rows[] = {
      {"checked just now", {{"SULastCheckTime", now()}}},
      {"never checked", {{"SULastCheckTime", {}}}},
      {"switched off",
       {{"SUEnableAutomaticChecks", false}, {"SULastCheckTime", now() - std::chrono::days{8}}}}};
  for (const auto& [name, values] : rows) {
    prefer(values);
    const AgentRun idle = run(traced);
    EXPECT_NE(idle.errors.find("libc.so"), std::string::npos) << "the trace itself works";
    EXPECT_EQ(idle.errors.find("Sparkle"), std::string::npos) << name;
    EXPECT_EQ(idle.errors.find("libcurl"), std::string::npos) << name;
  }
}

struct Damage {
  const char* name;
  std::function<void(const ProductCopy&)> inflict;
};
void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

class UpdateFrameworkThatIs : public UpdateHome, public testing::WithParamInterface<Damage> {};

TEST_P(UpdateFrameworkThatIs, GoesOnWithTheRun) {
  GetParam().inflict(product);
  const Date last = lastCheck();
  const AgentRun agent = run();
  expectAFullRun(agent);
  EXPECT_TRUE(agent.logged("Sparkle framework not loaded.")) << agent.errors;
  EXPECT_TRUE(server.requests().empty());
  EXPECT_EQ(lastCheck(), last);
}

/// A shared object that has nothing of an update framework.
std::string otherLibrary() {
  Dl_info library{};
  ::dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&::cbrt)), &library);
  return library.dli_fname;
}

PropertyList::Dictionary infoWith(const PropertyList& principalClass) {
  PropertyList::Dictionary info{{"CFBundleExecutable", "Sparkle"}};
  if (!principalClass.isNil()) info["NSPrincipalClass"] = principalClass;
  return info;
}

const Damage kDamages[] = {
    {"Missing", [](const ProductCopy& product) { product.remove(kFramework); }},
    {"WithoutItsExecutable", [](const ProductCopy& product) { product.remove(kExecutable); }},
    {"AFile",
     [](const ProductCopy& product) { product.replace("Frameworks/Sparkle.framework", "file"); }},
    {"AFolderInPlaceOfItsExecutable",
     [](const ProductCopy& product) {
       product.remove(kExecutable);
       fs::create_directory(product.path(kExecutable));
     }},
    {"APipeInPlaceOfItsExecutable",
     [](const ProductCopy& product) {
       product.remove(kExecutable);
       ASSERT_EQ(::mkfifo(product.path(kExecutable).c_str(), 0600), 0);
     }},
    {"Empty", [](const ProductCopy& product) { product.replace(kExecutable, ""); }},
    {"NoSharedObject",
     [](const ProductCopy& product) { product.replace(kExecutable, "not a shared object"); }},
    {"CutShort",
     [](const ProductCopy& product) { fs::resize_file(product.path(kExecutable), 4096); }},
    {"WithoutAPrincipalClass",
     [](const ProductCopy& product) {
       product.replace(kFramework + "Versions/A/Resources/Info.plist",
                       xmlPropertyList(infoWith({})));
     }},
    {"OfAnotherPrincipalClass",
     [](const ProductCopy& product) {
       product.replace(kFramework + "Versions/A/Resources/Info.plist",
                       xmlPropertyList(infoWith("SUSomethingElse")));
     }},
    {"WithoutAnInfoPropertyList",
     [](const ProductCopy& product) {
       product.remove(kFramework + "Versions/A/Resources/Info.plist");
     }},
    {"WithoutTheSymbolOfItsClass", [](const ProductCopy& product) {
       product.remove(kExecutable);
       fs::copy_file(otherLibrary(), product.path(kExecutable));
     }}};

INSTANTIATE_TEST_SUITE_P(Damages, UpdateFrameworkThatIs, testing::ValuesIn(kDamages),
                         [](const auto& damage) { return damage.param.name; });

TEST_F(UpdateFramework, ThatMayNotBeReadGoesOnWithTheRun) {
  fs::permissions(product.path(kExecutable), fs::perms::none);
  int status = -1;
  const pid_t child = ::fork();
  if (child == 0) {
    // The superuser may read everything, so that it becomes somebody else, who gets the home.
    if (::geteuid() == 0) {
      product.giveTo(65534);
      home.folder.giveTo(65534);
      if (::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
    }
    const AgentRun agent = run();
    const bool asExpected = agent.status == 0 && agent.logged("Sparkle framework not loaded.") &&
                            agent.logged("Annivo ending");
    if (!asExpected) std::fprintf(stderr, "%s\n", agent.errors.c_str());
    ::_exit(asExpected ? 0 : 1);
  }
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(home.titles(kCalendar).size(), 3u);
}

TEST_F(UpdateFramework, MissingSaysNothingWithoutTheLoggingSwitch) {
  product.remove(kFramework);
  home.setOwn({});
  const AgentRun agent = run();
  EXPECT_EQ(agent.status, 0);
  EXPECT_FALSE(agent.mentions("Sparkle")) << agent.errors;
}

TEST_F(UpdateFramework, IsNotFoundByAnAgentThatLiesInNoParent) {
  const TemporaryFolder elsewhere;
  elsewhere.makeFolder("a/b");
  const std::string bundle = elsewhere.path("a/b/AnnivoAgent.app");
  fs::copy(product.path("Helpers/AnnivoAgent.app"), bundle, fs::copy_options::recursive);
  fs::copy(product.path("SharedSupport"), bundle + "/Contents/SharedSupport",
           fs::copy_options::recursive);
  const AgentRun agent = home.run({}, bundle + "/Contents/Linux/AnnivoAgent");
  expectAFullRun(agent);
  EXPECT_TRUE(agent.logged("Sparkle framework not loaded.")) << agent.errors;
  EXPECT_TRUE(server.requests().empty());
}

/// With a framework whose check goes as the test wants.
class StubbedUpdateFramework : public UpdateHome {
 protected:
  void SetUp() override {
    UpdateHome::SetUp();
    product.remove(kExecutable);
    fs::copy_file(ANNIVO_STUB_UPDATER, product.path(kExecutable));
  }
};

TEST_F(StubbedUpdateFramework, IsNotWaitedForWhereTheRunLoopHasNothingToWaitFor) {
  const AgentRun agent = run({{"STUB_UPDATER", "never answers"}});
  expectAFullRun(agent);
  EXPECT_FALSE(agent.logged("Sparkle framework not loaded."));
}

TEST_F(StubbedUpdateFramework, IsWaitedForUntilItAnswers) {
  const std::string release = home.folder.path("release");
  auto agent = std::async(std::launch::async, [&] {
    auto environment = anotherClock("+0 x1000");
    environment["STUB_UPDATER"] = "finds nothing once asked";
    environment["STUB_RELEASE"] = release;
    return run(environment);
  });
  EXPECT_EQ(agent.wait_for(4s), std::future_status::timeout) << "an hour by the agent's clock";
  EXPECT_TRUE(home.titles(kCalendar).empty());
  home.folder.writeFile("release", "");
  const AgentRun ended = agent.get();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(ended.logged("Annivo ending")) << ended.errors;
  EXPECT_EQ(home.titles(kCalendar).size(), 3u);
}

TEST_F(StubbedUpdateFramework, MayAnswerWhileTheCheckIsStarted) {
  expectAFullRun(run({{"STUB_UPDATER", "finds nothing at once"}}));

  const AgentRun found = run({{"STUB_UPDATER", "finds at once"}});
  EXPECT_EQ(found.log.back(), "Opening Annivo to receive update.") << found.errors;
  EXPECT_NE(product.waitForParent(), "");
}

}  // namespace
}  // namespace annivo
