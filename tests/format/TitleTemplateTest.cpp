// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "format/TitleTemplate.h"

namespace annivo {
namespace {

using Template = std::vector<std::string>;

const Template kDefault{"First name", "Last name", ":", "ordinal age", "type"};

/// A record and what its title needs besides it; the base case is Ann Smith's 21st birthday.
struct Case {
  std::string first = "Ann";
  std::string middle = "NULL";
  std::string last = "Smith";
  std::string nick = "NULL";
  std::string organization = "NULL";
  std::string type = "birthday";
  std::string year = "2005";
  std::int64_t age = 21;
  std::string language = "en";

  [[nodiscard]] std::string base(const Template& format) const {
    ContactDateRecord record;
    record.firstName = first;
    record.middleName = middle;
    record.lastName = last;
    record.nickName = nick;
    record.organization = organization;
    return baseTitle(masterTitle(format), record, year, type);
  }
  [[nodiscard]] std::string title(const Template& format) const {
    return titleForAge(base(format), age, language);
  }
};

TEST(TitleTemplate, TokensStandInTheirPlaces) {
  const std::array<std::string_view, 9> expected{"First name", "Middle name", "Last name",
                                                 "nickname",   "age",         "ordinal age",
                                                 "year",       "type",        "organization"};
  EXPECT_EQ(kTokens, expected);
}

TEST(TitleTemplate, MasterTitleMarksEveryElement) {
  EXPECT_EQ(masterTitle(kDefault),
            "^!*First name^!* ^!*Last name^!* ^!*:^!* ^!*ordinal age^!* ^!*type^!*");
  EXPECT_EQ(masterTitle({}), "^!*^!*");
  EXPECT_EQ(masterTitle({""}), "^!*^!*");
  EXPECT_EQ(masterTitle({"", ""}), "^!*^!* ^!*^!*");
  EXPECT_EQ(masterTitle({"x"}), "^!*x^!*");
}

TEST(TitleTemplate, DefaultTemplate) {
  EXPECT_EQ(Case{}.title(kDefault), "Ann Smith: 21st birthday");
}

TEST(TitleTemplate, EveryTokenStandsForItsValue) {
  const Case all{.first = "F",
                 .middle = "M",
                 .last = "L",
                 .nick = "N",
                 .organization = "O",
                 .type = "T",
                 .year = "1980",
                 .age = 46};
  struct Row {
    const char* token;
    const char* value;
  };
  for (const auto& [token, value] :
       {Row{"First name", "F"}, Row{"Middle name", "M"}, Row{"Last name", "L"},
        Row{"nickname", "N"}, Row{"age", "46"}, Row{"ordinal age", "46th"}, Row{"year", "1980"},
        Row{"type", "T"}, Row{"organization", "O"}}) {
    EXPECT_EQ(all.title({token}), value) << token;
    EXPECT_EQ(all.title({token, "x", token}), std::string(value) + " x " + value) << token;
  }
}

TEST(TitleTemplate, TokenNamesAreMatchedExactly) {
  for (const char* element : {"first name", "First Name", "nick name", "Age", "First name ",
                              "Organization", "TYPE", "ordinalage", "firstname"}) {
    EXPECT_EQ(Case{}.title({element}), element);
  }
}

TEST(TitleTemplate, OtherElementsAreCopied) {
  EXPECT_EQ(Case{}.title({"Dear", "First name", "!"}), "Dear Ann!");
  EXPECT_EQ(Case{}.title({"First name", "'s", "type"}), "Ann's birthday");
  EXPECT_EQ(Case{}.title({"First name", "'s"}), "Ann 's");
  EXPECT_EQ(Case{}.title({"two words", "type"}), "two words birthday");
}

TEST(TitleTemplate, AnElementNullVanishes) {
  EXPECT_EQ(Case{}.title({"First name", "NULL", "type"}), "Ann birthday");
  EXPECT_EQ(Case{}.title({"NULL"}), "");
}

TEST(TitleTemplate, EmptyTemplateAndEmptyElements) {
  EXPECT_EQ(Case{}.title({}), "");
  EXPECT_EQ(Case{}.title({""}), "");
  EXPECT_EQ(Case{}.title({"", ""}), " ");
  EXPECT_EQ(Case{}.title({"First name", "", "type"}), "Ann birthday");
  EXPECT_EQ(Case{}.title({"", "", "", ""}), "  ");  // three spaces, one pass
}

TEST(TitleTemplate, AbsentFirstNameTakesItsSpaceAlong) {
  EXPECT_EQ((Case{.first = "NULL"}.title({"First name", "Last name"})), "Smith");
}

TEST(TitleTemplate, AbsentLastNameLeavesATrailingSpace) {
  EXPECT_EQ((Case{.last = "NULL"}.title({"First name", "Last name"})), "Ann ");
}

TEST(TitleTemplate, AbsentMiddleNameVanishes) {
  EXPECT_EQ(Case{}.title({"First name", "Middle name", "Last name"}), "Ann Smith");
}

TEST(TitleTemplate, AnAbsentNameBeforePunctuation) {
  // "NULL " goes with its space; the first name's own space then stands before the colon and goes.
  EXPECT_EQ((Case{.last = "NULL"}.title(kDefault)), "Ann: 21st birthday");
  EXPECT_EQ((Case{.first = "NULL", .last = "NULL"}.title(kDefault)), ": 21st birthday");
}

TEST(TitleTemplate, ADateWithoutAYearHasNoYearAndNoAges) {
  const Case noYear{.year = "1604"};
  EXPECT_EQ(noYear.title(kDefault), "Ann Smith: birthday");
  EXPECT_EQ(noYear.title({"year", "First name"}), "Ann");
  EXPECT_EQ(noYear.title({"First name", "age"}), "Ann ");
  EXPECT_EQ(noYear.title({"age", "ordinal age", "year"}), "");
}

TEST(TitleTemplate, NeighboursOf1604AreYears) {
  EXPECT_EQ((Case{.year = "1603", .age = 423}.title({"year", "age"})), "1603 423");
  EXPECT_EQ((Case{.year = "1605", .age = 421}.title({"year", "ordinal age"})), "1605 421st");
  EXPECT_EQ((Case{.year = "0001", .age = 2025}.title({"year", "age"})), "0001 2025");
}

TEST(TitleTemplate, AgeZeroIsADigitAndAnEmptyOrdinal) {
  const Case newborn{.age = 0};
  EXPECT_EQ(newborn.title({"First name", "Last name", ":", "age", "type"}),
            "Ann Smith: 0 birthday");
  EXPECT_EQ(newborn.title(kDefault), "Ann Smith:  birthday");
}

TEST(TitleTemplate, TheAgeTakesTheOrdinalOfTheLanguage) {
  EXPECT_EQ((Case{.age = 1, .language = "fr"}.title(kDefault)), "Ann Smith: 1er birthday");
  EXPECT_EQ((Case{.language = "de"}.title(kDefault)), "Ann Smith: 21. birthday");
  EXPECT_EQ((Case{.language = "pt-BR"}.title(kDefault)), "Ann Smith: 21st birthday");
}

TEST(TitleTemplate, NamesAreChangedLikeTheTemplatesOwnText) {
  struct Row {
    const char* what;
    const char* last;
    const char* expected;
  };
  for (const auto& [what, last, expected] : {
           Row{"NULL inside", "MCNULL", "Ann MC."},
           Row{"NULL and a space inside", "MCNULL X", "Ann MCX."},
           Row{"NULL within NULL with a space", "NUNULL LL", "Ann ."},
           Row{"NULL within NULL, one pass", "NUNULLLL", "Ann NULL."},
           Row{"lower case null stays", "McNull", "Ann McNull."},
           Row{"marker", "a^!*b", "Ann ab."},
           Row{"marker within a marker, one pass", "^!^!**", "Ann ^!*."},
           Row{"half a marker", "^!", "Ann ^!."},
           Row{"space before a stop", "Smith .", "Ann Smith.."},
           Row{"two spaces", "A  B", "Ann A B."},
           Row{"three spaces", "A   B", "Ann A  B."},
           Row{"four spaces", "A    B", "Ann A  B."},
           Row{"hyphen with spaces", "A - B", "Ann A-B."},
           Row{"hyphen without", "A-B", "Ann A-B."},
       }) {
    EXPECT_EQ((Case{.last = last}.title({"First name", "Last name", "."})), expected) << what;
  }
}

TEST(TitleTemplate, AnAbsentNameIsSeenOnlyAfterAllValuesAreIn) {
  // The trailing "NU" and the literal "LL" are apart by markers, so no "NULL" arises before the
  // markers go, and none is removed afterwards.
  EXPECT_EQ((Case{.first = "NU"}.title({"First nameLL", "First name"})), "First nameLL NU");
  EXPECT_EQ((Case{.first = "NU^!*LL"}.title({"First name"})), "NULL");
}

TEST(TitleTemplate, AMarkedTokenInsideANameIsFilledInIfItsTurnIsStillToCome) {
  const Template format{"First name", "|", "organization"};
  EXPECT_EQ((Case{.first = "^!*Last name^!*", .organization = "O"}.title(format)), "Smith | O");
  EXPECT_EQ((Case{.first = "^!*First name^!*", .organization = "O"}.title(format)),
            "First name | O");
  EXPECT_EQ((Case{.organization = "^!*First name^!*"}.title(format)), "Ann | First name");
  EXPECT_EQ((Case{.first = "^!*age^!*", .organization = "^!*year^!*"}.title(format)), "21 | 2005");
}

TEST(TitleTemplate, TextsAreFilledInInTheirOrder) {
  const std::pair<const char*, std::string Case::*> order[] = {
      {"First name", &Case::first},   {"Last name", &Case::last},
      {"nickname", &Case::nick},      {"type", &Case::type},
      {"Middle name", &Case::middle}, {"organization", &Case::organization}};
  for (std::size_t i = 0; i < std::size(order); ++i) {
    for (std::size_t j = 0; j < std::size(order); ++j) {
      const auto& [token, value] = order[i];
      const auto& [named, valueOfNamed] = order[j];
      Case names;
      names.*valueOfNamed = "value";
      names.*value = std::string("^!*") + named + "^!*";
      // A name that holds another token in its markers shows when that one is filled in.
      EXPECT_EQ(names.title({token}), i < j ? "value" : named) << token << " holding " << named;
    }
  }
}

TEST(TitleTemplate, DeferredAgeMarksInsideANameAreFilledInToo) {
  const Case marked{.first = "^!!!*age^!!!*", .last = "^!!!*ordinal age^!!!*"};
  EXPECT_EQ(marked.title({"First name", "Last name"}), "21 21st");
  // Even where the date has no year: the marks are in the name, not put there for the tokens.
  EXPECT_EQ((Case{.first = "^!!!*age^!!!*", .year = "1604"}.title({"First name"})), "21");
}

TEST(TitleTemplate, ElementsThatHoldMarkersAreReadAsTheMasterTitleReads) {
  EXPECT_EQ(Case{}.title({"x^!*First name^!*y"}), "xAnny");
  EXPECT_EQ(Case{}.title({"^!*"}), "");
  EXPECT_EQ(Case{}.title({"a^!* ^!*First name"}), "a Ann");
  EXPECT_EQ(Case{}.title({"First name^!*"}), "Ann");
}

TEST(TitleTemplate, ATokenNeedsItsOwnMarkers) {
  // After the first match its closing marker is gone, so it cannot open a second one.
  EXPECT_EQ(Case{}.title({"First name^!*First name"}), "AnnFirst name");
}

TEST(TitleTemplate, TextsOfEveryKindPassThrough) {
  for (const char* name : {"\u202EAnn\u202C",                             // right-to-left override
                           "\u05D0\u05E0\u05D4 \u200F!x",                 // Hebrew with a mark
                           "e\u0301le\u0300ne",                           // combining characters
                           "\U0001F468\u200D\U0001F469\u200D\U0001F467",  // a joined emoji
                           "a\nb\r\nc", "\x01\x02\x7F", "\t", "BEGIN:VEVENT", "%@%d%n", "\\n;,"}) {
    EXPECT_EQ((Case{.first = name}.title({"First name"})), name);
  }
  const std::string zero("a\0b", 3);
  EXPECT_EQ((Case{.first = zero}.title({"First name", "type"})), zero + " birthday");
}

TEST(TitleTemplate, FillingInAgesLeavesTheBaseTitleForTheNextYear) {
  const std::string base = Case{}.base(kDefault);
  EXPECT_EQ(base, "Ann Smith: ^!!!*ordinal age^!!!* birthday");
  EXPECT_EQ(titleForAge(base, 21, "en"), "Ann Smith: 21st birthday");
  EXPECT_EQ(titleForAge(base, 22, "en"), "Ann Smith: 22nd birthday");
}

}  // namespace
}  // namespace annivo
