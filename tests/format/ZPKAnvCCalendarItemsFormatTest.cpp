// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "format/ZPKAnvCCalendarItemsFormat.h"
#include "tests/support/TestHome.h"

namespace annivo {
namespace {

using Event = ZPKCalendarItems::BasicEvent;

const std::vector<std::string> kDefault{"First name", "Last name", ":", "ordinal age", "type"};

ContactDateRecord annSmith(Date born) {
  ContactDateRecord record;
  record.firstName = "Ann";
  record.lastName = "Smith";
  record.dateType = "birthday";
  record.thisDate = born;
  record.dateUID = "D-1";
  record.personUID = "P-1:ABPerson";
  return record;
}

/// A formatter over the real writer on a temporary home.
struct Formatting {
  explicit Formatting(TestHome::Options options = {.now = utc(2026, 11, 15, 9)},
                      const std::vector<std::string>& format = kDefault)
      : home(std::move(options)),
        writer(home.platform()),
        formatter(home.platform(), writer, format) {}

  [[nodiscard]] std::vector<std::string> titles(const ContactDateRecord& record) const {
    std::vector<std::string> result;
    for (const auto& event : formatter.eventsForOriginal(record)) result.push_back(event.title);
    return result;
  }
  /// Titles of what the calendar holds from 2020 to 2040, in order of their dates.
  [[nodiscard]] std::vector<std::string> written() {
    auto& store = home.platform().defaultCalendarStore();
    auto events = store.events(utc(2020, 1, 1), utc(2040, 1, 1), store.calendars());
    std::ranges::sort(events, {}, [](const auto& event) { return event->startDate(); });
    std::vector<std::string> result;
    for (const auto& event : events) result.push_back(event->title().value_or("(none)"));
    return result;
  }

  TestHome home;
  ZPKCalendarItems writer;
  ZPKAnvCCalendarItemsFormat formatter;
};

using Titles = std::vector<std::string>;

TEST(ZPKAnvCCalendarItemsFormat, OffersTheTokensInTheirOrder) {
  EXPECT_EQ(ZPKAnvCCalendarItemsFormat::usedTokens(), kTokens);
}

TEST(ZPKAnvCCalendarItemsFormat, MakesThreeEventsOfARecord) {
  const Formatting f;
  const auto events = f.formatter.eventsForOriginal(annSmith(utc(1980, 6, 10, 12)));
  ASSERT_EQ(events.size(), 3U);
  for (int i = 0; i < 3; ++i) {
    const Event& event = events[static_cast<std::size_t>(i)];
    EXPECT_EQ(event.title, "Ann Smith: " + std::to_string(46 + i) + "th birthday");
    EXPECT_EQ(event.withStartDate, utc(2026 + i, 6, 10, 12));
    EXPECT_EQ(event.endDate, event.withStartDate);
    EXPECT_TRUE(event.allDay);
    EXPECT_EQ(event.notes, "");
    EXPECT_EQ(event.location, std::nullopt);
    EXPECT_EQ(event.url, "addressbook://P-1:ABPerson");
    EXPECT_EQ(event.uid, "D-1");
  }
}

TEST(ZPKAnvCCalendarItemsFormat, AsksTheClockForEachRecord) {
  Formatting f;
  const auto record = annSmith(utc(1980, 12, 20, 12));
  EXPECT_EQ(f.titles(record).front(), "Ann Smith: 45th birthday");
  f.home.clock.set(utc(2026, 12, 20, 12));
  EXPECT_EQ(f.titles(record).front(), "Ann Smith: 46th birthday");
}

TEST(ZPKAnvCCalendarItemsFormat, ADateWithoutAYearHasThreeEventsOfOneTitle) {
  const Formatting f;
  EXPECT_EQ(f.titles(annSmith(utc(1604, 6, 10, 12))),
            (Titles{"Ann Smith: birthday", "Ann Smith: birthday", "Ann Smith: birthday"}));
}

TEST(ZPKAnvCCalendarItemsFormat, TheYearIsThatOfTheDefaultZone) {
  // Already 1604 in UTC, still 1603 in New York.
  const auto record = annSmith(utc(1604, 1, 1, 2));
  EXPECT_EQ(Formatting({.now = utc(2026, 11, 15)}, {"year", "First name"}).titles(record).front(),
            "Ann");
  EXPECT_EQ(
      Formatting({.timeZone = "America/New_York", .now = utc(2026, 11, 15)}, {"year", "First name"})
          .titles(record)
          .front(),
      "1603 Ann");
}

TEST(ZPKAnvCCalendarItemsFormat, TheAgeOfADateOfThisYearIsZeroAndItsOrdinalEmpty) {
  const auto record = annSmith(utc(2026, 6, 10, 12));
  EXPECT_EQ(Formatting().titles(record),
            (Titles{"Ann Smith:  birthday", "Ann Smith: 1st birthday", "Ann Smith: 2nd birthday"}));
  EXPECT_EQ(Formatting({.now = utc(2026, 11, 15)}, {"First name", "Last name", ":", "age", "type"})
                .titles(record)
                .front(),
            "Ann Smith: 0 birthday");
}

TEST(ZPKAnvCCalendarItemsFormat, ADateInTheFutureHasFewerEvents) {
  const Formatting f;
  EXPECT_EQ(f.titles(annSmith(utc(2027, 6, 10))).size(), 3U);
  EXPECT_EQ(f.titles(annSmith(utc(2028, 6, 10))),
            (Titles{"Ann Smith:  birthday", "Ann Smith: 1st birthday"}));
  EXPECT_EQ(f.titles(annSmith(utc(2029, 6, 10))), (Titles{"Ann Smith:  birthday"}));
  EXPECT_EQ(f.titles(annSmith(utc(2030, 6, 10))), Titles{});
}

TEST(ZPKAnvCCalendarItemsFormat, TheDateTypeIsLookedUpInTheTableOfTheLanguage) {
  struct Row {
    const char* type;
    const char* english;
    const char* german;
  };
  const Formatting english({.now = utc(2026, 11, 15)}, {"type"});
  const Formatting german({.languages = {"de"}, .now = utc(2026, 11, 15)}, {"type"});
  for (const auto& [type, inEnglish, inGerman] : {
           Row{"Anniversary", "anniversary", "Anniversary"},
           Row{"_$!<Other>!$_", "other", "Sonstiges"},
           Row{"First met", "First met", "First met"},
           Row{"", "", ""},
       }) {
    auto record = annSmith(utc(1980, 6, 10));
    record.dateType = type;
    EXPECT_EQ(english.titles(record).front(), inEnglish);
    EXPECT_EQ(german.titles(record).front(), inGerman);
  }
}

TEST(ZPKAnvCCalendarItemsFormat, TheOrdinalFollowsTheFirstPreferredLanguageOnly) {
  struct Row {
    std::vector<std::string> languages;
    const char* first;
    const char* second;
  };
  for (const auto& [languages, first, second] :
       {Row{{"fr", "en"}, "1er", "2e"}, Row{{"de"}, "1.", "2."}, Row{{"es"}, "1\u00B0", "2\u00B0"},
        Row{{"en", "fr"}, "1st", "2nd"}, Row{{"pt-BR", "pt"}, "1st", "2nd"}}) {
    const Formatting f({.languages = languages, .now = utc(2026, 11, 15)}, {"ordinal age"});
    EXPECT_EQ(f.titles(annSmith(utc(2026, 6, 10))), (Titles{"", first, second}));
  }
}

TEST(ZPKAnvCCalendarItemsFormat, ARecordWithoutADateYieldsNoEventAndALineUnderTheLoggingSwitch) {
  auto record = annSmith({});
  record.thisDate.reset();
  Formatting quiet;
  quiet.formatter.setEventsWithOriginal(record);
  EXPECT_EQ(quiet.home.log.lines(), Titles{});

  TestHome home;
  home.ownPreferences({{"doLog", 1}});
  ZPKCalendarItems writer(home.platform());
  ZPKAnvCCalendarItemsFormat formatter(home.platform(), writer, kDefault);
  formatter.setEventsWithOriginal(record);
  EXPECT_EQ(formatter.eventsForOriginal(record).size(), 0U);
  EXPECT_EQ(home.log.lines(), Titles{"No date in the record D-1"});
}

TEST(ZPKAnvCCalendarItemsFormat, KeepsNothingBetweenRecords) {
  const Formatting f;
  const auto ann = annSmith(utc(1980, 6, 10));
  auto other = annSmith(utc(1604, 2, 29));
  other.firstName = "^!*Last name^!*";
  const auto before = f.titles(ann);
  EXPECT_NE(f.titles(other), before);
  EXPECT_EQ(f.titles(ann), before);
}

TEST(ZPKAnvCCalendarItemsFormat, WritesItsEventsIntoTheCalendarOnce) {
  Formatting f;
  f.writer.setThisCalendarWithUIDForType("Birthdays", "no such calendar", CalendarType::birthdays);
  const auto record = annSmith(utc(1980, 6, 10, 12));
  const Titles expected{"Ann Smith: 46th birthday", "Ann Smith: 47th birthday",
                        "Ann Smith: 48th birthday"};
  f.formatter.setEventsWithOriginal(record);
  EXPECT_EQ(f.written(), expected);
  f.formatter.setEventsWithOriginal(record);
  EXPECT_EQ(f.written(), expected);
}

TEST(ZPKAnvCCalendarItemsFormat, NoNameBreaksTheEventFileThatCarriesIt) {
  const Titles names{"a\nb\r\nEND:VEVENT\r\nBEGIN:VEVENT\r\nUID:x",
                     "\x01\x02\x1B[31m\x7F\t",
                     "a;b,c\\n\\d:\"e\"",
                     "\u202EAnn\u202C \u200F\u05D0\u05E0\u05D4",
                     "e\u0301\u0300\u0323",
                     "\U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F382",
                     std::string(70, 'x') + "\u00E9\u20AC\U0001F382 and on over many folds " +
                         std::string(500, 'y')};
  for (const auto& name : names) {
    Formatting f({.now = utc(2026, 11, 15)}, {"First name"});
    f.writer.setThisCalendarWithUIDForType("Birthdays", "no such calendar",
                                           CalendarType::birthdays);
    auto record = annSmith(utc(1980, 6, 10, 12));
    record.firstName = name;
    f.formatter.setEventsWithOriginal(record);
    EXPECT_EQ(f.written(), Titles(3, name));
  }
}

}  // namespace
}  // namespace annivo
