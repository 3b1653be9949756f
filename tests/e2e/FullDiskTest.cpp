// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "tests/e2e/AgentHome.h"

namespace annivo {
namespace {

/// Lets this process mount file systems that nobody else sees: in a namespace of its own, and,
/// where it is not the superuser's, in one of users too.
bool enterMountNamespace() {
  const auto user = std::to_string(::geteuid());
  const auto group = std::to_string(::getegid());
  if (::unshare(CLONE_NEWNS) != 0) {
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
    std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
  }
  return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// A home on a file system of its own, whose last byte can be used up.
class FullDisk : public testing::Test {
 protected:
  static constexpr int kPeople = 29;

  void SetUp() override {
    static const bool entered = enterMountNamespace();
    ASSERT_TRUE(entered) << "This test mounts a small file system and may not do so here ("
                         << std::strerror(errno)
                         << "). Nothing else tries a disk that is really full: run it as the "
                            "superuser or where users may make namespaces.";
    ASSERT_EQ(::mount("full", home.folder.path().c_str(), "tmpfs", 0, "size=4m"), 0)
        << "A file system could not be mounted: " << std::strerror(errno);
    mounted_ = true;
    home.addCalendar(kBirthdays, "Birthdays");
    home.setParent({{"birthCalUID", kBirthdays},
                    {"birthCalTitle", "Birthdays"},
                    {"titleBirthdays", PropertyList::Array{"First name"}},
                    {"setEmail", "me@example.org"},
                    {"alarmTable", PropertyList::Array{}}});
    setPeople("Old", 0);
    ASSERT_EQ(home.run().status, 0);
    ASSERT_EQ(home.titles(kBirthdays).size(), 3U * kPeople);
  }
  void TearDown() override {
    if (!mounted_) return;
    EXPECT_EQ(::umount2(home.folder.path().c_str(), MNT_DETACH), 0);
  }

  /// People of these first names; the first ones of them are gone.
  void setPeople(const std::string& name, int gone) const {
    std::vector<StoredPerson> people;
    for (int i = gone; i < kPeople; ++i) {
      people.push_back(personBorn("Person", std::to_string(i), {1980, 6, 1 + i % 28}));
      people.back().firstName = name + std::to_string(i);
    }
    home.setContacts(people);
  }
  /// Uses up every byte.
  void fill() const {
    const int file = ::open(home.folder.path("filling").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    const std::string block(1024, 'x');
    while (::write(file, block.data(), block.size()) > 0) {
    }
    EXPECT_EQ(errno, ENOSPC);
    ::close(file);
    struct statvfs status {};
    ASSERT_EQ(::statvfs(home.folder.path().c_str(), &status), 0);
    ASSERT_EQ(status.f_bavail, 0U);
  }
  void empty() const { home.folder.remove("filling"); }
  static std::ptrdiff_t alerts(const AgentRun& run) {
    return std::count_if(run.log.begin(), run.log.end(),
                         [](const std::string& line) { return line.starts_with("Nobody to ask"); });
  }

  AgentHome home;

 private:
  bool mounted_ = false;
};

TEST_F(FullDisk, ChangesNothingAndTheNextRunMakesAllGood) {
  setPeople("New", 9);
  fill();
  const auto calendars = home.folder.fingerprint("Library/Calendars");
  const auto own = home.own();
  const AgentRun full = home.run();
  EXPECT_EQ(full.status, 1) << full.errors;
  EXPECT_EQ(home.folder.fingerprint("Library/Calendars"), calendars);
  EXPECT_EQ(home.own(), own) << "the time of the run is not stored";
  EXPECT_GE(alerts(full), 1) << full.errors;
  EXPECT_LE(alerts(full), 2) << full.errors;

  empty();
  const AgentRun next = home.run();
  EXPECT_EQ(next.status, 0) << next.errors;
  const auto titles = home.titles(kBirthdays);
  EXPECT_EQ(titles.size(), 3U * (kPeople - 9));
  for (const auto& title : titles) EXPECT_TRUE(title.starts_with("New")) << title;
  EXPECT_EQ(home.ledgerRecords(), titles.size());
  const auto quiet = home.fingerprint();
  EXPECT_EQ(home.run().status, 0);
  EXPECT_EQ(home.fingerprint(), quiet);
}

TEST_F(FullDisk, TakesNothingOutWhereItIsSwitchedOffBeforeItsMarkCanBeWritten) {
  home.setOwn({{"alarmSet", "1"}});
  fill();
  const auto calendars = home.folder.fingerprint("Library/Calendars");
  EXPECT_EQ(home.run().status, 1);
  EXPECT_EQ(home.folder.fingerprint("Library/Calendars"), calendars);
  empty();
  EXPECT_EQ(home.run().status, 0);
  EXPECT_TRUE(home.titles(kBirthdays).empty());
  EXPECT_EQ(home.ledgerRecords(), 0U);
}

}  // namespace
}  // namespace annivo
