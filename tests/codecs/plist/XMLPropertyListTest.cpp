// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "codecs/plist/PropertyList.h"
#include "tests/support/Doubles.h"

namespace annivo {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;
using Foreign = PropertyList::Foreign;

/// What a plist element of that content holds, or why it is refused.
struct Outcome {
  PropertyList value;
  std::string refusal;
};

Outcome outcome(const std::string& bytes) {
  auto list = parsePropertyList(bytes, "/home/ann/test.plist");
  if (list) return {*std::move(list), ""};
  EXPECT_EQ(list.error().kind, Error::Kind::malformed);
  EXPECT_EQ(list.error().description, "/home/ann/test.plist is not a property list.");
  return {{}, list.error().failureReason};
}

Outcome within(const std::string& content) { return outcome("<plist>" + content + "</plist>"); }

TEST(XMLPropertyList, IsWrittenInItsDocumentedForm) {
  const PropertyList value = Dictionary{
      {"b", Array{true, false, -5, 0.1, Array{}, Dictionary{}}},
      {"a & <b> \"c\"", "text\r\n\x01\uFFFE"},
      {"d", Dictionary{{"date", utc(1604, 2, 29, 12) + std::chrono::microseconds{999999}},
                       {"long", PropertyList::Data{std::string(50, '\xFF')}},
                       {"none", PropertyList::Data{""}}}},
      {"foreign", Foreign{std::string("\x80\x07", 2)}},
      {"only foreign", Array{Foreign{std::string("\x80\x07", 2)}, PropertyList()}}};
  EXPECT_EQ(xmlPropertyList(value),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>a &amp; &lt;b&gt; \"c\"</key>\n"
            "\t<string>text&#13;\n\uFFFD\uFFFD</string>\n"
            "\t<key>b</key>\n"
            "\t<array>\n"
            "\t\t<true/>\n"
            "\t\t<false/>\n"
            "\t\t<integer>-5</integer>\n"
            "\t\t<real>0.1</real>\n"
            "\t\t<array/>\n"
            "\t\t<dict/>\n"
            "\t</array>\n"
            "\t<key>d</key>\n"
            "\t<dict>\n"
            "\t\t<key>date</key>\n"
            "\t\t<date>1604-02-29T12:00:00Z</date>\n"
            "\t\t<key>long</key>\n"
            "\t\t<data>\n"
            "\t\t////////////////////////////////////////////////////////////\n"
            "\t\t//////8=\n"
            "\t\t</data>\n"
            "\t\t<key>none</key>\n"
            "\t\t<data>\n"
            "\t\t</data>\n"
            "\t</dict>\n"
            "\t<key>only foreign</key>\n"
            "\t<array/>\n"
            "</dict>\n"
            "</plist>\n");
}

TEST(XMLPropertyList, WritesNoKeyTwice) {
  const PropertyList value = Dictionary{{"\x01", 1}, {"\x02", 2}, {"a", 3}};
  EXPECT_EQ(outcome(xmlPropertyList(value)).value,
            PropertyList(Dictionary{{"\uFFFD", 2}, {"a", 3}}));
  EXPECT_EQ(xmlPropertyList(value).find("<integer>1</integer>"), std::string::npos);
}

TEST(XMLPropertyList, WritesDataInLinesThatNeverVanish) {
  PropertyList value = PropertyList::Data{std::string(100, 'x')};
  for (int i = 0; i < 20; ++i) value = Array{std::move(value)};
  EXPECT_NE(xmlPropertyList(value).find("\t\teHh4eHh4eHh4\n\t\t"), std::string::npos);
  EXPECT_EQ(outcome(xmlPropertyList(value)).value, value);
}

TEST(XMLPropertyList, ReadsNumbersExactly) {
  const struct {
    const char* element;
    PropertyList value;
  } rows[] = {
      {"<integer>10</integer>", 10},
      {"<integer>\n 010 </integer>", 10},
      {"<integer>+10</integer>", 10},
      {"<integer>-0</integer>", 0},
      {"<integer>0x1f</integer>", 31},
      {"<integer>-0X1F</integer>", -31},
      {"<integer>9223372036854775807</integer>", std::numeric_limits<std::int64_t>::max()},
      {"<integer>-9223372036854775808</integer>", std::numeric_limits<std::int64_t>::min()},
      {"<integer>9223372036854775808</integer>",
       Foreign{std::string("\x14\0\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0", 17)}},
      {"<integer>18446744073709551615</integer>",
       Foreign{std::string("\x14\0\0\0\0\0\0\0\0", 9) + std::string(8, '\xFF')}},
      {"<real>1.5</real>", 1.5},
      {"<real> +1.5e3 </real>", 1500.0},
      {"<real>-infinity</real>", -std::numeric_limits<double>::infinity()},
      {"<real>+infinity</real>", std::numeric_limits<double>::infinity()},
      {"<true></true>", true},
      {"<false />", false},
  };
  for (const auto& row : rows) EXPECT_EQ(within(row.element).value, row.value) << row.element;
  EXPECT_TRUE(std::isnan(*within("<real>nan</real>").value.real()));
  EXPECT_TRUE(std::isnan(*outcome(xmlPropertyList(std::nan(""))).value.real()));
}

TEST(XMLPropertyList, TakesNoOtherTextForANumber) {
  for (const char* text : {"", " ", "abc", "12abc", "1 2", "--1", "+-1", "1.5", "0x", "0xg",
                           "18446744073709551616", "-9223372036854775809"}) {
    EXPECT_EQ(within("<integer>" + std::string(text) + "</integer>").refusal,
              "It holds a number that cannot be read.")
        << text;
  }
  for (const char* text : {"", "abc", "1,5", "1.5x", "0x1p3"}) {
    EXPECT_EQ(within("<real>" + std::string(text) + "</real>").refusal,
              "It holds a number that cannot be read.")
        << text;
  }
}

TEST(XMLPropertyList, ReadsDatesExactly) {
  const auto date = [](const std::string& text) { return within("<date>" + text + "</date>"); };
  EXPECT_EQ(date("2026-11-20T18:46:01Z").value, PropertyList(utc(2026, 11, 20, 18, 46, 1)));
  EXPECT_EQ(date("\n 1604-02-29T12:00:00Z\t").value, PropertyList(utc(1604, 2, 29, 12)));
  EXPECT_EQ(date("0001-01-01T00:00:00Z").value, PropertyList(kEarliestDate));
  EXPECT_EQ(date("9999-12-31T23:59:59Z").value, PropertyList(utc(9999, 12, 31, 23, 59, 59)));
  for (const char* foreign :
       {"0000-12-31T23:59:59Z", "-0100-01-01T00:00:00Z", "10000-01-01T00:00:00Z"}) {
    EXPECT_TRUE(date(foreign).value.foreign()) << foreign;
  }
  for (const char* text : {"", "2026", "2026-11-20", "2026-11-20T18:46:01", "2026-11-20 18:46:01Z",
                           "2026-13-20T18:46:01Z", "2026-00-20T18:46:01Z", "2026-02-29T18:46:01Z",
                           "2026-257-01T00:00:00Z", "2026-11-257T00:00:00Z", "2026-11-20T24:00:00Z",
                           "2026-11-20T18:60:00Z", "2026-11-20T18:46:01Zx", "2026-11-20T-1:46:01Z",
                           "70000-01-01T00:00:00Z", "2026-11-20T18:46:99999999999Z"}) {
    EXPECT_EQ(date(text).refusal, "It holds a date that cannot be read.") << text;
  }
}

TEST(XMLPropertyList, KeepsEveryCharacterOfAText) {
  const struct {
    const char* content;
    const char* text;
  } rows[] = {
      {"", ""},
      {" ", " "},
      {"\n\t", "\n\t"},
      {"  two  ", "  two  "},
      {" <!-- c -->x", " x"},
      {" <![CDATA[<&amp;]]> ", " <&amp; "},
      {"a<?pi?>b", "ab"},
      {"a\rb\r\nc", "a\rb\r\nc"},
      {"&amp;&lt;&gt;&quot;&apos;", "&<>\"'"},
      {"&amp;amp;", "&amp;"},
      {"&#65;&#x42;&#x1F382;&#13;", "AB\U0001F382\r"},
      {"&#xD83C;&#xFFFF;", "\uFFFD\uFFFF"},
      {"a\xFFz", "a\uFFFDz"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(within("<string>" + std::string(row.content) + "</string>").value,
              PropertyList(row.text))
        << row.content;
    EXPECT_EQ(within("<dict><key>" + std::string(row.content) + "</key><true/></dict>").value,
              PropertyList(Dictionary{{row.text, true}}))
        << row.content;
  }
}

TEST(XMLPropertyList, ExpandsNoEntityOfAnyFile) {
  for (const char* text : {"a & b", "&foo;", "&amp", "&#0;", "&#x110000;", "&#;", "&#x;", "&#xg;",
                           "&#-1;", "&#99999999999;", "&#"}) {
    EXPECT_EQ(within("<string>" + std::string(text) + "</string>").refusal,
              "A text refers to an entity that is not declared.")
        << text;
  }
  const std::string end = "<plist><string>&b;</string></plist>";
  for (const char* type : {"<!DOCTYPE plist [<!ENTITY b \"x\">]>",
                           "<!DOCTYPE plist SYSTEM \"a>b\" [<!ENTITY b \"x\">]>"}) {
    EXPECT_EQ(outcome(type + end).refusal, "It declares entities.") << type;
  }
}

TEST(XMLPropertyList, ReadsEveryEncodingItMayHave) {
  const std::string text = "<plist version='1.0'><string>Zoë \U0001F382</string></plist>";
  const PropertyList value = "Zoë \U0001F382";
  EXPECT_EQ(outcome(text).value, value);
  EXPECT_EQ(outcome("\xEF\xBB\xBF" + text).value, value);
  std::string big = "\xFE\xFF";
  std::string little = "\xFF\xFE";
  for (const char16_t unit :
       std::u16string(u"<?xml version='1.0' encoding='UTF-16'?><plist><string>Zoë "
                      u"\U0001F382</string></plist>")) {
    big.append({static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)});
    little.append({static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)});
  }
  EXPECT_EQ(outcome(big).value, value);
  EXPECT_EQ(outcome(little).value, value);
  EXPECT_EQ(outcome("\xFE\xFF").refusal, "It is neither a binary nor an XML property list.");
}

TEST(XMLPropertyList, RefusesWhatItCouldOnlyReadInPart) {
  const struct {
    const char* text;
    const char* refusal;
  } rows[] = {
      {"<plist/>", "It does not hold one value."},
      {"<plist></plist>", "It does not hold one value."},
      {"<plist><true/><false/></plist>", "It does not hold one value."},
      {"<plist><true/></plist><plist><false/></plist>", "It does not hold one value."},
      {"<plist>text<true/></plist>", "It has text between its values."},
      {"<plist><array>text<true/></array></plist>", "It has text between its values."},
      {"<plist><dict><key>a</key>text<true/></dict></plist>", "It has text between its values."},
      {"<plist><dict><key>a</key></dict></plist>", "A key of a dictionary has no value."},
      {"<plist><dict><true/></dict></plist>", "The key of a dictionary is no text."},
      {"<plist><string>a<b/></string></plist>", "A value holds another one."},
      {"<plist><true>x</true></plist>", "It holds an object of an unknown kind."},
      {"<plist><uid>3</uid></plist>", "It holds an object of an unknown kind."},
      {"<plist><STRING>x</STRING></plist>", "It holds an object of an unknown kind."},
      {"<plist><data>AA*H</data></plist>", "It holds data that is no base64."},
      {"<plist><array><true></array></plist>", "It is no well-formed property list."},
      {"<plist><array></plist>", "It is no well-formed property list."},
      {"<plist></array></plist>", "It is no well-formed property list."},
      {"<plist><true a=\"></plist>", "It is no well-formed property list."},
      {"<plist><!-- <true/></plist>", "It is no well-formed property list."},
  };
  for (const auto& row : rows) EXPECT_EQ(outcome(row.text).refusal, row.refusal) << row.text;
}

TEST(XMLPropertyList, TakesABareValueAndWhatXMLAllowsAround) {
  EXPECT_EQ(outcome("<dict><key>a</key><true/></dict>").value,
            PropertyList(Dictionary{{"a", true}}));
  EXPECT_EQ(
      outcome(" \n<!DOCTYPE plist><!-- x --><plist a=\">\"><true/></plist><!-- y -->\n").value,
      PropertyList(true));
  EXPECT_EQ(within("<dict><key>a</key><true/><key>a</key><false/></dict>").value,
            PropertyList(Dictionary{{"a", false}}));
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(XMLPropertyList, HoldsAMillionValuesAndNoMore) {
  EXPECT_EQ(within("<array>" + repeated("<true/>", 999'999) + "</array>").refusal, "");
  EXPECT_EQ(within("<array>" + repeated("<true/>", 1'000'000) + "</array>").refusal,
            "It holds too many values.");
  EXPECT_EQ(within(repeated("<b>", 1'000'001)).refusal, "It holds too many values.");
}

TEST(XMLPropertyList, RefusesMarkupThatWouldFillTheMemory) {
  for (const char* piece : {"<!---->x", "<![CDATA[]]>", "<?a?>x"}) {
    EXPECT_EQ(within("<string>" + repeated(piece, 100'001) + "</string>").refusal,
              "It holds too much markup.")
        << piece;
  }
  const std::string attributes = repeated("a='' ", 100'001);
  EXPECT_EQ(within("<true " + attributes + "/>").refusal, "It holds too much markup.");
  EXPECT_EQ(outcome("<plist " + attributes + "><true/></plist>").refusal,
            "It holds too much markup.");
}

TEST(XMLPropertyList, CountsLevelsThatBracketsInQuotesHide) {
  const std::string hiding = "<array a=\"><array/></array>\">";
  EXPECT_EQ(within(repeated(hiding, 64) + repeated("</array>", 64)).refusal, "");
  EXPECT_EQ(within(repeated(hiding, 65) + repeated("</array>", 65)).refusal,
            "It is nested too deeply.");
  // A tree as deep as this is neither walked nor taken apart level by level.
  EXPECT_EQ(within(repeated("<b>", 500'000) + repeated("</b>", 500'000)).refusal,
            "A value holds another one.");
}

/// Values of every kind, some of them nested.
class RandomValues {
 public:
  explicit RandomValues(std::uint32_t seed) : random_(seed) {}

  PropertyList value(int depth) {
    switch (random_() % (depth > 0 ? 8 : 6)) {
      case 0:
        return random_() % 2 == 0;
      case 1:
        return static_cast<std::int64_t>(wide() >> random_() % 64) * (random_() % 2 == 0 ? 1 : -1);
      case 2:
        return std::ldexp(static_cast<double>(wide()), static_cast<int>(random_() % 2000) - 1000);
      case 3:
        return text();
      case 4:
        return Date{kEarliestDate + std::chrono::seconds{wide() % 315'537'897'600}};
      case 5:
        return PropertyList::Data{bytes()};
      case 6: {
        Array elements;
        for (auto i = random_() % 5; i > 0; --i) elements.push_back(value(depth - 1));
        return elements;
      }
      default: {
        Dictionary values;
        for (auto i = random_() % 5; i > 0; --i) values.insert_or_assign(text(), value(depth - 1));
        return values;
      }
    }
  }

 private:
  std::uint64_t wide() { return std::uint64_t{random_()} << 32 | random_(); }
  std::string bytes() {
    std::string all;
    for (auto i = random_() % 200; i > 0; --i) all += static_cast<char>(random_());
    return all;
  }
  std::string text() {
    static const std::string kPieces[] = {"a", " ",   "\n", "\t", "\r", "&",      "<",
                                          ">", "]]>", "\"", "'",  "é",  "\uFFFD", "\U0001F382"};
    std::string all;
    for (auto i = random_() % 12; i > 0; --i) all += kPieces[random_() % std::size(kPieces)];
    return all;
  }

  std::mt19937 random_;
};

TEST(XMLPropertyList, ReadsBackRandomValuesInBothForms) {
  const std::uint32_t seed = 20261121;
  SCOPED_TRACE(seed);
  RandomValues values(seed);
  for (int round = 0; round < 3000; ++round) {
    const PropertyList value = values.value(5);
    const std::string xml = xmlPropertyList(value);
    ASSERT_EQ(outcome(xml).value, value) << xml;
    ASSERT_EQ(outcome(binaryPropertyList(value)).value, value) << xml;
  }
}

}  // namespace
}  // namespace annivo
