// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/e2e/AgentHome.h"
#include "tests/e2e/ProductCopy.h"
#include "tests/support/FeedServer.h"

namespace annivo {

/// A home with a birthday to write, a parent with automatic checks whose last one is eight days
/// old, and a server of feeds. The product is version 2.0.0.
class UpdateHome : public testing::Test {
 protected:
  static constexpr const char* kCalendar = "B1B1B1B1-0000-4000-8000-000000000001";

  void SetUp() override {
    home.addCalendar(kCalendar, "Birthdays");
    home.setContacts({personBorn("Ann", "Smith", {1980, 6, 10})});
    home.setOwn({{"doLog", 1}});
    prefer({{"birthCalTitle", "Birthdays"},
            {"birthCalUID", kCalendar},
            {"titleBirthdays", PropertyList::Array{"First name"}},
            {"setEmail", "me@example.org"},
            {"alarmTable", PropertyList::Array{}},
            {"SUEnableAutomaticChecks", true},
            {"SULastCheckTime", now() - std::chrono::days{8}},
            {"SUFeedURL", server.url("/version/2.0.1")}});
  }

  static Date now() {
    return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
  }
  /// Changes preferences of the parent; nil removes.
  void prefer(const PropertyList::Dictionary& values) const {
    PropertyList::Dictionary parent;
    if (home.folder.exists("Library/Preferences/org.annivo.Annivo2.plist")) parent = home.parent();
    for (const auto& [key, value] : values) parent[key] = value;
    std::erase_if(parent, [](const auto& entry) { return entry.second.isNil(); });
    home.setParent(parent);
  }
  void feed(const std::string& path) const { prefer({{"SUFeedURL", server.url(path)}}); }
  [[nodiscard]] Date lastCheck() const { return *home.parent().at("SULastCheckTime").date(); }

  [[nodiscard]] AgentRun run(const std::map<std::string, std::string>& environment = {}) const {
    return home.run(environment, product.agent());
  }
  void expectAFullRun(const AgentRun& run) const {
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(run.logged("Annivo ending")) << run.errors;
    EXPECT_EQ(home.titles(kCalendar).size(), 3u);
    EXPECT_FALSE(product.parentWasStarted());
  }

  AgentHome home;
  ProductCopy product;
  FeedServer server;
};

/// An environment in which a process has another clock: `time` as faketime takes it, "2026-11-20
/// 18:46:00" (it stands still) or "+0 x60" (it runs sixty times as fast).
[[nodiscard]] std::map<std::string, std::string> anotherClock(const std::string& time);

}  // namespace annivo
