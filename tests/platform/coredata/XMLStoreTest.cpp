// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "platform/coredata/XMLStore.h"
#include "tests/platform/coredata/LedgerFixture.h"

namespace annivo {
namespace {

struct XMLStore : testing::Test, LedgerFixture {};

const auto kIdentity =
    NSPredicateFormat::parse("(myUID LIKE[c] %@) AND (calendarUID LIKE[c] %@) AND (date == %@)");

TEST_F(XMLStore, WritesTheDocumentedForm) {
  {
    auto store = open();
    insert(*store, "A <&> \"1\"", kReferenceDate + std::chrono::microseconds{445103622250000});
    ASSERT_TRUE(store->save().ok());
  }
  std::string text = file();
  const auto uuid = text.find("<UUID>") + 6;
  EXPECT_EQ(text.substr(uuid + 36, 7), "</UUID>");
  text.replace(uuid, 36, "8D6DCE5A-2F1B-4A7C-9B0E-0B4D9C1A77E2");
  EXPECT_EQ(text, R"(<?xml version="1.0"?>
<!DOCTYPE database SYSTEM "file:///System/Library/DTDs/CoreData.dtd">

<database>
    <databaseInfo>
        <version>134481920</version>
        <UUID>8D6DCE5A-2F1B-4A7C-9B0E-0B4D9C1A77E2</UUID>
        <nextObjectID>102</nextObjectID>
        <metadata>
            <plist version="1.0">
                <dict>
                    <key>AnnivoGeneration</key>
                    <integer>1</integer>
                    <key>NSPersistenceFrameworkVersion</key>
                    <integer>407</integer>
                </dict>
            </plist>
        </metadata>
    </databaseInfo>
    <object type="EVENT" id="z102">
        <attribute name="myuid" type="string">A &lt;&amp;&gt; "1"</attribute>
        <attribute name="calendaruid" type="string">C</attribute>
        <attribute name="date" type="date">445103622.25000000000000000000</attribute>
        <attribute name="icaluid" type="string">E-A &lt;&amp;&gt; "1"</attribute>
    </object>
</database>
)");
}

TEST_F(XMLStore, ReadsAFileOfAnotherProgram) {
  write(
      "<?xml version=\"1.0\" standalone=\"yes\"?>\n<!-- hello -->\n<!DOCTYPE database SYSTEM "
      "\"file:///System/Library/DTDs/CoreData.dtd\">\n\n<database>\n\t<databaseInfo>"
      "<version>134481920</version><UUID>U</UUID><nextObjectID>247</nextObjectID><metadata>"
      "<plist version=\"1.0\"><dict><key>K</key><string>V</string></dict></plist></metadata>"
      "</databaseInfo>\n<?pi some?><!-- <object> -->\n"
      "<object id='z200' type='EVENT'><attribute name=\"date\" type=\"date\">-1.5e2</attribute>\n"
      "<attribute type=\"string\" name=\"myuid\">a<![CDATA[<b>]]>c<!-- x -->d&#10;&#x41;"
      "</attribute>"
      "<attribute name=\"icaluid\" type=\"string\"></attribute></object>"
      "<object type=\"EVENT\" id=\"z102\"/><object type=\"OTHER\" id=\"z103\"><relationship "
      "name=\"r\" type=\"0/0\" destination=\"EVENT\" idrefs=\"z102\"></relationship></object>"
      "</database>");
  auto store = open();
  const auto objects = all(*store);
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(objects[0]->objectID(), 102);
  EXPECT_TRUE(objects[0]->valueForKey("myUID").isNil());
  EXPECT_EQ(objects[1]->objectID(), 200);
  EXPECT_EQ(objects[1]->valueForKey("myUID").stringOr(""), "a<b>cd\nA");
  EXPECT_EQ(objects[1]->valueForKey("iCalUID").stringOr("nil"), "");
  EXPECT_EQ(*objects[1]->valueForKey("date").date(), kReferenceDate - std::chrono::seconds{150});
  EXPECT_EQ(insert(*store, "new").objectID(), 248) << "numbers are never used again";
}

TEST_F(XMLStore, KeepsEverythingElseOfTheFileByteForByte) {
  const std::string before =
      "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<database>\r\n  <databaseInfo>\r\n"
      "<version>134481920</version><UUID>U</UUID><nextObjectID>105</nextObjectID>\r\n"
      "<metadata><plist version=\"1.0\"><dict><key>D</key><data>\r\nAAA=\r\n</data></dict></plist>"
      "</metadata></databaseInfo>\r\n  <other>x</other><!-- c -->\r\n"
      "  <object  type=\"EVENT\"\tid=\"z102\" ><attribute name=\"extra\" type=\"string\">e"
      "</attribute></object>\r\n"
      "  <object type=\"EVENT\" id=\"z103\"><attribute name=\"myuid\" type=\"string\">gone"
      "</attribute></object>\r\n"
      "  <object type=\"STRANGE\" id=\"z104\"><attribute name=\"a\" type=\"string\">b</attribute>"
      "</object>\r\n  <object type=\"EVENT\" id=\"z105\"></object>\r\n</database>\r\n<!-- end -->";
  write(before);
  {
    auto store = open();
    auto objects = all(*store);
    ASSERT_EQ(objects.size(), 3U);
    store->remove(*objects[1]);
    set(*store, *objects[2], "myUID", "changed");
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }
  std::string expected = before;
  const auto replace = [&](const std::string& from, const std::string& to) {
    expected.replace(expected.find(from), from.size(), to);
  };
  replace("<dict><key>D</key>",
          "<dict><key>AnnivoGeneration</key><integer>1</integer><key>D</key>");
  replace(
      "\r\n  <object type=\"EVENT\" id=\"z103\"><attribute name=\"myuid\" type=\"string\">gone"
      "</attribute></object>",
      "");
  replace("<object type=\"EVENT\" id=\"z105\"></object>",
          "<object type=\"EVENT\" id=\"z105\">\n        <attribute name=\"myuid\" type=\"string\">"
          "changed</attribute>\n    </object>");
  EXPECT_EQ(file(), expected);
}

TEST_F(XMLStore, NumbersAreNeverUsedAgain) {
  fill({"a", "b"});
  {
    auto store = open();
    store->remove(*all(*store).back());
    ASSERT_TRUE(store->save().ok());
    ASSERT_TRUE(store->close().ok());
  }
  auto store = open();
  EXPECT_EQ(insert(*store, "c").objectID(), 104);
}

TEST_F(XMLStore, AnyTextIsFoundAgainAsItWasGiven) {
  std::mt19937 random(4711);
  std::vector<std::string> texts = {"",      " ",        "\n",           "\r",
                                    "\r\n",  "\t x ",    "]]>",          "&amp;",
                                    "&#13;", "<a>",      "Zoë",          std::string(1, '\0'),
                                    "\x7F",  "\xFF\xFE", "\xEF\xBF\xBE", "\xED\xA0\x80"};
  for (int i = 0; i < 200; ++i) {
    std::string text(random() % 20, '\0');
    for (char& c : text) c = static_cast<char>(random() % 256);
    texts.push_back(text);
  }
  {
    auto store = open();
    for (std::size_t i = 0; i < texts.size(); ++i) {
      set(*store, insert(*store, std::to_string(i)), "iCalUID", texts[i]);
      if (i % 7 == 0) {
        ASSERT_TRUE(store->save().ok());
      }
    }
    ASSERT_TRUE(store->save().ok());
  }
  for (int round = 0; round < 2; ++round) {  // From the journal, then from the file.
    auto store = open();
    const auto objects = all(*store);
    ASSERT_EQ(objects.size(), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
      EXPECT_EQ(objects[i]->valueForKey("iCalUID").stringOr("nil"), texts[i]) << i;
    }
    ASSERT_TRUE(store->close().ok());
  }
}

TEST_F(XMLStore, DatesKeepTheirMicroseconds) {
  const std::vector<Date> dates = {kEarliestDate,
                                   kLatestDate,
                                   kReferenceDate,
                                   kReferenceDate - std::chrono::microseconds{1},
                                   kUnixEpoch,
                                   Date{std::chrono::microseconds{1234567890123457}},
                                   kLatestDate - std::chrono::microseconds{3}};
  {
    auto store = open();
    for (const Date date : dates) insert(*store, "d", date);
    ASSERT_TRUE(store->save().ok());
  }
  auto store = open();
  const auto objects = all(*store);
  ASSERT_EQ(objects.size(), dates.size());
  for (std::size_t i = 0; i < dates.size(); ++i) {
    EXPECT_EQ(*objects[i]->valueForKey("date").date(), dates[i]) << i;
  }
}

struct DateForm {
  const char* text;
  std::optional<std::int64_t> microseconds;
};

TEST_F(XMLStore, ReadsDatesInAnyDecimalFormAndOthersAsNil) {
  const std::vector<DateForm> forms = {{"0", 0},
                                       {" 1.5 ", 1500000},
                                       {"\n-1.5\n", -1500000},
                                       {"+2", 2000000},
                                       {"1e3", 1000000000},
                                       {"445103622.25000000000000000000", 445103622250000},
                                       {"0.0000004", 0},
                                       {"0.0000005", 1},
                                       {"3.1415926535", 3141593},
                                       {"1.", 1000000},
                                       {"", std::nullopt},
                                       {"nan", std::nullopt},
                                       {"inf", std::nullopt},
                                       {"1,5", std::nullopt},
                                       {"0x10", std::nullopt},
                                       {"1e400", std::nullopt},
                                       {"999999999999", std::nullopt},
                                       {"99999999999999999999999", std::nullopt},
                                       {"tomorrow", std::nullopt}};
  std::string objects;
  int number = 102;
  for (const auto& form : forms) {
    objects += "<object type=\"EVENT\" id=\"z" + std::to_string(number++) +
               "\"><attribute name=\"date\" type=\"date\">" + form.text + "</attribute></object>";
  }
  write(document(objects));
  auto store = open();
  const auto found = all(*store);
  ASSERT_EQ(found.size(), forms.size());
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const auto* date = found[i]->valueForKey("date").date();
    EXPECT_EQ(date ? std::optional((*date - kReferenceDate).count()) : std::nullopt,
              forms[i].microseconds)
        << forms[i].text;
  }
  EXPECT_FALSE(store->notes().empty()) << "what could not be read is noted";
}

TEST_F(XMLStore, FetchesInAscendingOrderWhateverTheOrderInTheFile) {
  write(document(object("z105", "c") + object("z103", "a") + object("z104", "b")));
  auto store = open();
  EXPECT_EQ(myUIDs(*store), (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(XMLStore, FindsByIdentityAsAScanWould) {
  std::mt19937 random(99);
  const std::vector<std::string> uids = {"a", "A", "ä", "Ä", "ß", "SS", "ab", "a*", "?b", ""};
  auto store = open();
  std::vector<NSManagedObject*> objects;
  const auto pick = [&] { return uids[random() % uids.size()]; };
  const auto day = [&] { return kDay + std::chrono::hours{24 * (random() % 3)}; };
  for (int step = 0; step < 3000; ++step) {
    switch (random() % 6) {
      case 0:
        objects.push_back(&insert(*store, pick(), day()));
        break;
      case 1:
        if (!objects.empty()) set(*store, *objects[random() % objects.size()], "myUID", pick());
        break;
      case 2:
        if (objects.size() > 20) {
          store->remove(*objects.back());
          objects.pop_back();
        }
        break;
      default: {
        const auto predicate = kIdentity.with({pick(), "c", day()});
        std::vector<NSManagedObject*> expected;
        for (NSManagedObject* object : objects) {
          if (predicate.evaluate([&](std::string_view key) -> const PropertyList& {
                return object->valueForKey(key);
              })) {
            expected.push_back(object);
          }
        }
        const auto found = store->execute({"Event", predicate});
        ASSERT_TRUE(found.ok());
        ASSERT_EQ(*found, expected) << "step " << step;
      }
    }
  }
}

TEST_F(XMLStore, OpeningReadsNothing) {
  write(document(object("z102", "a")));
  files.makeUnreadable(path());
  auto store = open();
  EXPECT_FALSE(store->hasChanges());
  EXPECT_TRUE(store->save().ok());
  EXPECT_TRUE(store->close().ok());
  EXPECT_FALSE(store->load().ok());
}

TEST_F(XMLStore, ReadingAndClosingOpensNothingForWriting) {
  fill({"a"});
  const auto before = files.changes().size();
  auto store = open();
  EXPECT_EQ(all(*store).size(), 1U);
  EXPECT_TRUE(store->save().ok());
  EXPECT_TRUE(store->close().ok());
  EXPECT_EQ(files.changes().size(), before);
}

TEST_F(XMLStore, AFailedSaveKeepsTheChangesForTheNext) {
  fill({"a"});
  const auto changes = files.changes().size();
  auto store = open();
  insert(*store, "b");
  files.failChangesFrom(1, ENOSPC);
  const auto saved = store->save();
  ASSERT_FALSE(saved.ok());
  EXPECT_NE(saved.error().text().find("L.xml"), std::string::npos);
  EXPECT_TRUE(store->hasChanges());
  files.failNoMore();
  EXPECT_TRUE(store->save().ok());
  EXPECT_TRUE(store->close().ok());
  EXPECT_GT(files.changes().size(), changes);
  auto again = open();
  EXPECT_EQ(myUIDs(*again), (std::vector<std::string>{"a", "b"}));
}

TEST_F(XMLStore, EachChangeOfASaveMayFailAndIsMadeGoodByTheNext) {
  for (std::size_t number = 1; number <= 8; ++number) {
    folder.remove("L.xml");
    auto store = open();
    files.failChange(number, EIO);
    for (const char* uid : {"a", "b", "c", "d"}) {
      insert(*store, uid);
      (void)store->save().ok();
    }
    files.failNoMore();
    ASSERT_TRUE(store->save().ok()) << number;
    ASSERT_TRUE(store->close().ok()) << number;
    EXPECT_FALSE(hasJournal());
    auto again = open();
    EXPECT_EQ(myUIDs(*again), (std::vector<std::string>{"a", "b", "c", "d"})) << number;
  }
}

TEST_F(XMLStore, AFailedCloseLosesNothing) {
  fill({"a"});
  {
    auto store = open();
    insert(*store, "b");
    store->remove(*all(*store).front());
    ASSERT_TRUE(store->save().ok());
    files.failChange(1, ENOSPC);
    const auto closed = store->close();
    ASSERT_FALSE(closed.ok());
    EXPECT_NE(closed.error().text().find(path()), std::string::npos);
  }
  auto again = open();
  EXPECT_EQ(myUIDs(*again), std::vector<std::string>{"b"});
  EXPECT_TRUE(again->close().ok());
  EXPECT_FALSE(hasJournal());
  EXPECT_EQ(file().find(">a<"), std::string::npos);
}

TEST_F(XMLStore, AFileThatAnotherProgramChangedMeanwhileIsNotOverwritten) {
  fill({"a"});
  auto store = open();
  insert(*store, "b");
  ASSERT_TRUE(store->save().ok());
  const std::string theirs = document(object("z102", "theirs"));
  write(theirs);
  insert(*store, "c");
  (void)store->save().ok();
  (void)store->close().ok();
  EXPECT_EQ(file(), theirs);
}

}  // namespace
}  // namespace annivo
