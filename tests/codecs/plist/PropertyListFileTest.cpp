// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

#include "codecs/plist/PropertyList.h"
#include "tests/support/Doubles.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

std::string xmlDocument(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n" +
         body + "\n</plist>\n";
}

/// A binary list of the given objects (the first is the top), with one-byte references.
std::string binaryOf(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string table;
  const auto put = [](std::string& to, std::uint64_t value, int size) {
    for (int i = size - 1; i >= 0; --i) to += static_cast<char>(value >> (8 * i) & 0xFF);
  };
  for (const std::string& object : objects) {
    put(table, bytes.size(), 4);
    bytes += object;
  }
  const std::size_t start = bytes.size();
  bytes += table + std::string(6, '\0') + "\x04\x01";
  put(bytes, objects.size(), 8);
  put(bytes, 0, 8);
  put(bytes, start, 8);
  return bytes;
}

PropertyList parsed(const std::string& bytes) {
  auto list = parsePropertyList(bytes, "test.plist");
  EXPECT_TRUE(list) << list.error().text();
  return list ? *std::move(list) : PropertyList();
}

std::string rejection(const std::string& bytes) {
  const auto list = parsePropertyList(bytes, "/home/ann/test.plist");
  if (list) return "accepted";
  EXPECT_EQ(list.error().kind, Error::Kind::malformed);
  EXPECT_NE(list.error().text().find("/home/ann/test.plist"), std::string::npos);
  return list.error().failureReason;
}

Dictionary everyKind() {
  return {{"true", true},
          {"false", false},
          {"one", 1},
          {"text one", "1"},
          {"minus five", -5},
          {"largest", std::numeric_limits<std::int64_t>::max()},
          {"smallest", std::numeric_limits<std::int64_t>::min()},
          {"byte", 255},
          {"short", 65536},
          {"real", 0.1},
          {"minus real", -1e-300},
          {"empty", ""},
          {"text", "Zoë <&> \"Ωμέγα\" \U0001F382"},
          {"lines", "a\nb\tc"},
          {"date", utc(2026, 11, 20, 18, 46, 1)},
          {"early date", utc(1604, 2, 29, 12)},
          {"late date", utc(2200, 1, 1)},
          {"data", PropertyList::Data{std::string("\0\x01\xFF", 3)}},
          {"array", Array{1, "two", Array{}, Dictionary{}}},
          {"dictionary", Dictionary{{"inner", Array{true, 1.5}}}},
          {"long", std::string(70000, 'x')},
          {"ключ", "ключ"}};
}

TEST(PropertyListFile, ReadsBackEveryKindInBothForms) {
  const PropertyList value = everyKind();
  EXPECT_EQ(parsed(binaryPropertyList(value)), value);
  EXPECT_EQ(parsed(xmlPropertyList(value)), value);
}

TEST(PropertyListFile, ReadsBackAListThatIsNoDictionary) {
  for (const PropertyList& value :
       {PropertyList("text"), PropertyList(7), PropertyList(Array{1, 2}), PropertyList(true)}) {
    EXPECT_EQ(parsed(binaryPropertyList(value)), value);
    EXPECT_EQ(parsed(xmlPropertyList(value)), value);
  }
}

TEST(PropertyListFile, KeepsTheFractionOfADateInTheBinaryFormOnly) {
  using std::chrono::microseconds;
  for (const Date whole : {utc(2026, 11, 20, 18, 46), utc(1999, 12, 31, 23, 59, 59)}) {
    const Date date = whole + microseconds{123456};
    EXPECT_EQ(parsed(binaryPropertyList(date)), PropertyList(date));
    EXPECT_EQ(parsed(xmlPropertyList(date)), PropertyList(whole));
  }
}

TEST(PropertyListFile, ReadsBackManyValues) {
  Array values;
  for (int i = 0; i < 70000; ++i) values.emplace_back(i);
  EXPECT_EQ(parsed(binaryPropertyList(values)), PropertyList(values));
}

TEST(PropertyListFile, LeavesNilsOutOfCollections) {
  const PropertyList value = Dictionary{{"a", PropertyList()}, {"b", Array{1, PropertyList(), 2}}};
  const PropertyList expected = Dictionary{{"b", Array{1, 2}}};
  EXPECT_EQ(parsed(binaryPropertyList(value)), expected);
  EXPECT_EQ(parsed(xmlPropertyList(value)), expected);
}

TEST(PropertyListFile, KeepsATextWithNULInTheBinaryFormAndRepairsItInXML) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(parsed(binaryPropertyList(text)), PropertyList(text));
  EXPECT_EQ(parsed(xmlPropertyList(text)), PropertyList("a\uFFFDb"));
}

TEST(PropertyListFile, RepairsInvalidUTF8WhenWriting) {
  EXPECT_EQ(parsed(binaryPropertyList("a\xFFz")), PropertyList("a\uFFFDz"));
  EXPECT_EQ(parsed(xmlPropertyList(Dictionary{{"k\xC3", "\xED\xA0\x80"}})),
            PropertyList(Dictionary{{"k\uFFFD", "\uFFFD\uFFFD\uFFFD"}}));
}

TEST(PropertyListFile, WritesTheXMLFormAsOtherProgramsKnowIt) {
  EXPECT_EQ(xmlPropertyList(Dictionary{{"B", true}, {"A", "x & y"}, {"C", -5}}),
            xmlDocument("<dict>\n\t<key>A</key>\n\t<string>x &amp; y</string>\n\t<key>B</key>\n"
                        "\t<true/>\n\t<key>C</key>\n\t<integer>-5</integer>\n</dict>"));
}

TEST(PropertyListFile, ReadsXMLOfOtherPrograms) {
  EXPECT_EQ(parsed("\xEF\xBB\xBF" + xmlDocument("<string>x</string>")), PropertyList("x"));
  EXPECT_EQ(parsed("<plist version='1.0'><dict><!-- <dict> --><key>a</key><integer>-5</integer>"
                   "<key>b</key><string>&lt;&#233;&#x1F382;&gt;</string>"
                   "<key>c</key><string><![CDATA[<dict>]]></string>"
                   "<key>d</key><date>1604-02-29T12:00:00Z</date>"
                   "<key>e</key><real>1.5</real><key>f</key><dict/><key>g</key><string/>"
                   "<key>h</key><data>\n\tAAH/\n\t</data></dict></plist>"),
            PropertyList(Dictionary{{"a", -5},
                                    {"b", "<é\U0001F382>"},
                                    {"c", "<dict>"},
                                    {"d", utc(1604, 2, 29, 12)},
                                    {"e", 1.5},
                                    {"f", Dictionary{}},
                                    {"g", ""},
                                    {"h", PropertyList::Data{std::string("\0\x01\xFF", 3)}}}));
}

TEST(PropertyListFile, ReadsTheSmallFormsOfNumbersThatWeDoNotWrite) {
  EXPECT_EQ(parsed(binaryOf({"\x10\xFF"})), PropertyList(255));
  EXPECT_EQ(parsed(binaryOf({std::string("\x22\x3F\xC0\x00\x00", 5)})), PropertyList(1.5));
  EXPECT_EQ(parsed(binaryOf({std::string("\x14") + std::string(15, '\xFF') + "\xFB"})),
            PropertyList(-5));
}

TEST(PropertyListFile, KeepsValuesItHasNoTypeFor) {
  const std::string foreign[] = {
      std::string("\x80\x07", 2),                                 // a UID
      std::string("\x14\0\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0", 17),  // 2^63
      std::string("\x33\x7F\xF0\0\0\0\0\0\0", 9),                 // a date at infinity
      std::string("\x33\x7F\xEF\xFF\xFF\xFF\xFF\xFF\xFF", 9),     // a date past all years
      std::string("\0", 1),                                       // null
  };
  for (const std::string& object : foreign) {
    const PropertyList value = parsed(binaryOf({std::string("\xA1\x01", 2), object}));
    ASSERT_TRUE(value.array());
    const PropertyList& element = value.array()->front();
    EXPECT_FALSE(element.isNil());
    EXPECT_TRUE(element.foreign());
    EXPECT_EQ(element.date(), nullptr);
    EXPECT_EQ(element.integerValue(), 0);
    EXPECT_EQ(parsed(binaryPropertyList(value)), value);
  }
}

TEST(PropertyListFile, LeavesForeignValuesOutOfXML) {
  for (const std::string& object :
       {std::string(1, '\0'), std::string("\x80\x07", 2), "\x14" + std::string(16, '\x7F')}) {
    const PropertyList foreign = PropertyList::Foreign{object};
    EXPECT_EQ(parsed(xmlPropertyList(Dictionary{{"a", foreign}, {"b", Array{1, foreign, 2}}})),
              PropertyList(Dictionary{{"b", Array{1, 2}}}));
  }
}

TEST(PropertyListFile, PythonReadsWhatWeWrite) {
  const TemporaryFolder folder;
  folder.writeFile("binary.plist", binaryPropertyList(everyKind()));
  folder.writeFile("xml.plist", xmlPropertyList(everyKind()));
  folder.writeFile("check.py", R"(
import datetime, plistlib, sys
for form in 'binary', 'xml':
    with open(sys.argv[1] + '/' + form + '.plist', 'rb') as file: v = plistlib.load(file)
    assert v['minus five'] == -5 and type(v['minus five']) is int, v['minus five']
    assert v['smallest'] == -2**63 and v['largest'] == 2**63 - 1
    assert v['true'] is True and v['one'] == 1 and type(v['one']) is int and v['text one'] == '1'
    assert v['real'] == 0.1 and v['minus real'] == -1e-300, (v['real'], v['minus real'])
    assert v['text'] == 'Zo\u00eb <&> "\u03a9\u03bc\u03ad\u03b3\u03b1" \U0001F382'
    assert v['date'] == datetime.datetime(2026, 11, 20, 18, 46, 1)
    assert v['early date'] == datetime.datetime(1604, 2, 29, 12)
    assert v['data'] == b'\x00\x01\xff' and len(v['long']) == 70000
    assert v['dictionary'] == {'inner': [True, 1.5]} and len(v) == 22
    with open(sys.argv[1] + '/python-' + form, 'wb') as file:
        plistlib.dump(v, file, fmt=plistlib.FMT_BINARY if form == 'binary' else plistlib.FMT_XML)
)");
  ASSERT_EQ(std::system(("python3 " + folder.path("check.py") + " " + folder.path()).c_str()), 0);
  EXPECT_EQ(parsed(folder.readFile("python-binary")), PropertyList(everyKind()));
  EXPECT_EQ(parsed(folder.readFile("python-xml")), PropertyList(everyKind()));
}

// Hostile input.

TEST(PropertyListFile, RefusesWhatIsNeitherForm) {
  for (const char* bytes : {"", " ", "hello", "{ a = b; }", "bplist", "\x00\x00"}) {
    EXPECT_EQ(rejection(bytes), "It is neither a binary nor an XML property list.") << bytes;
  }
  EXPECT_NE(rejection("<html><body/></html>"), "accepted");
  EXPECT_NE(rejection("<"), "accepted");
  EXPECT_NE(rejection("bplist00"), "accepted");
}

TEST(PropertyListFile, RefusesAFileAboveTheLimit) {
  EXPECT_EQ(rejection(xmlDocument("<string>" + std::string(16 << 20, 'x') + "</string>")),
            "It is too large.");
}

std::string nestedXML(int depth, const std::string& open, const std::string& close) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += open;
  for (int i = 0; i < depth; ++i) text += close;
  return xmlDocument(text);
}

TEST(PropertyListFile, ReadsSixtyFourLevelsAndNoMore) {
  const auto array = [](int depth) { return nestedXML(depth, "<array>", "</array>"); };
  EXPECT_EQ(rejection(array(64)), "accepted");
  EXPECT_EQ(rejection(array(65)), "It is nested too deeply.");
  PropertyList value = 1;
  for (int i = 0; i < 64; ++i) value = Array{std::move(value)};
  EXPECT_EQ(rejection(binaryPropertyList(value)), "accepted");
  EXPECT_EQ(rejection(binaryPropertyList(Array{value})), "It is nested too deeply.");
}

TEST(PropertyListFile, RefusesThreeHundredThousandNestedDictionaries) {
  EXPECT_EQ(rejection(nestedXML(300000, "<dict><key>a</key>", "</dict>")),
            "It is nested too deeply.");
  EXPECT_EQ(rejection(nestedXML(300000, "<array >", "</array>")), "It is nested too deeply.");
  // Closing tags that are none do not hide the depth.
  for (const char* hidden :
       {"<array><!-- </array> -->", "<array><?x </array>?>", "<array><string></array></string>",
        "<array></string></array><array>", "<array><string><![CDATA[</array>]]></string>"}) {
    EXPECT_NE(rejection(nestedXML(300000, hidden, "</array>")), "accepted") << hidden;
  }
}

TEST(PropertyListFile, RefusesMoreThanAMillionValues) {
  std::string many;
  for (int i = 0; i < 1'000'001; ++i) many += "<true/>";
  EXPECT_EQ(rejection(xmlDocument("<array>" + many + "</array>")), "It holds too many values.");
}

TEST(PropertyListFile, DeclaresNoEntities) {
  const std::string bomb =
      "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">"
      "<!ENTITY b \"&a;&a;&a;&a;\">]><plist version=\"1.0\"><string>&b;</string></plist>";
  EXPECT_EQ(rejection(bomb), "It declares entities.");
  const std::string file =
      "<!DOCTYPE plist [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><plist><string>&f;</string>"
      "</plist>";
  EXPECT_EQ(rejection(file), "It declares entities.");
}

TEST(PropertyListFile, RefusesObjectsThatHoldThemselves) {
  EXPECT_EQ(rejection(binaryOf({std::string("\xA1\x00", 2)})), "It is nested too deeply.");
  EXPECT_EQ(rejection(binaryOf({std::string("\xA1\x01", 2), std::string("\xA1\x00", 2)})),
            "It is nested too deeply.");
  EXPECT_EQ(rejection(binaryOf({std::string("\xD1\x01\x00", 3), "\x51k"})),
            "It is nested too deeply.");
}

TEST(PropertyListFile, RefusesObjectsThatShareTheirWayToAnExplosion) {
  // Each of forty arrays holds the next one ten times.
  std::vector<std::string> objects;
  for (char i = 1; i <= 40; ++i) objects.push_back("\xAA" + std::string(10, i));
  objects.emplace_back("\x09");
  EXPECT_EQ(rejection(binaryOf(objects)), "It holds too many values.");
  // A large text, a thousand times.
  const std::string text = std::string("\x4F\x12\x00\x10\x00\x00", 6) + std::string(1 << 20, 'x');
  const std::string array = std::string("\xAF\x11\x03\xE8", 4) + std::string(1000, '\x01');
  EXPECT_EQ(rejection(binaryOf({array, text})), "It holds too much text and data.");
}

TEST(PropertyListFile, RefusesDamagedTables) {
  const std::string good = binaryOf({"\x09"});
  const auto with = [&](std::size_t fromEnd, char byte) {
    std::string bytes = good;
    bytes[bytes.size() - fromEnd] = byte;
    return bytes;
  };
  EXPECT_EQ(rejection(with(26, 0)), "Its object table is damaged.");  // size of an offset
  EXPECT_EQ(rejection(with(26, 9)), "Its object table is damaged.");
  EXPECT_EQ(rejection(with(25, 0)), "Its object table is damaged.");       // size of a reference
  EXPECT_EQ(rejection(with(24, '\xFF')), "Its object table is damaged.");  // count of objects
  EXPECT_EQ(rejection(with(9, 1)), "It refers to an object that is not there.");
  EXPECT_EQ(rejection(with(8, '\xFF')), "Its object table is damaged.");  // place of the table
}

TEST(PropertyListFile, RefusesDamagedObjects) {
  EXPECT_EQ(rejection(binaryOf({"\x52x"})), "An object is cut off.");
  EXPECT_EQ(rejection(binaryOf({std::string("\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")})),
            "An object is cut off.");
  EXPECT_EQ(rejection(binaryOf({std::string("\x6F\x13\x80\0\0\0\0\0\0\0", 10)})),
            "An object is cut off.");
  EXPECT_EQ(rejection(binaryOf({std::string("\xDF\x13\x80\0\0\0\0\0\0\0", 10)})),
            "An object is cut off.");
  EXPECT_EQ(rejection(binaryOf({"\x5F\x23"})), "A count is no number.");
  EXPECT_EQ(rejection(binaryOf({"\x7F"})), "It holds an object of an unknown kind.");
  EXPECT_EQ(rejection(binaryOf({std::string("\xD1\x01\x01", 3), "\x09"})),
            "The key of a dictionary is no text.");
  EXPECT_EQ(rejection(binaryOf({std::string("\x15", 1)})), "A number has a wrong size.");
}

TEST(PropertyListFile, RepairsLoneSurrogatesAndRawBytes) {
  EXPECT_EQ(parsed(binaryOf({std::string("\x62\xD8\x00\x00\x41", 5)})), PropertyList("\uFFFDA"));
  EXPECT_EQ(parsed(binaryOf({std::string("\x61\xDC\x00", 3)})), PropertyList("\uFFFD"));
  EXPECT_EQ(parsed(binaryOf({"\x53\x41\xFF\x42"})), PropertyList("A\uFFFDB"));
  EXPECT_EQ(parsed(binaryOf({"\x52\xC3\xA9"})), PropertyList("é"));
}

Dictionary sample() {
  return {{"a", Array{1, -5, 2.5, "é", true}},
          {"b", utc(2026, 1, 1)},
          {"c", Dictionary{{"d", PropertyList::Data{"xyz"}}, {"e", "text & more"}}}};
}

TEST(PropertyListFile, SurvivesTruncationAtEveryByte) {
  const std::string binary = binaryPropertyList(sample());
  for (std::size_t length = 0; length < binary.size(); ++length) {
    const auto list = parsePropertyList(std::string_view(binary).substr(0, length), "cut.plist");
    EXPECT_FALSE(list) << length;
  }
  const std::string xml = xmlPropertyList(sample());
  for (std::size_t length = 0; length < xml.size(); ++length) {
    const auto list = parsePropertyList(std::string_view(xml).substr(0, length), "cut.plist");
    // Complete but for its last tag it may be taken; never as something else.
    if (list) {
      EXPECT_EQ(*list, PropertyList(sample())) << length;
    }
  }
}

TEST(PropertyListFile, SurvivesRandomDamage) {
  const std::uint32_t seed = 20261120;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::size_t refused = 0;
  for (const std::string& good : {binaryPropertyList(sample()), xmlPropertyList(sample())}) {
    for (int round = 0; round < 20000; ++round) {
      std::string bytes = good;
      for (auto flips = 1 + random() % 4; flips > 0; --flips) {
        bytes[random() % bytes.size()] ^= static_cast<char>(1u << random() % 8);
      }
      const auto list = parsePropertyList(bytes, "damaged.plist");
      if (!list) {
        ++refused;
        continue;
      }
      // What was accepted can be written and read back.
      EXPECT_TRUE(parsePropertyList(binaryPropertyList(*list), "again.plist"));
    }
  }
  EXPECT_GT(refused, 1000u);
}

}  // namespace
}  // namespace annivo
