// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>

#include "codecs/vcard/VCardDate.h"

namespace annivo {
namespace {

struct Row {
  const char* name;
  const char* line;
  const char* expected;  ///< the day, or the reason
};

class VCardDate : public testing::TestWithParam<Row> {};

TEST_P(VCardDate, ReadsTheDayOrSaysWhyNot) {
  const VCard card = VCard::parse(std::string("VERSION:3.0\n") + GetParam().line + '\n');
  const VCardProperty& property = card.properties()[1];
  const auto day = vCardDay(property, property.value);
  if (!day) {
    EXPECT_EQ(day.error().description, GetParam().expected);
    return;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", day->year, day->month, day->day);
  EXPECT_STREQ(text, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, VCardDate,
    testing::Values(
        Row{"Basic", "BDAY:19800610", "1980-06-10"},
        Row{"Extended", "BDAY:1980-06-10", "1980-06-10"},
        Row{"ShortFields", "BDAY:1980-6-1", "1980-06-01"},
        Row{"Slashes", "BDAY:1980/06/10", "1980-06-10"},
        Row{"WithSpace", "BDAY: 1980-06-10 ", "1980-06-10"},
        Row{"DateTimeInUTC", "BDAY:1980-06-10T00:00:00Z", "1980-06-10"},
        Row{"DateTimeWithoutZone", "BDAY:19800610T120000", "1980-06-10"},
        Row{"DateTimeWithOffset", "BDAY;VALUE=date-time:1980-06-10T23:30:00-05:00", "1980-06-10"},
        Row{"DateTimeWithSpace", "BDAY:1980-06-10 00:00:00", "1980-06-10"},
        Row{"DateWithZone", "BDAY:1980-06-10Z", "1980-06-10"},
        Row{"NoYearBasic", "BDAY:--0610", "1604-06-10"},
        Row{"NoYearExtended", "BDAY:--06-10", "1604-06-10"},
        Row{"NoYearWithTime", "BDAY:--0610T090000", "1604-06-10"},
        Row{"OmittedYear", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-03-11", "1604-03-11"},
        Row{"OmittedOtherYear", "BDAY;X-APPLE-OMIT-YEAR=1904:1904-03-11", "1604-03-11"},
        Row{"OmittedYearOfAnother", "BDAY;X-APPLE-OMIT-YEAR=1604:1980-03-11", "1980-03-11"},
        Row{"YearZero", "BDAY:0000-03-11", "1604-03-11"},
        Row{"LeapDay", "BDAY:1980-02-29", "1980-02-29"},
        Row{"LeapDayWithoutYear", "BDAY:--0229", "1604-02-29"},
        Row{"LeapDayOfOmittedCommonYear", "BDAY;X-APPLE-OMIT-YEAR=1903:1903-02-29", "1604-02-29"},
        Row{"GregorianCalendar", "BDAY;CALSCALE=gregorian:19800610", "1980-06-10"},
        Row{"FirstYear", "BDAY:00010101", "0001-01-01"},
        Row{"LastYear", "BDAY:99991231", "9999-12-31"},
        Row{"DayOnly", "BDAY:---10", "names a day without a month (\"---10\")"},
        Row{"MonthOnly", "BDAY:--06", "names a month without a day (\"--06\")"},
        Row{"YearAndMonth", "BDAY:1980-06", "names a month without a day (\"1980-06\")"},
        Row{"YearOnly", "BDAY:1980", "names no month and day (\"1980\")"},
        Row{"Words", "BDAY;VALUE=text:circa 1800", "is given in words (\"circa 1800\")"},
        Row{"WordsUnmarked", "BDAY:circa 1800", "is no date that can be read (\"circa 1800\")"},
        Row{"TimeOnly", "BDAY:T102200", "names a time without a day (\"T102200\")"},
        Row{"OtherCalendar", "BDAY;CALSCALE=chinese:1980-06-10",
            "is in the calendar \"CHINESE\" (\"1980-06-10\")"},
        Row{"NoSuchLeapDay", "BDAY:1981-02-29", "is no day of the calendar (\"1981-02-29\")"},
        Row{"NoSuchMonth", "BDAY:1980-13-01", "is no day of the calendar (\"1980-13-01\")"},
        Row{"MonthPastAByte", "BDAY:1980-257-01", "is no day of the calendar (\"1980-257-01\")"},
        Row{"DayPastAByte", "BDAY:1980-1-257", "is no day of the calendar (\"1980-1-257\")"},
        Row{"DayZero", "BDAY:1980-06-00", "is no day of the calendar (\"1980-06-00\")"},
        Row{"DayFirst", "BDAY:10/06/1980", "is no date that can be read (\"10/06/1980\")"},
        Row{"OpenEnd", "BDAY:1980-", "is no date that can be read (\"1980-\")"},
        Row{"Dashes", "BDAY:--", "names no month and day (\"--\")"},
        Row{"Digits", "BDAY:198006101", "is no date that can be read (\"198006101\")"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace annivo
