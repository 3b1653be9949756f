// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "codecs/vcard/VCard.h"
#include "codecs/vcard/VCardText.h"

namespace annivo {
namespace {

std::string textOf(const std::string& card, const std::string& name) {
  const VCard parsed = VCard::parse(card);
  const VCardProperty* property = parsed.property(name);
  if (!property) return "(no " + name + ")";
  const auto text = parsed.text(*property);
  return text ? *text : "(" + text.error().description + ")";
}

TEST(VCard, SplitsGroupNameParametersAndValue) {
  const VCard card =
      VCard::parse("VERSION:3.0\nitem1.X-ABDATE;type=pref;x=\"a;b:c\":2010-05-20T10:00:00Z\n");
  const VCardProperty* date = card.property("X-ABDATE");
  ASSERT_NE(date, nullptr);
  EXPECT_EQ(date->group, "ITEM1");
  EXPECT_EQ(date->parameter("TYPE"), "pref");
  EXPECT_EQ(date->parameter("X"), "a;b:c");
  EXPECT_EQ(date->parameter("Y"), "");
  EXPECT_EQ(date->value, "2010-05-20T10:00:00Z");
}

TEST(VCard, TakesBareParametersOf21AsTypeOrEncoding) {
  const VCard card =
      VCard::parse("VERSION:2.1\nEMAIL;PREF;INTERNET:a@b.c\nFN;QUOTED-PRINTABLE:=41\n");
  EXPECT_TRUE(card.property("EMAIL")->parameterHolds("TYPE", "pref"));
  EXPECT_TRUE(card.property("EMAIL")->parameterHolds("TYPE", "INTERNET"));
  EXPECT_FALSE(card.property("EMAIL")->parameterHolds("TYPE", "HOME"));
  EXPECT_TRUE(card.property("FN")->isQuotedPrintable());
}

TEST(VCard, ReadsALineWhoseQuotationMarkNothingCloses) {
  EXPECT_EQ(textOf("FN;X=\"a:Ann\n", "FN"), "Ann");
}

TEST(VCard, UnfoldsEachVersionInItsWay) {
  EXPECT_EQ(textOf("VERSION:3.0\nFN:Ann\n  Smith\n", "FN"), "Ann Smith");
  EXPECT_EQ(textOf("VERSION:4.0\nFN:An\n\tn\n", "FN"), "Ann");
  EXPECT_EQ(textOf("VERSION:2.1\nFN:Ann\n Smith\n", "FN"), "Ann Smith");
}

TEST(VCard, UnfoldsInTheMiddleOfACharacter) {
  EXPECT_EQ(textOf("VERSION:3.0\nFN:M\xC3\n \xBCller\n", "FN"), "Müller");
}

TEST(VCard, JoinsSoftBreaksOfQuotedPrintable) {
  EXPECT_EQ(
      textOf("VERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=\n=BCl=\nler\n", "FN"),
      "Müller");
  EXPECT_EQ(textOf("VERSION:2.1\nFN;ENCODING=QUOTED-PRINTABLE:Ann=\n Smith\n", "FN"), "Ann Smith");
}

TEST(VCard, ReadsLinesThatEndInCRLF) {
  EXPECT_EQ(textOf("VERSION:3.0\r\nFN:Ann\r\n  Smith\r\nN:x\r\n", "FN"), "Ann Smith");
  EXPECT_EQ(textOf("VERSION:2.1\r\nFN;QUOTED-PRINTABLE:An=\r\nn\r\n", "FN"), "Ann");
  EXPECT_EQ(VCard::parse("VERSION:2.1\r\n").version(), "2.1");
}

TEST(VCard, UndoesEscapesOnce) {
  EXPECT_EQ(textOf("VERSION:3.0\nFN:a\\, b\\; c\\nd \\\\n \\x\n", "FN"), "a, b; c\nd \\n \\x");
}

struct Charset {
  const char* name;
  const char* line;
  const char* expected;
};

class VCardCharset : public testing::TestWithParam<Charset> {};

TEST_P(VCardCharset, BecomesUTF8) {
  EXPECT_EQ(textOf(std::string("VERSION:2.1\n") + GetParam().line + '\n', "FN"),
            GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, VCardCharset,
    testing::Values(
        Charset{"UTF8", "FN;CHARSET=UTF-8:M\xC3\xBCller", "Müller"},
        Charset{"Latin1", "FN;CHARSET=ISO-8859-1:M\xFCller", "Müller"},
        Charset{"Latin1Coded", "FN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller",
                "Müller"},
        Charset{"Windows1252", "FN;CHARSET=WINDOWS-1252:M\x80", "M€"},
        Charset{"ShiftJISWithABackslashByte", "FN;CHARSET=SHIFT_JIS:\x95\x5C\x8E\xA6", "表示"},
        Charset{"UTF16Coded", "FN;CHARSET=UTF-16LE;ENCODING=BASE64:TQD8AA==", "Mü"},
        Charset{"NoneNamed", "FN:M\xFCller", "Müller"},
        Charset{"Unknown", "FN;CHARSET=KLINGON:x", "(its charset \"KLINGON\" is unknown)"},
        Charset{"NotWhatItSays", "FN;CHARSET=SHIFT_JIS:\xFF", "(it is not valid SHIFT_JIS)"}),
    [](const auto& row) { return row.param.name; });

TEST(VCard, RefusesInvalidUTF8OfLaterVersions) {
  EXPECT_EQ(textOf("VERSION:3.0\nFN:M\xFCller\n", "FN"), "(it is not valid UTF-8)");
  EXPECT_EQ(textOf("VERSION:4.0\nFN:\xED\xA0\x80\n", "FN"), "(it is not valid UTF-8)");
}

TEST(VCard, CutsPartsAtSeparatorsThatNothingProtects) {
  const VCard card =
      VCard::parse("VERSION:3.0\nN:Smith\\;Jones;Ann;;;\nX;ENCODING=QUOTED-PRINTABLE:a=3Bb;c\n");
  EXPECT_EQ(*card.parts(*card.property("N"), ";"),
            (std::vector<std::string>{"Smith;Jones", "Ann", "", "", ""}));
  EXPECT_EQ(*card.parts(*card.property("X"), ";"), (std::vector<std::string>{"a;b", "c"}));
}

TEST(VCard, PassesOverLinesThatAreNoProperty) {
  const VCard card = VCard::parse("no colon here\n:no name\n\nFN:Ann\n");
  ASSERT_EQ(card.properties().size(), 1U);
  EXPECT_EQ(card.properties()[0].name, "FN");
}

TEST(VCardText, LeavesWhatIsNoQuotedPrintableCode) {
  EXPECT_EQ(quotedPrintableDecoded("=4"), "=4");
  EXPECT_EQ(quotedPrintableDecoded("=zz=41="), "=zzA=");
}

}  // namespace
}  // namespace annivo
