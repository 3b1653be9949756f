// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "base/Unicode.h"
#include "codecs/icalendar/AlarmComponent.h"

namespace annivo {
namespace {

std::optional<CalAlarm> alarmFrom(const std::string& text) {
  AlarmReader reader;
  ContentLines lines(text);
  ContentLine line;
  while (lines.next(line)) reader.read(line);
  return std::move(reader).alarm();
}

std::string written(const CalAlarm& alarm) {
  std::string text;
  appendAlarm(text, alarm, "\r\n");
  return text;
}

struct Sample {
  const char* name;
  const char* lines;
  std::optional<CalAlarm> alarm;
};

class AlarmsOfOtherPrograms : public testing::TestWithParam<Sample> {};

TEST_P(AlarmsOfOtherPrograms, AreRead) { EXPECT_EQ(alarmFrom(GetParam().lines), GetParam().alarm); }

INSTANTIATE_TEST_SUITE_P(
    AlarmReader, AlarmsOfOtherPrograms,
    testing::Values(
        Sample{
            "message",
            "X-WR-ALARMUID:A\r\nTRIGGER:-PT15M\r\nDESCRIPTION:Event reminder\r\nACTION:DISPLAY\r\n",
            CalAlarm{.relativeTrigger = -900}},
        Sample{"sound", "TRIGGER:-PT20M\r\nATTACH;VALUE=URI:Basso\r\nACTION:AUDIO\r\n",
               CalAlarm{.relativeTrigger = -1200, .sound = "Basso"}},
        Sample{"sound_with_space", "TRIGGER:PT0S\nATTACH;VALUE=URI:My%20tone\nACTION:AUDIO\n",
               CalAlarm{.relativeTrigger = 0, .sound = "My tone"}},
        Sample{"sound_without_name", "TRIGGER:PT9H\nACTION:AUDIO\n",
               CalAlarm{.relativeTrigger = 32400, .sound = ""}},
        Sample{"email",
               "ACTION:EMAIL\nATTENDEE;CN=x:MAILTO:a@b.org\nATTENDEE:mailto:c@d\nTRIGGER:-P1D\n"
               "SUMMARY:s\nDESCRIPTION:d\nATTACH:file:///attached\n",
               CalAlarm{.relativeTrigger = -86400, .emailAddress = "a@b.org"}},
        Sample{"open_file",
               "ACTION:PROCEDURE\nATTACH;VALUE=URI:file://localhost/a%20b\nTRIGGER:-PT15H\n",
               CalAlarm{.relativeTrigger = -54000, .url = "file://localhost/a%20b"}},
        Sample{"open_file_of_the_first_generation",
               "ACTION:PROCEDURE\nATTACH:file:///bin/true\nTRIGGER;VALUE=DURATION:-P1D\n",
               CalAlarm{.relativeTrigger = -86400, .url = "file:///bin/true"}},
        Sample{"related_to_start", "TRIGGER;RELATED=START:-PT1H\nACTION:DISPLAY\n",
               CalAlarm{.relativeTrigger = -3600}},
        Sample{"related_to_end", "TRIGGER;RELATED=END:-PT1H\nACTION:DISPLAY\n", CalAlarm{}},
        Sample{"absolute", "TRIGGER;VALUE=DATE-TIME:20210302T152000Z\nACTION:DISPLAY\n",
               CalAlarm{}},
        Sample{"lower_case", "trigger:-pt1h\naction:audio\nattach:Glass\n",
               CalAlarm{.relativeTrigger = -3600, .sound = "Glass"}},
        Sample{"default_alarm_of_a_program",
               "X-APPLE-DEFAULT-ALARM:TRUE\nTRIGGER:-PT15H\nATTACH;VALUE=URI:Basso\nACTION:AUDIO\n",
               CalAlarm{.relativeTrigger = -54000, .sound = "Basso"}},
        Sample{"marker_of_no_alarm",
               "ACTION:NONE\nTRIGGER;VALUE=DATE-TIME:19760401T005545Z\nX-APPLE-LOCAL-DEFAULT-ALARM:"
               "TRUE\n",
               std::nullopt},
        Sample{"unknown_action", "ACTION:X-BLINK\nTRIGGER:-PT1M\n",
               CalAlarm{.relativeTrigger = -60}},
        Sample{"nothing_at_all", "", CalAlarm{}}),
    [](const auto& sample) { return sample.param.name; });

TEST(AppendAlarm, WritesEachKindInItsForm) {
  const auto body = [](const CalAlarm& alarm) {
    std::string text = written(alarm);
    for (const std::string name : {"X-WR-ALARMUID:", "UID:"}) {
      const std::size_t start = text.find(name);
      EXPECT_NE(start, text.npos);
      text.erase(start, name.size() + 36 + 2);
    }
    return text;
  };
  EXPECT_EQ(body({.relativeTrigger = -900}),
            "BEGIN:VALARM\r\nTRIGGER:-PT15M\r\nDESCRIPTION:Event reminder\r\nACTION:DISPLAY\r\n"
            "END:VALARM\r\n");
  EXPECT_EQ(body({.relativeTrigger = -900, .sound = "Basso"}),
            "BEGIN:VALARM\r\nTRIGGER:-PT15M\r\nATTACH;VALUE=URI:Basso\r\nACTION:AUDIO\r\n"
            "END:VALARM\r\n");
  EXPECT_EQ(body({.relativeTrigger = 0, .emailAddress = "a b@c"}),
            "BEGIN:VALARM\r\nTRIGGER:PT0S\r\nATTENDEE:mailto:a%20b@c\r\nSUMMARY:Event reminder\r\n"
            "DESCRIPTION:Event reminder\r\nACTION:EMAIL\r\nEND:VALARM\r\n");
  EXPECT_EQ(body({.relativeTrigger = 28800, .url = "file:///tmp/a%20b"}),
            "BEGIN:VALARM\r\nTRIGGER:PT8H\r\nATTACH;VALUE=URI:file:///tmp/a%20b\r\n"
            "DESCRIPTION:Event reminder\r\nACTION:PROCEDURE\r\nEND:VALARM\r\n");
}

TEST(AppendAlarm, GivesBothIdentifiersTheSameFreshValue) {
  const std::string text = written({.relativeTrigger = 0});
  const std::string first = text.substr(text.find("X-WR-ALARMUID:") + 14, 36);
  EXPECT_NE(text.find("\r\nUID:" + first + "\r\n"), text.npos);
  EXPECT_EQ(written({.relativeTrigger = 0}).find(first), text.npos);
}

TEST(AppendAlarm, EveryTriggerReadsBackEqual) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double trigger : {0.0, -0.5, 1.0 / 3, 899.9999999, -2147483648.0, 2147483647.0, 1e18,
                               -1e300, infinity, -infinity, 5e-324}) {
    EXPECT_EQ(alarmFrom(written({.relativeTrigger = trigger})),
              CalAlarm{.relativeTrigger = trigger});
  }
  EXPECT_EQ(alarmFrom(written({})), CalAlarm{});
  const auto none = alarmFrom(written({.relativeTrigger = std::nan("")}));
  EXPECT_TRUE(std::isnan(none.value().relativeTrigger.value()));
}

TEST(AppendAlarm, EveryAlarmReadsBackEqualAndAddsNoLine) {
  constexpr unsigned seed = 45;
  std::mt19937 random(seed);
  const auto text = [&]() -> std::optional<std::string> {
    if (random() % 3 == 0) return std::nullopt;
    std::string bytes;
    constexpr std::string_view common = "ab%2F@:/;,\"\\\r\n \xC3\xA4\xE2\x80\xA8";
    for (std::size_t i = random() % 60; i > 0; --i) {
      bytes += random() % 3 == 0 ? static_cast<char>(random()) : common[random() % common.size()];
    }
    return bytes;
  };
  for (int round = 0; round < 5000; ++round) {
    CalAlarm alarm;
    if (random() % 8 != 0) alarm.relativeTrigger = static_cast<std::int32_t>(random());
    alarm.emailAddress = text();
    alarm.url = text();
    alarm.sound = text();
    const std::string lines = written(alarm);
    EXPECT_EQ(alarmFrom(lines), alarm) << "seed " << seed << ", round " << round;
    EXPECT_TRUE(isValidUTF8(lines));
    ContentLines scanner(lines);
    ContentLine line;
    int begins = 0;
    int unnamed = 0;
    while (scanner.next(line)) {
      if (line.named("BEGIN")) ++begins;
      if (line.name().empty()) ++unnamed;
    }
    EXPECT_EQ(begins, 1);
    EXPECT_EQ(unnamed, 0);
  }
}

TEST(AlarmReader, BelievesAChangedValueMoreThanTheExactOneBesideIt) {
  EXPECT_EQ(alarmFrom("TRIGGER;X-ANNIVO-EXACT=-900.5:-PT1H\nACTION:DISPLAY\n"),
            CalAlarm{.relativeTrigger = -3600});
  EXPECT_EQ(alarmFrom("TRIGGER:PT0S\nATTACH;X-ANNIVO-EXACT=a_20b:file:///c\nACTION:PROCEDURE\n"),
            (CalAlarm{.relativeTrigger = 0, .url = "file:///c"}));
}

TEST(CalAlarm, IsEqualByTriggerAddressURLAndSound) {
  const CalAlarm base{.relativeTrigger = 1, .emailAddress = "a", .url = "b", .sound = "c"};
  CalAlarm other = base;
  EXPECT_EQ(other, base);
  other.relativeTrigger.reset();
  EXPECT_NE(other, base);
  other = base;
  other.emailAddress = "";
  EXPECT_NE(other, base);
  other = base;
  other.url.reset();
  EXPECT_NE(other, base);
  other = base;
  other.sound = "C";
  EXPECT_NE(other, base);
}

TEST(FileURLs, EncodeEveryPath) {
  EXPECT_EQ(fileURLWithPath("/tmp/a b"), "file:///tmp/a%20b");
  EXPECT_EQ(fileURLWithPath("/\xC3\xA4?#%;\n"), "file:///%C3%A4%3F%23%25%3B%0A");
  EXPECT_EQ(fileURLWithPath("relative"), "file:///relative");
  EXPECT_EQ(fileURLWithPath(""), "file:///");
  EXPECT_TRUE(isFileURL(fileURLWithPath("/x")));
  EXPECT_TRUE(isFileURL("FILE://localhost/x"));
  EXPECT_FALSE(isFileURL("http://file:1/"));
  EXPECT_FALSE(isFileURL("file"));
}

TEST(URLWithString, TakesOnlyWhatIsAURL) {
  for (const char* text : {"addressbook://6B1D:ABPerson", "http://a/b?c#d", "relative", "%41"}) {
    EXPECT_EQ(urlWithString(text), text);
  }
  for (const std::string& text :
       {std::string(), std::string("a b"), std::string("a\nb"), std::string("a\"b"),
        std::string("%4"), std::string("%zz"), std::string("\xC3\xA4"), std::string("a#b#c"),
        std::string("a\0b", 3), std::string("<>")}) {
    EXPECT_EQ(urlWithString(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace annivo
