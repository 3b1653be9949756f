// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>

#include "platform/foundation/NSUserDefaults.h"
#include "tests/support/Doubles.h"
#include "tests/support/FailingFileManager.h"
#include "tests/support/MemoryFileManager.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

constexpr const char* kDomain = "org.annivo.Annivo2";
constexpr const char* kFile = "Library/Preferences/org.annivo.Annivo2.plist";

class PreferenceDomainsTest : public testing::Test {
 protected:
  void store(const PropertyList& values, const std::string& domain = kDomain) {
    home_.writeFile("Library/Preferences/" + domain + ".plist", binaryPropertyList(values));
  }
  PropertyList stored() {
    auto list = parsePropertyList(home_.readFile(kFile), kFile);
    EXPECT_TRUE(list);
    return list ? *std::move(list) : PropertyList();
  }
  PreferenceDomains domains() { return {files_, clock_, log_, home_.path()}; }
  std::vector<std::string> filesInFolder() {
    std::vector<std::string> names;
    for (const auto& [name, content] : home_.snapshot("Library/Preferences")) names.push_back(name);
    return names;
  }

  TemporaryFolder home_;
  PosixFileManager disk_;
  FailingFileManager files_{disk_};
  ManualClock clock_{utc(2026, 11, 20, 18, 46)};
  RecordingLog log_;
};

TEST_F(PreferenceDomainsTest, AreAbsentWithoutAFileAndMakeNone) {
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_TRUE(home_.snapshot().empty());
}

TEST_F(PreferenceDomainsTest, ReadBothForms) {
  const Dictionary values{{"appRunning", true}, {"theLabels", Array{"a", "b"}}};
  store(values);
  home_.writeFile("Library/Preferences/other.plist", xmlPropertyList(values));
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), values);
  EXPECT_EQ(domains.domain("other"), values);
}

TEST_F(PreferenceDomainsTest, AreWrittenBinaryForTheOwnerOnlyAndKeepEveryOtherKey) {
  home_.writeFile(kFile, xmlPropertyList(Dictionary{{"a", 1}, {"b", "x"}}));
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "b", true);
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_TRUE(home_.readFile(kFile).starts_with("bplist00"));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}, {"b", true}}));
  struct stat status {};
  ASSERT_EQ(::stat(home_.path(kFile).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(PreferenceDomainsTest, MakeTheFolderWhenFirstWrittenTo) {
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 1);
  ASSERT_TRUE(domains.synchronize(kDomain));
  struct stat status {};
  ASSERT_EQ(::stat(home_.path("Library/Preferences").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}}));
}

TEST_F(PreferenceDomainsTest, ShowAChangeAtOnceAndWriteItWhenSynchronized) {
  store(Dictionary{{"a", 1}, {"b", 2}});
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 10);
  domains.set(kDomain, "b", PropertyList());
  EXPECT_EQ(domains.domain(kDomain), (Dictionary{{"a", 10}}));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}, {"b", 2}}));
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 10}}));
}

TEST_F(PreferenceDomainsTest, WriteNothingWhereNothingDiffers) {
  store(Dictionary{{"appRunning", false}});
  const auto before = home_.fingerprint();
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "appRunning", false);
  domains.set(kDomain, "absent", PropertyList());
  ASSERT_TRUE(domains.synchronize(kDomain));
  ASSERT_TRUE(domains.synchronize("another"));
  EXPECT_EQ(home_.fingerprint(), before);
  EXPECT_TRUE(files_.changes().empty());
}

TEST_F(PreferenceDomainsTest, TellFalseFromZeroAndFromTheTextZero) {
  store(Dictionary{{"appRunning", 0}});
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "appRunning", false);
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_EQ(stored()["appRunning"], PropertyList(false));
}

TEST_F(PreferenceDomainsTest, KeepAKeyThatAnotherProgramWroteMeanwhile) {
  store(Dictionary{{"a", 1}, {"b", 1}});
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 2);
  store(Dictionary{{"a", 1}, {"b", 5}, {"c", 7}});
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 2}, {"b", 5}, {"c", 7}}));
  EXPECT_EQ(domains.domain(kDomain), (Dictionary{{"a", 2}, {"b", 5}, {"c", 7}}));
}

TEST_F(PreferenceDomainsTest, LoseNothingWhenProcessesWriteAtOnce) {
  constexpr int kProcesses = 4;
  constexpr int kKeys = 25;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      bool good = true;
      for (int key = 0; key < kKeys; ++key) {
        PreferenceDomains domains{disk_, clock_, log_, home_.path()};
        domains.set(kDomain, std::to_string(process) + "-" + std::to_string(key), key);
        good = domains.synchronize(kDomain).ok() && good;
      }
      ::_exit(good ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  ASSERT_TRUE(stored().dictionary());
  EXPECT_EQ(stored().dictionary()->size(), static_cast<std::size_t>(kProcesses * kKeys));
}

TEST_F(PreferenceDomainsTest, KeepValuesOfEveryTypeUnderEveryKey) {
  const PropertyList odd[] = {true,
                              7,
                              -7,
                              1.5,
                              "text",
                              utc(1604, 2, 29),
                              PropertyList::Data{"bytes"},
                              Array{1, "x"},
                              Dictionary{{"k", Array{}}},
                              PropertyList::Foreign{std::string("\x80\x05", 2)}};
  Dictionary values;
  for (const PropertyList& value : odd) {
    for (const char* key : {"birthCalTitle", "birthCalUID", "appRunning", "titleBirthdays",
                            "alarmTable", "lastLaunched", "theLabels", "SULastCheckTime"}) {
      values.insert_or_assign(key, value);
    }
    store(values);
    PreferenceDomains domains = this->domains();
    domains.set(kDomain, "another", "x");
    ASSERT_TRUE(domains.synchronize(kDomain));
    Dictionary expected = values;
    expected.insert_or_assign("another", "x");
    EXPECT_EQ(stored(), PropertyList(expected));
  }
}

// Files that cannot be used.

TEST_F(PreferenceDomainsTest, HaveNoFailureWhereTheFileIsGoodOrAbsent) {
  PreferenceDomains domains = this->domains();
  store(Dictionary{{"a", 1}});
  EXPECT_EQ(domains.failure(kDomain), nullptr);
  EXPECT_EQ(domains.failure("absent"), nullptr);
}

TEST_F(PreferenceDomainsTest, SayWhyAFileCannotBeUsedUntilItIsReplaced) {
  home_.writeFile(kFile, "garbage");
  PreferenceDomains domains = this->domains();
  ASSERT_NE(domains.failure(kDomain), nullptr);
  EXPECT_EQ(domains.failure(kDomain)->kind, Error::Kind::malformed);
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  EXPECT_TRUE(log_.lines().empty()) << "who asked tells";
  domains.set(kDomain, "a", 1);
  EXPECT_NE(domains.failure(kDomain), nullptr);
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_EQ(domains.failure(kDomain), nullptr);
}

TEST_F(PreferenceDomainsTest, AreUnreadableNotAbsentWhateverTheReadingFailsWith) {
  store(Dictionary{{"a", 1}});
  files_.makeUnreadable(home_.path(kFile));
  PreferenceDomains domains = this->domains();
  ASSERT_NE(domains.failure(kDomain), nullptr);
  EXPECT_EQ(domains.failure(kDomain)->kind, Error::Kind::unreadable);
}

TEST_F(PreferenceDomainsTest, NameAValueOfAnotherTypeOnce) {
  PreferenceDomains domains = this->domains();
  for (const char* key : {"a", "b", "a"}) domains.reportType(kDomain, key, "text");
  EXPECT_EQ(log_.count(home_.path(kFile) + ": the value of \"a\" is no text"), 1u);
  EXPECT_EQ(log_.lines().size(), 2u);
}

TEST_F(PreferenceDomainsTest, ReportADamagedFileThatNobodyAskedAboutOnce) {
  home_.writeFile(kFile, "this is no property list");
  const auto before = home_.fingerprint();
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  EXPECT_EQ(log_.count(home_.path(kFile)), 1u);
  EXPECT_EQ(home_.fingerprint(), before);
}

TEST_F(PreferenceDomainsTest, SetADamagedFileAsideBeforeTheyAreWritten) {
  for (const std::string& damaged : {std::string("garbage"), std::string("bplist00"), std::string(),
                                     binaryPropertyList(Array{1, 2}), xmlPropertyList("text")}) {
    home_.remove("Library/Preferences");
    home_.writeFile(kFile, damaged);
    PreferenceDomains domains = this->domains();
    domains.set(kDomain, "a", 1);
    ASSERT_TRUE(domains.synchronize(kDomain));
    EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}}));
    EXPECT_EQ(home_.readFile(std::string(kFile) + ".damaged-20261120T184600Z"), damaged);
  }
}

TEST_F(PreferenceDomainsTest, KeepAnEarlierDamagedFileOfTheSameSecond) {
  for (const char* damaged : {"first", "second", "third"}) {
    home_.writeFile(kFile, damaged);
    PreferenceDomains domains = this->domains();
    domains.set(kDomain, "a", 1);
    ASSERT_TRUE(domains.synchronize(kDomain));
  }
  const std::string aside = std::string(kFile) + ".damaged-20261120T184600Z";
  EXPECT_EQ(home_.readFile(aside), "first");
  EXPECT_EQ(home_.readFile(aside + "-2"), "second");
  EXPECT_EQ(home_.readFile(aside + "-3"), "third");
}

TEST_F(PreferenceDomainsTest, LeaveADamagedFileInPlaceWhenItCannotBeSetAside) {
  home_.writeFile(kFile, "garbage");
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 1);
  files_.failChange(2, EACCES);  // after the lock
  EXPECT_FALSE(domains.synchronize(kDomain));
  EXPECT_EQ(files_.changes()[1].operation, "rename");
  EXPECT_EQ(home_.readFile(kFile), "garbage");
}

TEST_F(PreferenceDomainsTest, AreNeverWrittenOverAnUnreadableFile) {
  store(Dictionary{{"a", 1}});
  const auto before = home_.snapshot();
  files_.makeUnreadable(home_.path(kFile));
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  EXPECT_EQ(log_.count(home_.path(kFile)), 1u);
  domains.set(kDomain, "b", 2);
  const auto written = domains.synchronize(kDomain);
  ASSERT_FALSE(written);
  EXPECT_NE(written.error().text().find(home_.path(kFile)), std::string::npos);
  auto after = home_.snapshot();
  after.erase("Library/Preferences/.org.annivo.Annivo2.lock");
  EXPECT_EQ(after, before);
}

TEST_F(PreferenceDomainsTest, AreNotWrittenWhereAFolderStandsInPlaceOfTheFile) {
  home_.makeFolder(kFile);
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  domains.set(kDomain, "b", 2);
  EXPECT_FALSE(domains.synchronize(kDomain));
  EXPECT_EQ(log_.count(home_.path(kFile)), 2u);
}

TEST_F(PreferenceDomainsTest, NameTheFileWhenTheFolderCannotBeWritten) {
  store(Dictionary{{"a", 1}});
  const auto before = home_.snapshot();
  files_.makeUnwritable(home_.path("Library/Preferences"));
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 2);
  EXPECT_FALSE(domains.synchronize(kDomain));
  EXPECT_EQ(log_.count(home_.path(kFile) + ": the preferences were not stored."), 1u);
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(PreferenceDomainsTest, NameTheFileWhenAFileStandsInPlaceOfTheFolder) {
  home_.writeFile("Library", "a file");
  PreferenceDomains domains = this->domains();
  EXPECT_EQ(domains.domain(kDomain), std::nullopt);
  domains.set(kDomain, "a", 2);
  EXPECT_FALSE(domains.synchronize(kDomain));
  EXPECT_EQ(log_.count(home_.path(kFile)), 1u);
  EXPECT_EQ(home_.readFile("Library"), "a file");
}

TEST_F(PreferenceDomainsTest, KeepAChangeForTheNextTryWhenAWriteFails) {
  store(Dictionary{{"a", 1}});
  PreferenceDomains domains = this->domains();
  domains.set(kDomain, "a", 2);
  files_.failChangesFrom(1, ENOSPC);
  EXPECT_FALSE(domains.synchronize(kDomain));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}}));
  files_.failNoMore();
  ASSERT_TRUE(domains.synchronize(kDomain));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 2}}));
}

TEST_F(PreferenceDomainsTest, AreOldOrNewWhereverTheProcessIsKilled) {
  const PropertyList old = Dictionary{{"a", 1}};
  const PropertyList changed = Dictionary{{"a", 2}};
  for (std::size_t change = 1; change <= 2; ++change) {  // the lock, the write
    store(old);
    {
      PreferenceDomains domains = this->domains();
      domains.set(kDomain, "a", 2);
      files_.killAtChange(change);
      EXPECT_FALSE(domains.synchronize(kDomain));
    }
    EXPECT_EQ(stored(), old);
    files_.failNoMore();
    PreferenceDomains domains = this->domains();
    domains.set(kDomain, "a", 2);
    ASSERT_TRUE(domains.synchronize(kDomain));
    EXPECT_EQ(stored(), changed);
    EXPECT_EQ(filesInFolder(),
              (std::vector<std::string>{".org.annivo.Annivo2.lock", "org.annivo.Annivo2.plist"}));
  }
}

TEST(PreferenceDomains, AreDurableOnceSynchronized) {
  const ManualClock clock(utc(2026, 11, 20));
  RecordingLog log;
  MemoryFileManager files(clock);
  files.makeFolders("/home/ann");
  PreferenceDomains domains(files, clock, log, "/home/ann");
  domains.set("d", "a", 1);
  ASSERT_TRUE(domains.synchronize("d"));
  files.cutPower(PowerLoss::nothingKept);
  PreferenceDomains after(files, clock, log, "/home/ann");
  EXPECT_EQ(after.domain("d"), (Dictionary{{"a", 1}}));
}

// User defaults.

TEST_F(PreferenceDomainsTest, AreSearchedOwnThenGlobalThenRegistered) {
  store(Dictionary{{"own", 1}}, "own");
  store(Dictionary{{"own", 2}, {"global", 2}}, kGlobalDomain);
  PreferenceDomains domains = this->domains();
  NSUserDefaults defaults(domains, "own");
  defaults.registerDefaults({{"own", 3}, {"global", 3}, {"registered", 3}});
  EXPECT_EQ(defaults.objectForKey("own"), PropertyList(1));
  EXPECT_EQ(defaults.objectForKey("global"), PropertyList(2));
  EXPECT_EQ(defaults.objectForKey("registered"), PropertyList(3));
  EXPECT_TRUE(defaults.objectForKey("none").isNil());
}

TEST_F(PreferenceDomainsTest, NeverStoreRegisteredValues) {
  PreferenceDomains domains = this->domains();
  NSUserDefaults defaults(domains, kDomain);
  defaults.registerDefaults({{"alarmSet", "0"}});
  defaults.setObjectForKey(utc(2026, 11, 20), "lastUpdate");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"lastUpdate", utc(2026, 11, 20)}}));
  EXPECT_EQ(defaults.objectForKey("lastUpdate"), PropertyList(utc(2026, 11, 20)));
}

TEST_F(PreferenceDomainsTest, GiveAnotherDomainWithoutFallbacks) {
  store(Dictionary{{"a", 1}});
  store(Dictionary{{"AppleLanguages", Array{"de"}}}, kGlobalDomain);
  PreferenceDomains domains = this->domains();
  NSUserDefaults defaults(domains, "own");
  defaults.registerDefaults({{"b", 1}});
  EXPECT_EQ(defaults.persistentDomainForName(kDomain), (Dictionary{{"a", 1}}));
  EXPECT_EQ(defaults.persistentDomainForName("none"), std::nullopt);
}

TEST_F(PreferenceDomainsTest, SetOneKeyOfAnotherApplication) {
  store(Dictionary{{"a", 1}});
  PreferenceDomains domains = this->domains();
  CFPreferences preferences(domains);
  preferences.setAppValue("appRunning", false, kDomain);
  ASSERT_TRUE(preferences.appSynchronize(kDomain));
  EXPECT_EQ(stored(), PropertyList(Dictionary{{"a", 1}, {"appRunning", false}}));
}

}  // namespace
}  // namespace annivo
