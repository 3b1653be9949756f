// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/platform/coredata/LedgerFixture.h"
#include "tests/support/TimeLimit.h"

namespace annivo {
namespace {

struct XMLStoreDamage : testing::Test, LedgerFixture {
  /// The file is malformed: the store starts empty, says so, and the first save sets the file
  /// aside.
  void expectSetAside(const std::string& bytes) {
    folder.remove("L.xml");
    write(bytes);
    {
      auto store = open();
      EXPECT_TRUE(all(*store).empty());
      ASSERT_TRUE(store->damage());
      EXPECT_EQ(store->damage()->kind, Error::Kind::malformed);
      EXPECT_NE(store->damage()->text().find(path()), std::string::npos);
      EXPECT_EQ(file(), bytes) << "nothing is moved before something is written";
      insert(*store, "new");
      ASSERT_TRUE(store->save().ok());
      ASSERT_TRUE(store->close().ok());
    }
    const std::string aside = "L.xml.damaged-20261120T184600Z";
    EXPECT_EQ(folder.readFile(aside), bytes);
    folder.remove(aside);
    auto again = open();
    EXPECT_EQ(myUIDs(*again), std::vector<std::string>{"new"});
    EXPECT_FALSE(again->damage());
  }
};

TEST_F(XMLStoreDamage, AFileCutAtAnyByteIsSetAside) {
  fill({"a", "b"});
  const std::string whole = file();
  for (std::size_t length = 0; length + 1 < whole.size(); ++length) {
    SCOPED_TRACE(length);
    expectSetAside(whole.substr(0, length));
  }
}

struct DamageCase {
  const char* name;
  std::string bytes;
};

TEST_F(XMLStoreDamage, MalformedFilesAreSetAside) {
  const std::string good = document(object("z102", "a"));
  const auto with = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    return text.replace(text.find(from), from.size(), to);
  };
  std::string bomb = "<?xml version=\"1.0\"?>\n<!DOCTYPE database [<!ENTITY a \"ha\">";
  for (char c = 'b'; c <= 'z'; ++c) {
    bomb += std::string("<!ENTITY ") + c + " \"&" + static_cast<char>(c - 1) + ";&" +
            static_cast<char>(c - 1) + ";\">";
  }
  bomb += "]>\n" + good.substr(good.find("<database>"));
  const std::vector<DamageCase> cases = {
      {"empty", ""},
      {"binary", std::string(1000, '\0')},
      {"another root", "<plist></plist>"},
      {"an empty root", "<database/>"},
      {"no databaseInfo", "<database></database>"},
      {"two databaseInfos", with("</databaseInfo>", "</databaseInfo><databaseInfo/>")},
      {"no version", with("<version>134481920</version>", "")},
      {"a version in words", with("134481920", "new")},
      {"a version too large for a number", with("134481920", "99999999999999999999999")},
      {"numbers used up", with(">110<", ">9223372036854775807<")},
      {"an entity bomb", bomb},
      {"an entity of its own", with("SYSTEM \"file", "[<!ENTITY a SYSTEM \"/etc/passwd\">] \"")},
      {"the same id twice", document(object("z102", "a") + object("z102", "b"))},
      {"the same id in another entity",
       document(object("z102", "a") + "<object type=\"OTHER\" id=\"z102\"></object>")},
      {"no id", with(" id=\"z102\"", "")},
      {"an id that is none", with("z102", "102")},
      {"a negative id", with("z102", "z-5")},
      {"an id beyond all numbers", with("z102", "z99999999999999999999")},
      {"unbalanced tags", with("</attribute>", "</attribut>")},
      {"text between the objects", with("<object", "text <object")},
      {"a second root", good + "<database></database>"},
      {"an object without an end", with("</object>", "")},
      {"an object of two MiB", document(object("z102", std::string(2 << 20, 'x')))},
      {"an instruction that is none in databaseInfo",
       with("<databaseInfo>", "<databaseInfo><?x\"?>")},
      {"an element without a name", with("</object>", "</object><></object>")},
      {"a foreign element that ends as another", with("</object>", "</object><a></object>")},
      {"a foreign element that is not well-formed", with("</object>", "</object><a><b></a>")},
      {"nested 300,000 deep",
       [&] {
         std::string deep;
         for (int i = 0; i < 300000; ++i) deep += "<object>";
         return document(deep);
       }()},
      {"UTF-16", std::string("\xFF\xFE<\0?\0x\0", 8)},
  };
  for (const auto& damaged : cases) {
    SCOPED_TRACE(damaged.name);
    const TimeLimit limit;
    expectSetAside(damaged.bytes);
  }
}

TEST_F(XMLStoreDamage, WhatAFuzzerFoundIsSetAside) {
  std::size_t count = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(ANNIVO_SOURCE_DIR "/tests/fuzz/corpus/ledger")) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with("damaged-")) continue;
    SCOPED_TRACE(name);
    std::ifstream in(entry.path(), std::ios::binary);
    expectSetAside({std::istreambuf_iterator<char>(in), {}});
    ++count;
  }
  EXPECT_GE(count, 2U);
}

TEST_F(XMLStoreDamage, AHundredMegabytesOfSpacesAreReadWithinASecond) {
  const std::string spaces(std::size_t{100} * 1000 * 1000, ' ');
  for (const bool wellFormed : {true, false}) {
    std::string text = document(object("z102", "a"));
    if (wellFormed) {
      text.insert(text.find("    <object"), spaces);
    } else {
      text = spaces;
    }
    write(text);
    const TimeLimit limit;
    auto store = open();
    EXPECT_EQ(all(*store).size(), wellFormed ? 1U : 0U);
    EXPECT_EQ(store->damage().has_value(), !wellFormed);
  }
}

TEST_F(XMLStoreDamage, AnUnreadableFileIsNeitherDamagedNorTouched) {
  folder.makeFolder("L.xml");
  auto store = open();
  const auto loaded = store->load();
  ASSERT_FALSE(loaded.ok());
  EXPECT_EQ(loaded.error().kind, Error::Kind::unreadable);
  EXPECT_NE(loaded.error().text().find(path()), std::string::npos);
  EXPECT_FALSE(store->damage());
  EXPECT_FALSE(store->execute({"Event", {}}).ok());
  EXPECT_EQ(store->insert(*model->entityForName("Event")), nullptr);
  EXPECT_TRUE(store->close().ok());
  EXPECT_TRUE(folder.exists("L.xml"));
}

TEST_F(XMLStoreDamage, ANewerVersionIsReadAndNeverWritten) {
  const std::string text = document(object("z102", "a"), "134481921");
  write(text);
  auto store = open();
  EXPECT_EQ(myUIDs(*store), std::vector<std::string>{"a"});
  EXPECT_FALSE(store->damage());
  insert(*store, "b");
  const auto saved = store->save();
  ASSERT_FALSE(saved.ok());
  EXPECT_NE(saved.error().text().find(path()), std::string::npos);
  EXPECT_EQ(all(*store).size(), 2U) << "in memory the change stands";
  EXPECT_TRUE(store->close().ok());
  EXPECT_EQ(file(), text);
}

TEST_F(XMLStoreDamage, AnOlderVersionIsReadAndWritten) {
  write(document(object("z102", "a"), "134481919"));
  auto store = open();
  insert(*store, "b");
  EXPECT_TRUE(store->save().ok());
}

TEST_F(XMLStoreDamage, DamagedFilesAreKeptSideBySide) {
  for (const std::string name : {"first", "second", "third"}) {
    write(name);
    auto store = open();
    ASSERT_TRUE(store->load().ok());
    ASSERT_TRUE(store->close().ok());
  }
  EXPECT_EQ(folder.readFile("L.xml.damaged-20261120T184600Z"), "first");
  EXPECT_EQ(folder.readFile("L.xml.damaged-20261120T184600Z-2"), "second");
  EXPECT_EQ(folder.readFile("L.xml.damaged-20261120T184600Z-3"), "third");
}

TEST_F(XMLStoreDamage, WhatCannotBeSetAsideIsNotOverwritten) {
  write("damaged");
  auto store = open();
  insert(*store, "a");
  files.failChange(1, EACCES);
  EXPECT_FALSE(store->save().ok());
  EXPECT_EQ(file(), "damaged");
  EXPECT_TRUE(store->save().ok());
  EXPECT_EQ(folder.readFile("L.xml.damaged-20261120T184600Z"), "damaged");
}

}  // namespace
}  // namespace annivo
