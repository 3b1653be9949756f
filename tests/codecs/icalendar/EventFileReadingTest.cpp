// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "codecs/icalendar/EventFile.h"
#include "tests/platform/calendarstore/CalendarHome.h"
#include "tests/support/TimeLimit.h"

namespace annivo {
namespace {

const NSTimeZone& berlin() {
  static const NSTimeZone zone("Europe/Berlin");
  return zone;
}

std::shared_ptr<CalEvent> read(const std::string& text) {
  const auto events = EventFile::events(text, berlin());
  return events && !events->empty() ? events->front() : nullptr;
}

const std::vector<std::string>& sampleLines() {
  static const std::vector<std::string> lines = {
      "UID:4DA1E8E2-0D7C-4D5C-B9C0-7E0E8E0B1A11\r\n",
      "SUMMARY:Gr\u00E4fin\\, birthday\r\n",
      "DTSTART;VALUE=DATE:20261120\r\n",
      "DTEND;VALUE=DATE:20261121\r\n",
      "URL;VALUE=URI:addressbook://AB-1:ABPerson\r\n",
      "X-ANNIVO-IDENTITY:978307200000000/CAL/DATE/4DA1E8E2-0D7C-4D5C-B9C0-7E0E8E0B1A11\r\n",
      "X-OTHER:1\r\n",
      "BEGIN:VALARM\r\nTRIGGER:-PT15M\r\nACTION:DISPLAY\r\nSUMMARY:no\r\nUID:x\r\nEND:VALARM\r\n",
  };
  return lines;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text = "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\n";
  for (const std::string& line : lines) text += line;
  return text + "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

void expectTheSample(const std::shared_ptr<CalEvent>& event) {
  ASSERT_TRUE(event);
  EXPECT_EQ(event->uid(), "4DA1E8E2-0D7C-4D5C-B9C0-7E0E8E0B1A11");
  EXPECT_EQ(event->title(),
            "Gr\xC3\xA4"
            "fin, birthday");
  EXPECT_EQ(event->startDate(), midnight(berlin(), 2026, 11, 20));
  EXPECT_EQ(event->endDate(), midnight(berlin(), 2026, 11, 20));
  EXPECT_TRUE(event->isAllDay());
  EXPECT_EQ(event->url(), "addressbook://AB-1:ABPerson");
  EXPECT_EQ(event->alarms(), std::vector{CalAlarm{.relativeTrigger = -900}});
  EXPECT_EQ(event->ledgerIdentity(),
            (LedgerIdentity{.myUID = "DATE", .calendarUID = "CAL", .date = kReferenceDate}));
}

TEST(EventFileReading, DoesNotDependOnTheOrderOfProperties) {
  auto lines = sampleLines();
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    expectTheSample(read(joined(lines)));
    std::shuffle(lines.begin(), lines.end(), random);
  }
}

TEST(EventFileReading, TakesLineFeedsMixedEndsAByteOrderMarkAndLowerCase) {
  const std::string crlf = joined(sampleLines());
  std::string lf = crlf;
  std::erase(lf, '\r');
  expectTheSample(read(lf));
  expectTheSample(read("\xEF\xBB\xBF" + crlf));
  std::string mixed = lf;
  mixed.insert(mixed.find("\nSUMMARY"), "\r");
  expectTheSample(read(mixed));
  std::string lower = crlf;
  for (const char* word : {"BEGIN:VEVENT", "SUMMARY:Gr", "DTSTART;VALUE=DATE", "END:VALARM"}) {
    const std::size_t at = lower.find(word);
    for (std::size_t i = at; lower[i] != '\r' && i < at + 7; ++i) {
      lower[i] = static_cast<char>(std::tolower(lower[i]));
    }
  }
  expectTheSample(read(lower));
}

TEST(EventFileReading, TellsNoTitleFromAnEmptyOne) {
  EXPECT_EQ(read(eventText("1", ""))->title(), std::nullopt);
  EXPECT_EQ(read(eventText("1", "SUMMARY:\r\n"))->title(), "");
  EXPECT_EQ(read(eventText("1", "SUMMARY\r\n"))->title(), std::nullopt);
}

TEST(EventFileReading, FindsTheMasterAmongSeveralComponents) {
  const std::string text =
      "BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nTZID:X\r\nBEGIN:STANDARD\r\nSUMMARY:zone\r\n"
      "END:STANDARD\r\nEND:VTIMEZONE\r\nBEGIN:VTODO\r\nUID:1\r\nSUMMARY:to do\r\nEND:VTODO\r\n"
      "BEGIN:VEVENT\r\nUID:1\r\nRECURRENCE-ID:20260101\r\nSUMMARY:exception\r\nEND:VEVENT\r\n"
      "BEGIN:VEVENT\r\nUID:1\r\nSUMMARY:master\r\nRRULE:FREQ=YEARLY\r\nEND:VEVENT\r\n"
      "BEGIN:VEVENT\r\nUID:2\r\nSUMMARY:second\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  const auto events = EventFile::events(text, berlin());
  ASSERT_TRUE(events);
  ASSERT_EQ(events->size(), 2U);
  EXPECT_EQ(events->at(0)->title(), "master");
  EXPECT_EQ(events->at(1)->title(), "second");
}

TEST(EventFileReading, ReadsTheDatesOfOtherPrograms) {
  const auto timed =
      read(eventText("1", "DTSTART;TZID=Europe/Berlin:20260701T140000\r\nDURATION:PT90M\r\n"));
  EXPECT_EQ(timed->startDate(), berlin().date({.year = 2026, .month = 7, .day = 1, .hour = 14}));
  EXPECT_EQ(timed->endDate(), *timed->startDate() + std::chrono::minutes{90});
  EXPECT_FALSE(timed->isAllDay());
  const auto days = read(eventText("1", "DTSTART;VALUE=DATE:20260701\r\nDURATION:P3D\r\n"));
  EXPECT_EQ(days->endDate(), midnight(berlin(), 2026, 7, 3));
  const auto alone = read(eventText("1", "DTSTART;VALUE=DATE:20260701\r\n"));
  EXPECT_EQ(alone->endDate(), midnight(berlin(), 2026, 7, 1));
  const auto backwards =
      read(eventText("1", "DTSTART;VALUE=DATE:20260701\r\nDTEND;VALUE=DATE:20260101\r\n"));
  EXPECT_EQ(backwards->endDate(), midnight(berlin(), 2026, 7, 1));
}

TEST(EventFileReading, ACopyUnderAnotherIdentifierIsNobodysButTheUsers) {
  const std::string property = "X-ANNIVO-IDENTITY:978307200000000/CAL/DATE/";
  const auto identityWith = [&](const std::string& uid, const std::string& named) {
    return read(joined({property + named + "\r\n", "UID:" + uid + "\r\n"}))->ledgerIdentity();
  };
  EXPECT_TRUE(identityWith("E-1", "E-1"));
  EXPECT_FALSE(identityWith("E-2", "E-1"));
  EXPECT_FALSE(identityWith("e-1", "E-1"));
  EXPECT_FALSE(identityWith("E-1", ""));
  EXPECT_FALSE(read(joined({"UID:E-1\r\n", "X-ANNIVO-IDENTITY:0/CAL/DATE\r\n"}))->ledgerIdentity());
}

TEST(EventFileReading, RefusesWhatIsNotWellFormed) {
  const std::string whole = joined(sampleLines());
  for (const std::string& text :
       {std::string(), std::string("\r\n"), std::string(4096, '\0'), std::string("hello"),
        whole + "junk\r\n", "junk\r\n" + whole, "X:1\r\n" + whole, whole + std::string(10, '\0'),
        std::string("BEGIN:VEVENT\r\nUID:1\r\nEND:VEVENT\r\n"),
        std::string("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nEND:VCALENDAR\r\nEND:VEVENT\r\n"),
        std::string("BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\nEND:VCALENDAR\r\n"),
        std::string("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:1\r\nEND:VEVENT\r\n")}) {
    EXPECT_FALSE(EventFile::events(text, berlin())) << text;
  }
}

TEST(EventFileReading, TakesBlankLinesAndLinesThatAreNone) {
  expectTheSample(read("\r\n" + joined(sampleLines()) + "\r\n\n"));
  auto lines = sampleLines();
  lines.insert(lines.begin() + 3, "a description that some program broke\r\n\r\n");
  expectTheSample(read(joined(lines)));
}

TEST(EventFileReading, AFileCutAtAnyByteIsRefusedUnlessOnlyItsLastLineEndIsGone) {
  const std::string whole = joined(sampleLines());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto events = EventFile::events(std::string_view(whole).substr(0, length), berlin());
    EXPECT_EQ(events.has_value(), length >= whole.size() - 2) << length;
  }
}

TEST(EventFileReading, BelievesAChangedTitleMoreThanTheExactOneBesideIt) {
  EXPECT_EQ(read(eventText("1", "SUMMARY;X-ANNIVO-EXACT=a_01b:ab\r\n"))->title(),
            "a\x01"
            "b");
  EXPECT_EQ(read(eventText("1", "SUMMARY;X-ANNIVO-EXACT=a_20:a\r\n"))->title(), "a ")
      << "some servers strip white space at the end";
  EXPECT_EQ(read(eventText("1", "SUMMARY;X-ANNIVO-EXACT=a_01b:other\r\n"))->title(), "other");
}

TEST(EventFileReading, ReadsALineOfTenMegabytesWithinASecond) {
  const std::string line = std::string("DESCRIPTION:").append(10'000'000, 'x') + "\r\n";
  const std::string text = eventText("1", line);
  const TimeLimit limit;
  EXPECT_EQ(read(text)->uid(), "1");
}

TEST(EventFileReading, ReadsAFoldedLineOfTenMegabytesWithinASecond) {
  std::string line = "SUMMARY:";
  while (line.size() < 10'000'000) line += "\r\n " + std::string(17, 'x');
  const std::string text = eventText("1", line + "\r\n");
  const TimeLimit limit;
  EXPECT_EQ(read(text)->title()->size() % 17, 0U);
}

TEST(EventFileReading, ReadsTenMegabytesOfLinesWithinASecond) {
  std::string lines;
  while (lines.size() < 10'000'000) lines += "X-A;B=\"c:d\":e\r\n";
  const std::string text = eventText("1", lines);
  const TimeLimit limit;
  EXPECT_EQ(read(text)->uid(), "1");
}

TEST(EventFileReading, ReadsComponentsNestedAHundredThousandDeepWithinASecond) {
  std::string begins;
  std::string ends;
  for (int i = 0; i < 100'000; ++i) {
    begins += "BEGIN:X\r\n";
    ends += "END:X\r\n";
  }
  const std::string closed =
      eventText("1", begins + "SUMMARY:deep\r\n" + ends + "SUMMARY:mine\r\n");
  const std::string open = "BEGIN:VCALENDAR\r\n" + begins;
  const TimeLimit limit;
  EXPECT_EQ(read(closed)->title(), "mine");
  EXPECT_FALSE(EventFile::events(open, berlin()));
}

TEST(EventFileReading, ReadsParametersOfTenMegabytesWithinASecond) {
  std::string parameters;
  while (parameters.size() < 10'000'000) parameters += ";A=\"b\"";
  const std::string text = eventText("1", "SUMMARY" + parameters + ":x\r\n");
  const TimeLimit limit;
  EXPECT_EQ(read(text)->title(), "x");
}

}  // namespace
}  // namespace annivo
