// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "base/Translation.h"

namespace annivo {
namespace {

TEST(Translation, IsTheEnglishTextWithoutACatalogue) {
  EXPECT_EQ(translated("Nothing to do."), "Nothing to do.");
  EXPECT_EQ(translated("The calendar \"{1}\" is for {2}.", "Dates", std::string("birthdays")),
            "The calendar \"Dates\" is for birthdays.");
}

TEST(Translation, PutsValuesWhereTheTextWantsThem) {
  EXPECT_EQ(filled("{2} of {1}", {"a", "b"}), "b of a");
  EXPECT_EQ(filled("{1}{1}", {"x"}), "xx");
  EXPECT_EQ(filled("{2} {0} {x} {", {"a"}), "{2} {0} {x} {");
  EXPECT_EQ(filled("{1}", {"{1}"}), "{1}");
  EXPECT_EQ(filled("", {"a"}), "");
}

TEST(Translation, TakesTheFormOfTheCount) {
  EXPECT_EQ(counted(0, "{1} person", "{1} people"), "0 people");
  EXPECT_EQ(counted(1, "{1} person", "{1} people"), "1 person");
  EXPECT_EQ(counted(2, "{1} person in {2}", "{1} people in {2}", "Family"), "2 people in Family");
}

}  // namespace
}  // namespace annivo
