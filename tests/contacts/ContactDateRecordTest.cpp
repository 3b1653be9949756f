// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "contacts/ContactDateRecord.h"

namespace annivo {
namespace {

TEST(ContactDateRecord, WritesEveryAbsentValueAsNull) {
  const ContactDateRecord record;
  for (const char* key : {"first name", "middle name", "last name", "nick name", "organization",
                          "isOrganization", "date type", "date UID", "person UID"}) {
    EXPECT_EQ(record.textForKey(key), "NULL") << key;
  }
  EXPECT_FALSE(record.thisDate.has_value());
  EXPECT_TRUE(record.groups.empty());
}

TEST(ContactDateRecord, GivesEachTextUnderItsKey) {
  const ContactDateRecord record{.firstName = "1",
                                 .middleName = "2",
                                 .lastName = "3",
                                 .nickName = "4",
                                 .organization = "5",
                                 .isOrganization = "6",
                                 .dateType = "7",
                                 .thisDate = kUnixEpoch,
                                 .dateUID = "8",
                                 .personUID = "9",
                                 .groups = {"G"}};
  const char* const keys[] = {"first name", "middle name",  "last name",
                              "nick name",  "organization", "isOrganization",
                              "date type",  "date UID",     "person UID"};
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    EXPECT_EQ(record.textForKey(keys[i]), std::to_string(i + 1)) << keys[i];
  }
  for (const char* key : {"this date", "groups", "First name", "", "firstName"}) {
    EXPECT_EQ(record.textForKey(key), std::nullopt) << key;
  }
}

TEST(GroupIdentifiers, AreEqualByWhatTheyHold) {
  EXPECT_EQ(GroupIdentifiers(), GroupIdentifiers(std::vector<std::string>{}));
  EXPECT_EQ(GroupIdentifiers({"A", "B"}), GroupIdentifiers(std::vector<std::string>{"A", "B"}));
  EXPECT_FALSE(GroupIdentifiers({"A", "B"}) == GroupIdentifiers({"B", "A"}));
}

}  // namespace
}  // namespace annivo
