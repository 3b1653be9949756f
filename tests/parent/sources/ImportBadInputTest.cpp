// SPDX-License-Identifier: MIT
// What the import command says of input that nobody should have written: one clear line each, and
// the source stays as it was.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "tests/parent/support/CommandHome.h"
#include "tests/parent/support/ProgramHome.h"

namespace annivo {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kHundredMegabytes = 100'000'000;
const std::string kAnn = vCard("FN:Ann Smith\nBDAY:19800610\nUID:u1\n");

class ImportBadInput : public testing::Test {
 protected:
  ImportBadInput() {
    world.import(kAnn);
    before = world.home.folder().fingerprint("Library");
  }
  ~ImportBadInput() override { EXPECT_EQ(world.home.folder().fingerprint("Library"), before); }

  std::string write(const std::string& bytes) {
    world.home.writeFile("bad.vcf", bytes);
    return world.home.path("bad.vcf");
  }
  /// What follows the file's path in the one line.
  std::string refused(const std::string& path) {
    const std::string line = world.refused({"import", path});
    const std::string start =
        "no vCard with a person in " + path + "; the address book is as it was";
    EXPECT_TRUE(line.starts_with(start)) << line;
    return line.substr(std::min(start.size(), line.size()));
  }

  CommandHome world;
  std::map<std::string, std::string> before;
};

TEST_F(ImportBadInput, OfACardThatNeverEnds) {
  const std::string path = write("BEGIN:VCARD\nVERSION:3.0\nFN:Never\nBDAY:19800610\n");
  EXPECT_EQ(refused(path), " (" + path + ":1: the card never ends (END:VCARD is missing))");
}

TEST_F(ImportBadInput, OfOneHugeLine) {
  const std::string path = write("");
  fs::resize_file(path, kHundredMegabytes);
  EXPECT_EQ(refused(path), "");
}

TEST_F(ImportBadInput, OfACardThatIsOneHugeLine) {
  const std::string path = write("BEGIN:VCARD\nNOTE:");
  fs::resize_file(path, kHundredMegabytes);
  EXPECT_EQ(refused(path), " (" + path + ":1: the card is larger than 1 MiB)");
}

TEST_F(ImportBadInput, OfNamesThatAreNotValidUTF8) {
  const std::string path = write(vCard("FN:M\xFCller\nBDAY:19800610\n"));
  EXPECT_EQ(refused(path), " (" + path + ":1: FN: it is not valid UTF-8)");
}

TEST_F(ImportBadInput, OfAnotherKindOfFile) {
  EXPECT_EQ(refused(write(std::string("\x89PNG\r\n\x1A\n\0\0\0", 11))), "");
  EXPECT_EQ(refused(write("First name,Birthday\nAnn,1980-06-10\n")), "");
  EXPECT_EQ(refused(write("BEGIN:VCALENDAR\nBEGIN:VEVENT\nEND:VEVENT\nEND:VCALENDAR\n")), "");
}

TEST_F(ImportBadInput, OfAFolderWithoutCards) {
  fs::create_directory(world.home.path("empty"));
  EXPECT_EQ(refused(world.home.path("empty")), "");
}

TEST_F(ImportBadInput, OfALinkThatLeadsNowhere) {
  fs::create_directory(world.home.path("links"));
  fs::create_symlink("nowhere", world.home.path("links/a.vcf"));
  EXPECT_NE(world.refused({"import", world.home.path("links")}).find("links/a.vcf"),
            std::string::npos);
}

TEST_F(ImportBadInput, OfAFolderThatHoldsItself) {
  fs::create_directory(world.home.path("loop"));
  fs::create_directory_symlink(".", world.home.path("loop/again.vcf"));
  EXPECT_EQ(refused(world.home.path("loop")), "");
}

// As the program says it, without the rights of root.

TEST(ImportWithoutPermission, IsOneLineThatNamesTheFolder) {
  const ProgramHome home;
  home.folder.writeFile("cards/closed/a.vcf", kAnn);
  fs::permissions(home.folder.path("cards/closed"), fs::perms::none);
  const std::string program = ProgramHome::programPath("annivo");
  const std::string rights =
      geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search " : "";
  const std::string command = "HOME=" + home.folder.path() + ' ' + rights + "'" + program +
                              "' import " + home.folder.path("cards") + " > " +
                              home.folder.path("said") + " 2>&1";
  const int status = std::system(command.c_str());
  fs::permissions(home.folder.path("cards/closed"), fs::perms::owner_all);
  const std::string said = home.folder.readFile("said");
  EXPECT_EQ(WEXITSTATUS(status), 1) << said;
  EXPECT_TRUE(said.starts_with("annivo: ")) << said;
  EXPECT_NE(said.find("cards/closed"), std::string::npos) << said;
  EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
  EXPECT_FALSE(home.folder.exists("Library"));
}

TEST(ImportOnAFullDisk, IsOneLineAndKeepsThePreviousSource) {
  const ProgramHome home;
  home.folder.writeFile("a.vcf", kAnn);
  (void)home.done({"import", home.folder.path("a.vcf")});
  const auto before = home.folder.snapshot("Library");
  std::string many;
  for (int i = 0; i < 500; ++i) {
    many += vCard("FN:Person " + std::to_string(i) + "\nBDAY:19800610\n");
  }
  home.folder.writeFile("a.vcf", many);
  // A file that may not grow fails as one on a full disk does.
  const std::string command = "ulimit -f 64; trap '' XFSZ; HOME=" + home.folder.path() + " '" +
                              ProgramHome::programPath("annivo") + "' import " +
                              home.folder.path("a.vcf") + " > " + home.folder.path("said") +
                              " 2>&1";
  const int status = std::system(command.c_str());
  const std::string said = home.folder.readFile("said");
  EXPECT_EQ(WEXITSTATUS(status), 1) << said;
  EXPECT_TRUE(said.starts_with("annivo: ")) << said;
  EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
  EXPECT_EQ(home.folder.snapshot("Library"), before);
}

}  // namespace
}  // namespace annivo
