// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "parent/runs/OverlayFileManager.h"
#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

TEST(Preview, ShowsTheEventsOfAnImportThatIsInMemoryOnly) {
  CommandHome world;
  world.import(sampleCards());
  (void)world.done({"calendars", "create", "Dates", "--for", "both"});
  world.runAgent();
  world.home.writeFile("cards.vcf", sampleCards() + vCard("FN:Eve Day\nBDAY:19991231\nUID:u9\n"));
  const auto before = world.home.folder().fingerprint();

  PosixFileManager disk;
  OverlayFileManager files(disk, world.home.clock);
  world.home.useFileManager(&files);
  (void)world.done({"import", world.home.path("cards.vcf")});
  const std::string people = world.done({"people"});
  const std::string out = world.done({"preview"});
  world.home.useFileManager(nullptr);

  EXPECT_NE(people.find("Eve Day"), std::string::npos) << people;
  EXPECT_TRUE(
      out.starts_with("To add (3)\n"
                      "  + 2025-12-31  Eve Day: 26th birthday  [Dates]\n"))
      << out;
  EXPECT_NE(out.find("To change (0)\nTo remove (0)\n"), std::string::npos) << out;
  EXPECT_EQ(world.home.folder().fingerprint(), before);
}

}  // namespace
}  // namespace annivo
