// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "calendar/CalendarType.h"

namespace annivo {
namespace {

std::string textsInOrder(CalendarType type) {
  const CalendarTypeTexts& texts = textsOf(type);
  return std::string(texts.word) + ' ' + texts.uidKey + ' ' + texts.titleKey + ' ' +
         texts.titleTemplateKey;
}

TEST(CalendarType, IsStoredUnderItsOwnTexts) {
  EXPECT_EQ(textsInOrder(CalendarType::birthdays),
            "birth birthCalUID birthCalTitle titleBirthdays");
  EXPECT_EQ(textsInOrder(CalendarType::anniversaries),
            "anni aneeCalUID aneeCalTitle titleAnniversaries");
}

TEST(CalendarType, IsFoundByTheKeyOfItsUIDOnly) {
  EXPECT_EQ(calendarTypeOfUIDKey("birthCalUID"), CalendarType::birthdays);
  EXPECT_EQ(calendarTypeOfUIDKey("aneeCalUID"), CalendarType::anniversaries);
  for (const char* other : {"", "birth", "birthCalTitle", "appRunning"}) {
    EXPECT_EQ(calendarTypeOfUIDKey(other), std::nullopt) << other;
  }
}

}  // namespace
}  // namespace annivo
