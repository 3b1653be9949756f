// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "frameworks/Sparkle/Appcast.h"

namespace annivo {
namespace {

constexpr const char* kURI = "http://www.andymatuschak.org/xml-namespaces/sparkle";

std::string feed(const std::string& items, const std::string& prefix = "sparkle") {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rss version=\"2.0\" xmlns:" + prefix +
         "=\"" + kURI + "\"><channel><title>Changes</title>" + items + "</channel></rss>";
}

std::vector<AppcastItem> items(const std::string& text) {
  const auto parsed = parseAppcast(text);
  EXPECT_TRUE(parsed) << (parsed ? "" : parsed.error().text());
  return parsed ? *parsed : std::vector<AppcastItem>{};
}

/// The version of the only item; "" when it was left out.
std::string versionOf(const std::string& item) {
  const auto all = items(feed("<item>" + item + "</item>"));
  return all.empty() ? "" : all.front().version;
}

constexpr const char* kEnclosure = R"(<enclosure url="https://host/Annivo_7.8.zip" length="1"/>)";

TEST(Appcast, ReadsAllThatDecidesAboutAnItem) {
  const auto all = items(feed(R"(<item><title>2.1</title>
      <sparkle:channel> beta </sparkle:channel>
      <sparkle:minimumSystemVersion>10.5</sparkle:minimumSystemVersion>
      <sparkle:maximumSystemVersion><![CDATA[10.9]]></sparkle:maximumSystemVersion>
      <enclosure url="https://host/An nivo.zip" sparkle:version="210"
                 sparkle:shortVersionString="2.1"/></item>)"));
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].version, "210");
  EXPECT_EQ(all[0].displayVersion, "2.1");
  EXPECT_EQ(all[0].url, "https://host/An%20nivo.zip");
  EXPECT_EQ(all[0].channel, "beta");
  EXPECT_EQ(all[0].minimumSystemVersion, "10.5");
  EXPECT_EQ(all[0].maximumSystemVersion, "10.9");
}

TEST(Appcast, PrefersTheEnclosuresVersionThenTheItemsThenTheFileNames) {
  const std::string element = "<sparkle:version>5.6</sparkle:version>";
  EXPECT_EQ(versionOf(element + R"(<enclosure url="https://host/Annivo_7.8.zip"
      sparkle:version="3.4"/>)"),
            "3.4");
  EXPECT_EQ(versionOf(element + kEnclosure), "5.6");
  EXPECT_EQ(versionOf(kEnclosure), "7.8");
}

struct NameCase {
  const char* url;
  const char* version;
};
struct AppcastFileName : testing::TestWithParam<NameCase> {};

TEST_P(AppcastFileName, GivesAVersion) {
  EXPECT_EQ(versionOf("<enclosure url=\"" + std::string(GetParam().url) + "\"/>"),
            GetParam().version);
}

INSTANTIATE_TEST_SUITE_P(
    Names, AppcastFileName,
    testing::Values(NameCase{"https://host/Annivo_2.1.zip", "2.1"},
                    NameCase{"https://host/An_ni_vo_2.1.dmg", "2.1"},
                    NameCase{"https://host/Annivo_2.1.zip?from=my_feed.xml", "2.1"},
                    NameCase{"https://my_host/Annivo.zip", ""},
                    NameCase{"https://host/Annivo_.zip", ""}, NameCase{"https://host/", ""},
                    NameCase{"https://host/Annivo_2", "2"}));

TEST(Appcast, LeavesOutItemsWithoutAVersion) {
  EXPECT_EQ(versionOf(R"(<enclosure url="https://host/Annivo.zip"/>)"), "");
  EXPECT_EQ(versionOf(R"(<enclosure url="https://host/A.zip" version="3"/>)"), "")
      << "an attribute outside the namespace";
}

TEST(Appcast, TakesAnItemWithALinkInsteadOfAnEnclosure) {
  EXPECT_EQ(versionOf("<link>https://host/</link><sparkle:version>3</sparkle:version>"), "3");
  EXPECT_EQ(versionOf("<sparkle:version>3</sparkle:version>"), "");
}

TEST(Appcast, LeavesOutAddressesThatAreNotOfTheWeb) {
  for (const char* url : {"file:///etc/passwd", "ftp://host/A_3.zip", "javascript:A_3", "A_3.zip",
                          "", "https://", "httpss://host/A_3.zip"}) {
    EXPECT_EQ(versionOf("<enclosure url=\"" + std::string(url) + "\"/>"), "") << url;
  }
  EXPECT_EQ(versionOf("<enclosure url=\"HTTPS://host/A_3.zip\"/>"), "3");
}

TEST(Appcast, TellsTheNamespaceByItsUriUnderAnyPrefix) {
  const std::string item = R"(<item><enclosure url="https://host/A.zip" s:version="4"/></item>)";
  EXPECT_EQ(items(feed(item, "s")).size(), 1u);
  EXPECT_EQ(items(feed(item, "other")).size(), 0u);
  EXPECT_EQ(
      items("<rss xmlns:s=\"http://elsewhere/\"><channel>" + item + "</channel></rss>").size(), 0u);
}

TEST(Appcast, HonoursNamespacesDeclaredFurtherInside) {
  const std::string uri = kURI;
  EXPECT_EQ(items("<rss><channel><item><link>https://host/</link><version xmlns=\"" + uri +
                  "\">5</version></item></channel></rss>")
                .size(),
            1u);
  EXPECT_EQ(items("<rss><channel><item><link>https://host/</link><version>5</version></item>"
                  "</channel></rss>")
                .size(),
            0u);
  EXPECT_EQ(versionOf("<link>https://host/</link><sparkle:version xmlns:sparkle=\"http://x/\">5"
                      "</sparkle:version>"),
            "")
      << "rebound to another namespace";
}

TEST(Appcast, TakesTheFirstEnclosureForThisSystem) {
  EXPECT_EQ(versionOf(R"(<enclosure url="https://host/W_9.exe" sparkle:os="windows"/>
      <enclosure url="https://host/M_3.zip" sparkle:os="macos"/>)"),
            "3");
  EXPECT_EQ(versionOf(R"(<link>https://host/</link><sparkle:version>9</sparkle:version>
      <enclosure url="https://host/W_9.exe" sparkle:os="windows"/>)"),
            "")
      << "for another system only";
}

TEST(Appcast, BoundsTheLengthOfAVersion) {
  const auto withVersion = [](std::size_t length) {
    return "<link>https://host/</link><sparkle:version>" + std::string(length, '1') +
           "</sparkle:version>";
  };
  EXPECT_EQ(versionOf(withVersion(256)), std::string(256, '1'));
  EXPECT_EQ(versionOf(withVersion(257)), "");
}

TEST(Appcast, KeepsTheGoodItemsBesideBadOnes) {
  const auto all = items(feed("<item/><item><title>x</title></item><item>" +
                              std::string(kEnclosure) + "</item><item><enclosure/></item>"));
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].version, "7.8");
}

TEST(Appcast, ReadsTheItemsOfEveryChannelElement) {
  const auto all = items(feed("<item>" + std::string(kEnclosure) + "</item></channel><channel/>" +
                              "<channel><item><link>https://host/</link>" +
                              "<sparkle:version>9</sparkle:version></item>"));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].version, "7.8");
  EXPECT_EQ(all[1].version, "9");
}

TEST(Appcast, ReadsOtherEncodings) {
  const std::string latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><rss xmlns:s=\"" +
                             std::string(kURI) +
                             "\"><channel><item><link>https://host/</link><s:version>1\xE4"
                             "</s:version></item></channel></rss>";
  const auto all = items(latin1);
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].version, "1\u00E4");
}

struct BadFeed {
  const char* name;
  std::string text;
};
void PrintTo(const BadFeed& feed, std::ostream* out) { *out << feed.name; }
struct AppcastMalformed : testing::TestWithParam<BadFeed> {};

TEST_P(AppcastMalformed, IsRefusedAsMalformed) {
  const auto parsed = parseAppcast(GetParam().text);
  ASSERT_FALSE(parsed);
  EXPECT_EQ(parsed.error().kind, Error::Kind::malformed);
}

INSTANTIATE_TEST_SUITE_P(
    Feeds, AppcastMalformed,
    testing::Values(
        BadFeed{"Empty", ""}, BadFeed{"Blank", " \n"}, BadFeed{"NoXml", "404 not here"},
        BadFeed{"Html", "<html><body>Log in</body></html>"},
        BadFeed{"CutShort", feed("<item>").substr(0, 120)}, BadFeed{"NoChannel", "<rss/>"},
        BadFeed{"OtherRoot", "<feed><channel/></feed>"},
        BadFeed{"MismatchedTags", "<rss><channel></rss></channel>"},
        BadFeed{"Binary", std::string("\0\1\2\3", 4)},
        BadFeed{"Entities", "<!DOCTYPE rss [<!ENTITY a \"b\">]><rss><channel/></rss>"},
        BadFeed{"ExternalEntities",
                "<!DOCTYPE rss [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><rss><channel/></rss>"},
        BadFeed{"ParameterEntities",
                "<!DOCTYPE rss [<!ENTITY % a SYSTEM \"http://h/\"> %a;]><rss><channel/></rss>"}),
    [](const auto& feedInfo) { return feedInfo.param.name; });

TEST(Appcast, ExpandsNothing) {
  const auto all =
      items("<!DOCTYPE rss SYSTEM \"http://localhost/rss.dtd\">" +
            feed("<item><link>https://host/</link><sparkle:version>&a;</sparkle:version></item>"));
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].version, "&a;") << "as it stands, for nothing defines it";
}

TEST(Appcast, BearsDeepNesting) {
  std::string deep;
  for (int i = 0; i < 400000; ++i) deep += "<a>";
  EXPECT_FALSE(parseAppcast(deep));
  std::string closed = deep;
  for (int i = 0; i < 400000; ++i) closed += "</a>";
  EXPECT_EQ(items(feed(closed)).size(), 0u);
}

TEST(Appcast, BearsManyAttributesAndItems) {
  std::string attributes;
  for (int i = 0; i < 200000; ++i) attributes += " b:version=\"1\"";
  EXPECT_EQ(versionOf("<enclosure url=\"https://host/A_3.zip\"" + attributes + "/>"), "3");
  std::string declarations = "<rss";
  for (int i = 0; i < 100000; ++i) declarations += " xmlns:p" + std::to_string(i) + "=\"u\"";
  declarations += "><channel>";
  for (int i = 0; i < 50000; ++i) declarations += "<item><q:version>1</q:version></item>";
  EXPECT_EQ(items(declarations + "</channel></rss>").size(), 0u);
}

}  // namespace
}  // namespace annivo
