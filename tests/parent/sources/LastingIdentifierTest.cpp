// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "parent/sources/ImportedSource.h"
#include "parent/sources/LastingIdentifier.h"

namespace annivo {
namespace {

// Stores and event ledgers hold these: they must never change. The values were made with Python's
// uuid.uuid5 from the names that docs/formats/contacts.md describes.

TEST(LastingIdentifier, OfASourceIsAsEver) {
  EXPECT_EQ(lastingIdentifier(JoinedFields() << "source"
                                             << "vCards"),
            "733AD59E-84DA-59C3-9BC4-374A418545DD");
}

TEST(LastingIdentifier, TellsAbsentFromEmptyAndOneFieldFromTwo) {
  const std::optional<std::string> absent;
  EXPECT_EQ((JoinedFields() << "a" << absent << "" << 12).text(), "1:a-0:2:12");
  EXPECT_EQ((JoinedFields() << StoredDay{1980, 6, 10}).text(), "4:19801:62:10");
}

TEST(LastingIdentifier, OfPeopleDatesAndGroupsIsAsEver) {
  ImportedSource source("vCards");
  const auto add = [&](StoredPerson person, std::vector<std::string> categories) {
    VCardContact contact;
    contact.shownName = "Bob Jones";
    contact.person = std::move(person);
    contact.categories = std::move(categories);
    EXPECT_EQ(source.add(std::move(contact), "the card"), std::nullopt);
  };
  const StoredPerson bob{.firstName = "Bob",
                         .lastName = "Jones",
                         .dates = {{"", "First met", StoredDay{2010, 1, 2}},
                                   {"", std::nullopt, StoredDay{2011, 1, 2}},
                                   {"", "First met", StoredDay{2012, 1, 2}}}};
  add(bob, {"Family"});
  add({.firstName = "Bob", .lastName = "Jones"}, {});
  source.finish();
  ASSERT_EQ(source.people().size(), 2U);
  EXPECT_EQ(source.people()[0].uniqueId, "801B55CA-92E5-5262-8DA9-0E9A77DB5593:ABPerson");
  EXPECT_EQ(source.people()[1].uniqueId, "0FF77806-5C96-5886-8B35-10D83B45FE8E:ABPerson");
  const auto& dates = source.people()[0].dates;
  EXPECT_EQ(dates[0].uniqueId, "48447162-1FBB-5CE9-BE16-C58A4C7E96C1");
  EXPECT_EQ(dates[1].uniqueId, "A3B33526-A418-5622-BC1D-2C649F4D03AA");
  EXPECT_EQ(dates[2].uniqueId, "828D6C73-00F6-53DA-9A50-5A2686F167BD");
  EXPECT_EQ(source.groups()[0].uniqueId, "1A953374-E6FD-5123-A51A-A9A3AA0B7726:ABGroup");
}

}  // namespace
}  // namespace annivo
