// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/foundation/NSBundle.h"
#include "tests/support/Doubles.h"
#include "tests/support/MemoryFileManager.h"

namespace annivo {
namespace {

class NSBundleTest : public testing::Test {
 protected:
  void write(const std::string& path, const std::string& bytes) {
    files_.makeFolders(path.substr(0, path.rfind('/')));
    ASSERT_TRUE(files_.writeAtomically(path, bytes));
  }
  void info(const PropertyList::Dictionary& values) {
    write("/a/Agent.app/Contents/Info.plist", xmlPropertyList(values));
  }
  void table(const std::string& language, const PropertyList::Dictionary& texts,
             const std::string& name = "Localizable") {
    write("/a/Agent.app/Contents/Resources/" + language + ".lproj/" + name + ".strings",
          xmlPropertyList(texts));
  }
  std::string text(const std::vector<std::string>& languages, const std::string& key = "k",
                   const std::string& value = "") {
    return NSBundle(files_, "/a/Agent.app").localizedString(key, value, "Localizable", languages);
  }

  ManualClock clock_{utc(2026, 11, 20)};
  MemoryFileManager files_{clock_};
};

TEST(StandardizedPath, ResolvesStepsInTheText) {
  const struct {
    const char* path;
    const char* expected;
  } rows[] = {{"/a/b/../../../c", "/c"}, {"/a//b/./c/", "/a/b/c"}, {"/", "/"}, {"/..", "/"},
              {"a/../b", "b"},           {"../a", "../a"},         {"", ""},   {"/a/b/..", "/a"}};
  for (const auto& row : rows) EXPECT_EQ(standardizedPath(row.path), row.expected) << row.path;
}

TEST(AppendingPathComponent, PutsOneSlashBetween) {
  EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a/", "/b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/", "b"), "/b");
}

TEST_F(NSBundleTest, EnclosesItsExecutable) {
  const auto enclosing = [&](const std::string& executable) {
    return NSBundle::enclosing(files_, executable).bundlePath();
  };
  EXPECT_EQ(enclosing("/o/A 2.app/Contents/Helpers/B.app/Contents/Linux/B"),
            "/o/A 2.app/Contents/Helpers/B.app");
  EXPECT_EQ(enclosing("/o/A 2.app/Contents/Linux/annivo"), "/o/A 2.app");
  EXPECT_EQ(enclosing("/usr/bin/annivo"), "/usr/bin");
}

TEST_F(NSBundleTest, ReadsNothingBeforeItIsAsked) {
  const NSBundle bundle(files_, "/a/Agent.app");
  EXPECT_EQ(files_.counts().reads, 0u);
  EXPECT_EQ(bundle.bundleIdentifier(), "");
  EXPECT_EQ(bundle.bundleIdentifier(), "");
  EXPECT_EQ(files_.counts().reads, 1u);
}

TEST_F(NSBundleTest, TakesItsIdentifierAndExecutableFromInfo) {
  info({{"CFBundleIdentifier", "org.annivo.Annivo2.Agent"}, {"CFBundleExecutable", "Runner"}});
  const NSBundle bundle(files_, "/a/Agent.app");
  EXPECT_EQ(bundle.bundleIdentifier(), "org.annivo.Annivo2.Agent");
  EXPECT_EQ(bundle.executablePath(), "/a/Agent.app/Contents/Linux/Runner");
}

TEST_F(NSBundleTest, DoesWithoutInfo) {
  const NSBundle missing(files_, "/a/Agent.app");
  EXPECT_EQ(missing.infoDictionary(), PropertyList(PropertyList::Dictionary{}));
  EXPECT_EQ(missing.executablePath(), "/a/Agent.app/Contents/Linux/Agent");
  write("/a/Agent.app/Contents/Info.plist", "damaged");
  const NSBundle damaged(files_, "/a/Agent.app");
  EXPECT_EQ(damaged.infoDictionary(), PropertyList(PropertyList::Dictionary{}));
}

TEST_F(NSBundleTest, NeverLeavesItsFolderForAnExecutable) {
  for (const char* name : {"../../../bin/sh", "/bin/sh", "..", "a\nb"}) {
    info({{"CFBundleExecutable", name}});
    EXPECT_EQ(NSBundle(files_, "/a/Agent.app").executablePath(),
              "/a/Agent.app/Contents/Linux/Agent");
  }
}

TEST_F(NSBundleTest, FindsResources) {
  write("/a/Agent.app/Contents/Resources/Ledger.mom", "");
  write("/a/Agent.app/Contents/Resources/A.mom", "");
  write("/a/Agent.app/Contents/Resources/mom", "");
  const NSBundle bundle(files_, "/a/Agent.app");
  const std::string folder = "/a/Agent.app/Contents/Resources/";
  EXPECT_EQ(bundle.pathForResource("Ledger", "mom"), folder + "Ledger.mom");
  EXPECT_EQ(bundle.pathForResource("Ledger.mom", ""), folder + "Ledger.mom");
  EXPECT_EQ(bundle.pathForResource("None", "mom"), std::nullopt);
  EXPECT_EQ(bundle.pathsForResources("mom"),
            (std::vector<std::string>{folder + "A.mom", folder + "Ledger.mom"}));
  EXPECT_TRUE(NSBundle(files_, "/none").pathsForResources("mom").empty());
}

TEST_F(NSBundleTest, KnowsTheFormsOfAFramework) {
  int number = 0;
  for (const char* resources :
       {"/Resources", "/Versions/Current/Resources", "/Versions/A/Resources"}) {
    const std::string path = "/f" + std::to_string(++number) + "/S.framework";
    write(path + resources + "/Info.plist",
          xmlPropertyList(PropertyList::Dictionary{{"NSPrincipalClass", "SUUpdater"}}));
    const NSBundle bundle(files_, path);
    EXPECT_EQ(bundle.infoDictionary()["NSPrincipalClass"], PropertyList("SUUpdater")) << resources;
    EXPECT_EQ(bundle.resourcesPath(), path + resources);
    EXPECT_EQ(bundle.executablePath(), path + "/S");
  }
}

TEST_F(NSBundleTest, ChoosesATableByExactNameThenBareLanguageThenEnglish) {
  for (const char* language : {"en", "pt", "pt-PT", "zh-Hant", "zh-Hans", "de"}) {
    table(language, {{"k", language}});
  }
  const struct {
    std::vector<std::string> languages;
    const char* chosen;
  } rows[] = {{{"de"}, "de"},
              {{"de-AT"}, "de"},
              {{"de_AT"}, "de"},
              {{"pt-PT"}, "pt-PT"},
              {{"pt-BR"}, "pt"},
              {{"zh-Hant"}, "zh-Hant"},
              {{"zh-Hant-TW"}, "zh-Hant"},
              {{"zh-TW"}, "zh-Hant"},
              {{"zh-Hans-HK"}, "zh-Hans"},
              {{"xx", "de"}, "de"},
              {{"xx"}, "en"},
              {{"../de"}, "en"},
              {{""}, "en"},
              {{}, "en"}};
  for (const auto& row : rows) {
    EXPECT_EQ(text(row.languages), row.chosen) << &row - rows;
  }
}

TEST_F(NSBundleTest, LooksAKeyUpInTheChosenTableOnly) {
  table("de", {{"other", "x"}});
  table("en", {{"k", "english"}});
  EXPECT_EQ(text({"de"}), "k");
  EXPECT_EQ(text({"de"}, "k", "fallback"), "fallback");
  EXPECT_EQ(text({"de"}, "other", "fallback"), "x");
  EXPECT_EQ(text({"en"}, "", ""), "");
}

TEST_F(NSBundleTest, PassesOverADamagedTable) {
  write("/a/Agent.app/Contents/Resources/de.lproj/Localizable.strings", "damaged");
  table("en", {{"k", "english"}});
  EXPECT_EQ(text({"de"}), "english");
}

TEST_F(NSBundleTest, GivesTheKeyWithoutAnyTable) {
  EXPECT_EQ(text({"de"}), "k");
  EXPECT_EQ(text({"de"}, "k", "value"), "value");
}

TEST_F(NSBundleTest, ReadsATableOnce) {
  table("en", {{"k", "english"}});
  const NSBundle bundle(files_, "/a/Agent.app");
  for (int i = 0; i < 3; ++i) (void)bundle.localizedString("k", "", "Localizable", {"en"});
  EXPECT_EQ(files_.counts().reads, 1u);
}

}  // namespace
}  // namespace annivo
