// SPDX-License-Identifier: MIT
// Whole cards as programs write them, brought in by the command and read back as the agent reads
// them.
#include <gtest/gtest.h>

#include "parent/settings/Contacts.h"
#include "parent/settings/Session.h"
#include "parent/settings/Words.h"
#include "tests/parent/support/CommandHome.h"

namespace annivo {
namespace {

struct Card {
  const char* name;
  /// Between BEGIN:VCARD and END:VCARD, with the writer's own line ends.
  const char* text;
  /// A line for each person, then one for each group, then what was skipped.
  std::vector<std::string> expected;
};
void PrintTo(const Card& card, std::ostream* out) { *out << card.name; }

class ImportedCard : public testing::TestWithParam<Card> {
 protected:
  /// "Ann Smith (Annie, Acme): birthday 1980-06-10, anniversary 2005-09-17".
  std::string lineOf(const ListedPerson& person) {
    std::string line = person.name;
    for (const ContactDateRecord& date : person.dates) {
      if (&date == &person.dates.front()) line += extrasOf(date) + ':';
      line += ' ' + (date.dateType == kNull ? "(no label)" : date.dateType) + ' ' +
              shownDay(*date.thisDate, world.home.platform().defaultTimeZone());
    }
    return line;
  }
  static std::string extrasOf(const ContactDateRecord& date) {
    std::string extras;
    for (const std::string& extra : {date.nickName, date.organization}) {
      if (extra != kNull) extras += (extras.empty() ? " (" : ", ") + extra;
    }
    return extras.empty() ? "" : extras + ')';
  }

  std::vector<std::string> bookAfter(const std::string& card) {
    world.home.writeFile("card.vcf", card);
    std::string said = world.done({"import", world.home.path("card.vcf")});
    std::vector<std::string> lines;
    Contacts contacts(world.home.platform());
    for (const ListedPerson& person : contacts.people()) lines.push_back(lineOf(person));
    for (const ListedGroup& group : contacts.groups()) {
      lines.push_back("group " + group.name + ' ' + std::to_string(group.people));
    }
    for (std::size_t at; (at = said.find('\n')) != said.npos; said.erase(0, at + 1)) {
      if (!said.starts_with("skipped")) continue;
      const std::string line = said.substr(0, at);
      lines.push_back(line.substr(0, 13) + line.substr(line.find("vcf:") + 4));
    }
    return lines;
  }

  CommandHome world;
};

TEST_P(ImportedCard, IsReadAsItsWriterMeantIt) {
  const std::string text = GetParam().text;
  const std::string end = text.find("\r\n") == text.npos ? "\n" : "\r\n";
  EXPECT_EQ(bookAfter("BEGIN:VCARD" + end + text + "END:VCARD" + end), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, ImportedCard,
    testing::Values(
        Card{"GoogleContacts",
             "VERSION:3.0\r\nFN:Ann Smith\r\nN:Smith;Ann;;;\r\nNICKNAME:Annie\r\n"
             "EMAIL;TYPE=INTERNET:ann@example.org\r\nORG:Acme\r\nBDAY:19800610\r\n"
             "item1.X-ABDATE:20050917\r\nitem1.X-ABLabel:_$!<Anniversary>!$_\r\n"
             "item2.X-ABDATE:20100102\r\nitem2.X-ABLabel:Work\r\n"
             "CATEGORIES:myContacts,starred\r\n",
             {"Ann Smith (Annie, Acme): birthday 1980-06-10 Anniversary 2005-09-17 Work "
              "2010-01-02",
              "group myContacts 1", "group starred 1"}},
        Card{"GoogleContactsBirthdayWithoutYear",
             "VERSION:3.0\r\nFN:Ann Smith\r\nN:Smith;Ann;;;\r\nBDAY:--0610\r\n",
             {"Ann Smith: birthday --06-10"}},
        Card{"ICloud",
             "VERSION:3.0\r\nPRODID:-//Apple Inc.//iPhone OS 17.1//EN\r\nN:Smith;Ann;Marie;;\r\n"
             "FN:Ann Marie Smith\r\nBDAY;VALUE=date;X-APPLE-OMIT-YEAR=1604:1604-03-11\r\n"
             "item1.X-ABDATE;VALUE=date;type=pref:2010-05-20\r\n"
             "item1.X-ABLabel:_$!<Anniversary>!$_\r\n"
             "item2.X-ABDATE;X-APPLE-OMIT-YEAR=1604;type=pref:1604-02-29\r\n"
             "item2.X-ABLabel:_$!<Other>!$_\r\nREV:2023-11-05T10:00:00Z\r\n"
             "UID:11E8F2C1-0001-4A2B-9C3D-000000000001\r\n",
             {"Ann Marie Smith: birthday --03-11 Anniversary 2010-05-20 _$!<Other>!$_ --02-29"}},
        Card{"MacContactsCompany",
             "VERSION:3.0\r\nPRODID:-//Apple Inc.//macOS 13.4//EN\r\nN:;;;;\r\nFN:Acme\r\n"
             "ORG:Acme;\r\nX-ABShowAs:COMPANY\r\nitem1.X-ABDATE:1999-01-04\r\n"
             "item1.X-ABLabel:Founded\r\nUID:c1\r\n",
             {"Acme (Acme): Founded 1999-01-04"}},
        Card{"Thunderbird",
             "VERSION:4.0\r\nN:Smith;Ann;;;\r\nFN:Ann Smith\r\nNICKNAME:Annie\r\n"
             "BDAY;VALUE=DATE:19800610\r\nANNIVERSARY;VALUE=DATE:20050917\r\n"
             "EMAIL;PREF=1:ann@example.org\r\nUID:5a0a3e55-5b9b-4bb0-8d6d-1d8f0a9f1b10\r\n",
             {"Ann Smith (Annie): birthday 1980-06-10 Anniversary 2005-09-17"}},
        Card{"Evolution",
             "VERSION:3.0\r\nUID:pas-id-6553B1D200000001\r\nFN:Ann Smith\r\nN:Smith;Ann;;;\r\n"
             "X-EVOLUTION-FILE-AS:Smith\\, Ann\r\nBDAY;VALUE=DATE:1980-06-10\r\n"
             "X-EVOLUTION-ANNIVERSARY;VALUE=DATE:2004-02-29\r\nCATEGORIES:VIP\r\n"
             "X-EVOLUTION-BLOG-URL:\r\nREV:2023-11-14T12:00:00Z(0)\r\n",
             {"Ann Smith: birthday 1980-06-10 Anniversary 2004-02-29", "group VIP 1"}},
        Card{"KAddressBook",
             "VERSION:3.0\r\nBDAY:1980-06-10T00:00:00\r\nEMAIL:ann@example.org\r\n"
             "FN:Ann Smith\r\nN:Smith;Ann;;;\r\nREV:2023-11-14T12:00:00Z\r\nUID:Qkd1Wl3mJ1\r\n"
             "X-KADDRESSBOOK-X-Anniversary:2005-09-17\r\nX-KADDRESSBOOK-X-SpouseName:Bob\r\n",
             {"Ann Smith: birthday 1980-06-10 Anniversary 2005-09-17"}},
        Card{"Nextcloud",
             "VERSION:4.0\r\nPRODID:-//Nextcloud Contacts v5.5.1\r\nUID:u1\r\nFN:Ann Smith\r\n"
             "BDAY;VALUE=DATE-AND-OR-TIME:19800610\r\nANNIVERSARY;VALUE=DATE:20050917\r\n"
             "CATEGORIES:Family\\, close,Work\r\nREV;VALUE=DATE-AND-OR-TIME:20231114T120000Z\r\n",
             {"Ann Smith: birthday 1980-06-10 Anniversary 2005-09-17", "group Family, close 1",
              "group Work 1"}},
        Card{"OutlookVersion21",
             "VERSION:2.1\r\nX-MS-OL-DEFAULT-POSTAL-ADDRESS:0\r\n"
             "N;LANGUAGE=de;CHARSET=Windows-1252:M\xFCller;J\xF6rg\r\n"
             "FN;CHARSET=Windows-1252:J\xF6rg M\xFCller\r\nTEL;WORK;VOICE:123\r\n"
             "LABEL;HOME;ENCODING=QUOTED-PRINTABLE:Weg 1=0D=0A=\r\n12345 Ort\r\n"
             "X-MS-ANNIVERSARY:20050917\r\nBDAY:19800610\r\n"
             "PHOTO;TYPE=JPEG;ENCODING=BASE64:\r\n /9j/4AAQSkZJRgABAQEAYABgAAD/\r\n ZZ==\r\n\r\n"
             "REV:20231114T120000Z\r\n",
             {"Jörg Müller: birthday 1980-06-10 Anniversary 2005-09-17"}},
        Card{
            "AndroidPhoneVersion21",
            "VERSION:2.1\r\n"
            "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=4D=C3=BC=6C=6C=65=72;=4A=C3=B6=72=67;;;\r\n"
            "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=4A=C3=B6=72=67=20=4D=C3=BC=6C=\r\n"
            "=6C=65=72\r\nTEL;CELL;PREF:123\r\nBDAY:1980-06-10\r\nX-ANNIVERSARY:2005-09-17\r\n",
            {"Jörg Müller: birthday 1980-06-10 Anniversary 2005-09-17"}},
        Card{"OnlyNOfAnOldPhone",
             "VERSION:2.1\nN:Smith;Ann\nBDAY:19800610T000000\n",
             {"Ann Smith: birthday 1980-06-10"}},
        Card{"OnlyFNOfVersion4",
             "VERSION:4.0\r\nFN:Ann Marie Smith\r\nBDAY:--0229\r\nANNIVERSARY:20040229\r\n",
             {"Ann Marie Smith: birthday --02-29 Anniversary 2004-02-29"}},
        Card{"DayWithoutMonth",
             "VERSION:4.0\r\nFN:Ann\r\nUID:u\r\nBDAY:---10\r\n",
             {"Ann", "skipped date 1 Ann: BDAY: names a day without a month (\"---10\")"}},
        Card{"BirthdayInWords",
             "VERSION:4.0\r\nFN:Ann\r\nUID:u\r\nBDAY;VALUE=text:circa 1800\r\n",
             {"Ann", "skipped date 1 Ann: BDAY: is given in words (\"circa 1800\")"}},
        Card{"TwoBirthdays",
             "VERSION:3.0\nFN:Ann\nBDAY:19800610\nBDAY:19810611\n",
             {"Ann: birthday 1980-06-10",
              "skipped date 1 Ann: BDAY: the card has a birthday before this one"}},
        Card{"DatesWithoutLabel",
             "VERSION:3.0\nN:Smith;Ann;;;\nFN:Ann Smith\nitem1.X-ABDATE:2010-01-02\n"
             "X-ABDATE:2011-01-02\n",
             {"Ann Smith: (no label) 2010-01-02 (no label) 2011-01-02"}},
        Card{"FoldedAndEscaped",
             "VERSION:3.0\r\nN:Smith\\; the elder;An\r\n n;;;\r\nFN:Ann\r\nitem1.X-ABDATE:2010\r\n"
             " -01-02\r\nitem1.X-ABLabel:First met\\, \r\n in Rome\\nat \\\\night\r\n",
             {"Ann Smith; the elder: First met, in Rome\nat \\night 2010-01-02"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(ImportedCard, WithAByteOrderMarkIsRead) {
  EXPECT_EQ(bookAfter("\xEF\xBB\xBF" + vCard("FN:Ann Smith\nBDAY:19800610\n")),
            (std::vector<std::string>{"Ann Smith: birthday 1980-06-10"}));
}

TEST_F(ImportedCard, OfAGroupIsReadFromMacContactsAndFromVersion4) {
  EXPECT_EQ(bookAfter("BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Apple Inc.//macOS 13.4//EN\r\n"
                      "N:Family\r\nFN:Family\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n"
                      "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:u1\r\nUID:g1\r\nEND:VCARD\r\n"
                      "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Everyone\r\n"
                      "MEMBER:urn:uuid:g1\r\nMEMBER:urn:uuid:u2\r\nUID:urn:uuid:g2\r\n"
                      "END:VCARD\r\n" +
                      vCard("FN:Ann\nUID:u1\nBDAY:--0610\n") +
                      vCard("FN:Bob\nUID:urn:uuid:u2\nBDAY:--0611\n")),
            (std::vector<std::string>{"Ann: birthday --06-10", "Bob: birthday --06-11",
                                      "group Family 1", "group Everyone 2"}));
}

}  // namespace
}  // namespace annivo
