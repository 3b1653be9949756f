// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>

#include "parent/sources/VCardContact.h"

namespace annivo {
namespace {

VCardContact contactOf(const std::string& card) {
  auto contact = readContact(VCard::parse(card));
  EXPECT_TRUE(contact.ok()) << (contact ? "" : contact.error().description);
  return contact ? *contact : VCardContact();
}

std::string day(const std::optional<StoredDay>& day) {
  if (!day) return "none";
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", day->year, day->month, day->day);
  return text;
}

/// "label=day" of each date, "(none)" for no label.
std::vector<std::string> datesOf(const VCardContact& contact) {
  std::vector<std::string> dates;
  for (const StoredDate& date : contact.person.dates) {
    dates.push_back(date.label.value_or("(none)") + '=' + day(date.day));
  }
  return dates;
}

constexpr const char* kAnniversary = "_$!<Anniversary>!$_";

// Cards as the programs write them.

TEST(VCardContact, ReadsACardOfTheMacAddressBook) {
  const auto contact = contactOf(
      "VERSION:3.0\n"
      "PRODID:-//Apple Inc.//Mac OS X 10.15.7//EN\n"
      "N:Smith;Ann;Marie;;\n"
      "FN:Ann Marie Smith\n"
      "NICKNAME:Annie\n"
      "ORG:Acme;Sales\n"
      "EMAIL;type=INTERNET;type=HOME:home@example.org\n"
      "EMAIL;type=INTERNET;type=WORK;type=pref:work@example.org\n"
      "BDAY;X-APPLE-OMIT-YEAR=1604:1604-03-11\n"
      "item1.X-ABDATE;type=pref:2010-05-20\n"
      "item1.X-ABLabel:_$!<Anniversary>!$_\n"
      "item2.X-ABDATE:2005-01-02\n"
      "item2.X-ABLabel:First met\\, in Rome\n"
      "item3.X-ABDATE:2006-01-02\n"
      "X-ABUID:5F1C:ABPerson\n"
      "UID:5F1C-UID\n");
  const StoredPerson& person = contact.person;
  EXPECT_EQ(person.firstName, "Ann");
  EXPECT_EQ(person.middleName, "Marie");
  EXPECT_EQ(person.lastName, "Smith");
  EXPECT_EQ(person.nickname, "Annie");
  EXPECT_EQ(person.organization, "Acme");
  EXPECT_EQ(person.displayFlags, 0);
  EXPECT_EQ(person.emails, (std::vector<std::string>{"work@example.org", "home@example.org"}));
  EXPECT_EQ(day(person.birthday), "1604-03-11");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2010-05-20",
                                      "First met, in Rome=2005-01-02", "(none)=2006-01-02"}));
  EXPECT_EQ(contact.uid, "5F1C-UID");
}

TEST(VCardContact, ReadsACardOfEvolution) {
  const auto contact = contactOf(
      "VERSION:3.0\nUID:pas-id-4F\nFN:Ann Smith\nN:Smith;Ann;;;\nBDAY:1980-06-10\n"
      "X-EVOLUTION-ANNIVERSARY:2005-09-17\nX-EVOLUTION-FILE-AS:Smith\\, "
      "Ann\nCATEGORIES:Family,Birthday\n");
  EXPECT_EQ(day(contact.person.birthday), "1980-06-10");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2005-09-17"}));
  EXPECT_EQ(contact.categories, (std::vector<std::string>{"Family", "Birthday"}));
}

TEST(VCardContact, ReadsACardOfKAddressBook) {
  const auto contact = contactOf(
      "VERSION:3.0\nBDAY:1980-06-10T00:00:00Z\nEMAIL:a@example.org\nFN:Ann Smith\n"
      "N:Smith;Ann;;;\nUID:k1\nX-KADDRESSBOOK-X-Anniversary:2005-09-17\n");
  EXPECT_EQ(day(contact.person.birthday), "1980-06-10");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2005-09-17"}));
}

TEST(VCardContact, ReadsACardOfAPhoneInVersion21) {
  const auto contact = contactOf(
      "VERSION:2.1\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;J=C3=B6rg;;;\n"
      "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=B6rg=20M=C3=BC=\nller\n"
      "TEL;CELL;PREF:123\nBDAY:19800610\nX-ANNIVERSARY:2005-09-17\n");
  EXPECT_EQ(contact.person.firstName, "Jörg");
  EXPECT_EQ(contact.person.lastName, "Müller");
  EXPECT_EQ(contact.shownName, "Jörg Müller");
  EXPECT_EQ(day(contact.person.birthday), "1980-06-10");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2005-09-17"}));
}

TEST(VCardContact, ReadsACardOfVersion4) {
  const auto contact = contactOf(
      "VERSION:4.0\nFN:Simon Perreault\nN:Perreault;Simon;;;ing. jr,M.Sc.\nBDAY:--0203\n"
      "ANNIVERSARY:20090808T1430-0500\nUID:urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1\n"
      "EMAIL;PREF=1:s@example.org\n");
  EXPECT_EQ(contact.person.firstName, "Simon");
  EXPECT_EQ(contact.person.lastName, "Perreault");
  EXPECT_EQ(day(contact.person.birthday), "1604-02-03");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2009-08-08"}));
}

TEST(VCardContact, TakesOneAnniversaryWrittenUnderSeveralNamesOnce) {
  const auto contact = contactOf(
      "VERSION:3.0\nFN:Ann\nANNIVERSARY:20050917\nX-ANNIVERSARY:2005-09-17\n"
      "X-EVOLUTION-ANNIVERSARY:2006-09-17\n");
  EXPECT_EQ(datesOf(contact),
            (std::vector<std::string>{std::string(kAnniversary) + "=2005-09-17",
                                      std::string(kAnniversary) + "=2006-09-17"}));
}

TEST(VCardContact, TakesTheFirstOfTwoBirthdaysAndSaysSo) {
  const auto contact = contactOf("VERSION:3.0\nFN:Ann\nBDAY:19800610\nBDAY:19810611\n");
  EXPECT_EQ(day(contact.person.birthday), "1980-06-10");
  EXPECT_EQ(contact.leftOut,
            (std::vector<std::string>{"BDAY: the card has a birthday before this one"}));
}

TEST(VCardContact, TakesASecondBirthdayWhereTheFirstIsNone) {
  const auto contact = contactOf("VERSION:4.0\nFN:Ann\nBDAY;VALUE=text:spring\nBDAY:19810611\n");
  EXPECT_EQ(day(contact.person.birthday), "1981-06-11");
  EXPECT_EQ(contact.leftOut, (std::vector<std::string>{"BDAY: is given in words (\"spring\")"}));
}

TEST(VCardContact, LeavesOutADayWithoutAMonthWithAReason) {
  const auto contact = contactOf("VERSION:4.0\nFN:Ann\nBDAY:---10\nANNIVERSARY:\n");
  EXPECT_EQ(day(contact.person.birthday), "none");
  EXPECT_EQ(contact.leftOut,
            (std::vector<std::string>{"BDAY: names a day without a month (\"---10\")"}));
}

struct Names {
  const char* name;
  const char* card;
  const char* first;
  const char* last;
  int flags;
};

class VCardNames : public testing::TestWithParam<Names> {};

TEST_P(VCardNames, BecomeThoseOfThePerson) {
  const auto contact = contactOf(std::string("VERSION:3.0\n") + GetParam().card);
  EXPECT_EQ(contact.person.firstName.value_or("-"), GetParam().first);
  EXPECT_EQ(contact.person.lastName.value_or("-"), GetParam().last);
  EXPECT_EQ(contact.person.displayFlags, GetParam().flags);
}

INSTANTIATE_TEST_SUITE_P(
    All, VCardNames,
    testing::Values(
        Names{"Both", "N:Smith;Ann;;;\nFN:Dr. A. Smith\n", "Ann", "Smith", 0},
        Names{"OnlyN", "N:Smith;Ann;;;\n", "Ann", "Smith", 0},
        Names{"OnlyFN", "FN:Ann Marie Smith\n", "Ann Marie", "Smith", 0},
        Names{"OnlyFNWithComma", "FN:Smith\\, Ann\n", "Ann", "Smith", 0},
        Names{"OneWord", "FN:Cher\n", "Cher", "-", 0},
        Names{"EmptyN", "N:;;;;\nFN:Ann Smith\n", "Ann", "Smith", 0},
        Names{"Company", "N:;;;;\nFN:Acme\nORG:Acme;\nX-ABShowAs:COMPANY\n", "-", "-", 1},
        Names{"CompanyWithPerson", "N:Smith;Ann;;;\nORG:Acme\nX-ABShowAs:COMPANY\n", "Ann", "Smith",
              1},
        Names{"CompanyOfAnotherName", "FN:The Acme\nORG:Acme\nX-ABShowAs:COMPANY\n", "-", "-", 1},
        Names{"OnlyOrganization", "N:;;;;\nORG:Acme\n", "-", "-", 1},
        Names{"PersonAtACompany", "FN:Ann Smith\nORG:Acme\n", "Ann", "Smith", 0},
        Names{"KindOrg", "KIND:org\nFN:Acme\nORG:Acme\n", "-", "-", 1},
        Names{"OnlyADate", "BDAY:19800610\n", "-", "-", 0}),
    [](const auto& row) { return row.param.name; });

TEST(VCardContact, ReadsGroupCardsOfBothKinds) {
  for (const std::string card :
       {"VERSION:3.0\nN:Family\nFN:Family\nX-ADDRESSBOOKSERVER-KIND:group\n"
        "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:u1\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:u2\nUID:g1\n",
        "VERSION:4.0\nKIND:group\nFN:Family\nMEMBER:urn:uuid:u1\nMEMBER:urn:uuid:u2\nUID:g1\n"}) {
    const auto contact = contactOf(card);
    EXPECT_TRUE(contact.isGroup);
    EXPECT_EQ(contact.groupName, "Family");
    EXPECT_EQ(contact.members, (std::vector<std::string>{"urn:uuid:u1", "urn:uuid:u2"}));
  }
}

TEST(VCardContact, RefusesACardThatNamesNobody) {
  const auto contact = readContact(VCard::parse("VERSION:3.0\nNOTE:x\nUID:u\n"));
  ASSERT_FALSE(contact.ok());
  EXPECT_EQ(contact.error().description, "the card names nobody");
}

TEST(VCardContact, RefusesACardWhoseNameIsNotValidUTF8) {
  const auto contact = readContact(VCard::parse("VERSION:3.0\nFN:M\xFCller\n"));
  ASSERT_FALSE(contact.ok());
  EXPECT_EQ(contact.error().description, "FN: it is not valid UTF-8");
}

TEST(VCardContact, TakesACardWhoseNoteIsNotValidUTF8) {
  EXPECT_EQ(contactOf("VERSION:3.0\nFN:Ann\nNOTE:\xFF\xFE\n").person.firstName, "Ann");
}

TEST(VCardContact, ComparesUIDsWithoutWhatProgramsPutAroundThem) {
  EXPECT_EQ(bareUID("urn:uuid:u1"), "u1");
  EXPECT_EQ(bareUID("URN:UUID:u1:ABPerson"), "u1");
  EXPECT_EQ(bareUID("u1"), "u1");
}

}  // namespace
}  // namespace annivo
