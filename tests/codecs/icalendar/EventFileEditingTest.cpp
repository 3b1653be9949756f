// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "codecs/icalendar/EventFile.h"
#include "codecs/icalendar/EventUID.h"
#include "tests/platform/calendarstore/CalendarHome.h"

namespace annivo {
namespace {

const NSTimeZone kZone("Europe/Berlin");
const Date kNow = FixedClock().moment;
constexpr const char* kStamp = "20261120T184600Z";

/// The text after `change` was made to its first event and saved.
template <typename Change>
std::string edited(const std::string& text, Change change) {
  const auto events = EventFile::events(text, kZone);
  EXPECT_TRUE(events && !events->empty()) << text;
  change(*events->front());
  const auto result = EventFile::edited(text, *events->front(), kNow, kZone);
  EXPECT_TRUE(result);
  return result.value_or("");
}

std::string retitled(const std::string& text, const std::string& title = "New") {
  return edited(text, [&](CalEvent& event) { event.setTitle(title); });
}

TEST(EventFileEditing, ReplacesOnlyTheLinesConcerned) {
  const std::string text =
      "BEGIN:VCALENDAR\r\nPRODID:-//Else//EN\r\nX-WR-CALNAME:a\\,b\r\nBEGIN:VEVENT\r\n"
      "DTSTAMP:20200101T000000Z\r\nX-UNKNOWN;P=\"q:r\":raw \\x ;, \r\n \tfolded\n "
      "oddly\r\nUID:1\r\n"
      "summary;LANGUAGE=de:Old\r\nDESCRIPTION:the user's\r\n  own words\r\nno colon here\r\n\r\n"
      "SEQUENCE:4\r\nX-EMPTY:\r\nLAST-MODIFIED:20200101T000000Z\r\nCREATED:20190101T000000Z\r\n"
      "BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nSUMMARY:Old\r\nACTION:DISPLAY\r\nEND:VALARM\r\n"
      "BEGIN:X-MINE\r\nSUMMARY:Old\r\nEND:X-MINE\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n\r\n";
  const std::string expected =
      "BEGIN:VCALENDAR\r\nPRODID:-//Else//EN\r\nX-WR-CALNAME:a\\,b\r\nBEGIN:VEVENT\r\n"
      "DTSTAMP:20261120T184600Z\r\nX-UNKNOWN;P=\"q:r\":raw \\x ;, \r\n \tfolded\n "
      "oddly\r\nUID:1\r\n"
      "SUMMARY:New\r\nDESCRIPTION:the user's\r\n  own words\r\nno colon here\r\n\r\n"
      "SEQUENCE:5\r\nX-EMPTY:\r\nLAST-MODIFIED:20261120T184600Z\r\nCREATED:20190101T000000Z\r\n"
      "BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nSUMMARY:Old\r\nACTION:DISPLAY\r\nEND:VALARM\r\n"
      "BEGIN:X-MINE\r\nSUMMARY:Old\r\nEND:X-MINE\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n\r\n";
  EXPECT_EQ(retitled(text), expected);
}

TEST(EventFileEditing, WritesNewLinesWithTheFilesLineEnd) {
  EXPECT_EQ(retitled("BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nEND:VEVENT\nEND:VCALENDAR"),
            std::string("BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nSUMMARY:New\nDTSTAMP:") + kStamp +
                "\nLAST-MODIFIED:" + kStamp + "\nSEQUENCE:1\nEND:VEVENT\nEND:VCALENDAR");
}

TEST(EventFileEditing, KeepsAByteOrderMark) {
  const std::string text = "\xEF\xBB\xBF" + eventText("1", "SUMMARY:Old\r\n");
  EXPECT_TRUE(
      retitled(text).starts_with("\xEF\xBB\xBF"
                                 "BEGIN:VCALENDAR\r\n"));
}

TEST(EventFileEditing, WritesMissingPropertiesBeforeTheFirstInnerComponent) {
  const std::string alarm = "BEGIN:VALARM\r\nTRIGGER:PT0S\r\nACTION:DISPLAY\r\nEND:VALARM\r\n";
  const std::string text = retitled(eventText("1", alarm));
  EXPECT_NE(text.find(std::string("SEQUENCE:1\r\n") + alarm), text.npos) << text;
}

TEST(EventFileEditing, RaisesTheSequenceWhateverItIs) {
  for (const auto& [before, after] :
       std::vector<std::pair<std::string, std::string>>{{"0", "1"},
                                                        {"41", "42"},
                                                        {"-3", "1"},
                                                        {"", "1"},
                                                        {"x", "1"},
                                                        {"2147483647", "2147483647"},
                                                        {"99999999999999999999", "1"}}) {
    const std::string text = retitled(eventText("1", "SEQUENCE:" + before + "\r\n"));
    EXPECT_NE(text.find("\r\nSEQUENCE:" + after + "\r\n"), text.npos) << before << "\n" << text;
  }
}

TEST(EventFileEditing, ATitleReadsBackWhateverItHolds) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  for (const std::string& title :
       {std::string(), std::string("a;b,c\\d\ne"), std::string("x\r\nEND:VEVENT\r\n"), bytes,
        std::string(300, 'w'), std::string("\xF0\x9F\x8E\x82\xE2\x80\xA8:\t \x85"),
        std::string("\0", 1), std::string(" both "), std::string("\xEF\xBB\xBF")}) {
    const std::string text = retitled(eventText("1", "SUMMARY:Old\r\nX-A:1\r\n"), title);
    const auto events = EventFile::events(text, kZone);
    ASSERT_TRUE(events);
    ASSERT_EQ(events->size(), 1U);
    EXPECT_EQ(events->front()->title(), title);
    EXPECT_NE(text.find("\r\nX-A:1\r\n"), text.npos);
  }
}

TEST(EventFileEditing, EditsTheMasterAndNoneOfItsNeighbours) {
  const auto event = [](const std::string& uid, const std::string& lines) {
    return "BEGIN:VEVENT\r\nUID:" + uid + "\r\n" + lines + "END:VEVENT\r\n";
  };
  const std::string before = "BEGIN:VCALENDAR\r\n" + event("2", "SUMMARY:Other\r\n") +
                             event("1", "SUMMARY:Exception\r\nRECURRENCE-ID:20260101\r\n");
  const std::string after =
      event("1", "SUMMARY:Second of the name\r\n") +
      "BEGIN:VTODO\r\nUID:1\r\nSUMMARY:To do\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
  const std::string text = before + event("1", "SUMMARY:Master\r\n") + after;
  const auto events = EventFile::events(text, kZone);
  events->at(1)->setTitle("New");
  const auto result = EventFile::edited(text, *events->at(1), kNow, kZone);
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->starts_with(before));
  EXPECT_TRUE(result->ends_with(after));
  EXPECT_NE(result->find("UID:1\r\nSUMMARY:New\r\n"), result->npos);
}

TEST(EventFileEditing, ChangesDatesAndTheirOtherForms) {
  const std::string text = edited(
      eventText("1",
                "DURATION:PT1H\r\nDTSTART;TZID=Europe/Rome:20250101T100000\r\nURL:http://a\r\n"),
      [](CalEvent& event) {
        event.setStartDate(midnight(kZone, 2026, 2, 28));
        event.setEndDate(midnight(kZone, 2026, 2, 28));
        event.setIsAllDay(true);
        event.setUrl(std::nullopt);
      });
  EXPECT_NE(text.find("DTSTART;VALUE=DATE:20260228\r\nDTEND;VALUE=DATE:20260301\r\n"), text.npos);
  EXPECT_EQ(text.find("DURATION"), text.npos);
  EXPECT_EQ(text.find("URL"), text.npos);
}

const char* const kAlarms =
    "BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nACTION:DISPLAY\r\nX-KEEP:1\r\nEND:VALARM\r\n"
    "BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nACTION:DISPLAY\r\nX-KEEP:2\r\nEND:VALARM\r\n"
    "BEGIN:VALARM\r\nACTION:NONE\r\nTRIGGER;VALUE=DATE-TIME:19760401T005545Z\r\nEND:VALARM\r\n"
    "BEGIN:VALARM\r\nTRIGGER:-PT9M\r\nACTION:AUDIO\r\nBEGIN:X-IN\r\nEND:X-IN\r\nEND:VALARM\r\n";
const CalAlarm kFive{.relativeTrigger = -300};
const CalAlarm kNew{.relativeTrigger = 60, .emailAddress = "a@b"};

std::vector<CalAlarm> alarmsOf(const std::string& text) {
  return EventFile::events(text, kZone).value().front()->alarms();
}

TEST(EventFileEditing, SettingAlarmsReplacesThemAllButNoMarker) {
  const std::string text = edited(eventText("1", kAlarms), [](CalEvent& event) {
    event.setAlarms({kNew, kNew});
  });
  EXPECT_EQ(alarmsOf(text), (std::vector{kNew, kNew}));
  EXPECT_EQ(text.find("X-KEEP"), text.npos);
  EXPECT_EQ(text.find("X-IN"), text.npos);
  EXPECT_NE(text.find("ACTION:NONE"), text.npos);
}

TEST(EventFileEditing, SettingNoAlarmsTakesThemAllAway) {
  const std::string text =
      edited(eventText("1", kAlarms), [](CalEvent& event) { event.setAlarms({}); });
  EXPECT_TRUE(alarmsOf(text).empty());
}

TEST(EventFileEditing, AddedAlarmsComeAfterThoseThatStay) {
  const std::string text =
      edited(eventText("1", kAlarms), [](CalEvent& event) { event.addAlarms({kNew}); });
  EXPECT_EQ(alarmsOf(text).size(), 4U);
  EXPECT_EQ(alarmsOf(text).back(), kNew);
  EXPECT_NE(text.find(kAlarms), text.npos) << "the others stay byte for byte";
}

TEST(EventFileEditing, RemovingAnAlarmTakesTheFirstEqualOne) {
  const std::string text =
      edited(eventText("1", kAlarms), [](CalEvent& event) { event.removeAlarm(kFive); });
  EXPECT_EQ(text.find("X-KEEP:1"), text.npos);
  EXPECT_NE(text.find("X-KEEP:2"), text.npos);
  EXPECT_EQ(alarmsOf(text).size(), 2U);
}

TEST(EventFileEditing, AlarmsMayBeAddedAndRemovedBeforeASave) {
  const std::string text = edited(eventText("1", kAlarms), [](CalEvent& event) {
    event.addAlarms({kNew, kFive});
    event.removeAlarm(kNew);
    event.removeAlarm(kFive);
    event.removeAlarm(kFive);
    event.removeAlarm({.relativeTrigger = 12345});
    EXPECT_EQ(event.alarms(), (std::vector{CalAlarm{.relativeTrigger = -540, .sound = ""}, kFive}));
  });
  EXPECT_EQ(alarmsOf(text), (std::vector{CalAlarm{.relativeTrigger = -540, .sound = ""}, kFive}));
  EXPECT_EQ(text.find("X-KEEP"), text.npos);
}

TEST(EventFileEditing, RefusesATextThatDoesNotHoldTheEvent) {
  const auto event = EventFile::events(eventText("1", ""), kZone)->front();
  event->setTitle("New");
  for (const std::string& text : {eventText("2", ""), eventText("1", "RECURRENCE-ID:20260101\r\n"),
                                  std::string(), eventText("1", "BEGIN:X\r\n")}) {
    EXPECT_FALSE(EventFile::edited(text, *event, kNow, kZone)) << text;
    EXPECT_FALSE(EventFile::without(text, "1")) << text;
  }
  EXPECT_FALSE(
      EventFile::without("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n", ""));
}

TEST(EventFileWithout, IsNothingWhenOnlyTimeZonesStay) {
  EXPECT_EQ(EventFile::without(eventText("1", "SUMMARY:a\r\n"), "1"), "");
  EXPECT_EQ(
      EventFile::without("BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nBEGIN:STANDARD\r\nEND:STANDARD\r\n"
                         "END:VTIMEZONE\r\nBEGIN:VEVENT\r\nUID:1\r\nEND:VEVENT\r\n"
                         "BEGIN:VEVENT\r\nUID:1\r\nRECURRENCE-ID:20260101\r\nEND:VEVENT\r\n"
                         "END:VCALENDAR\r\n",
                         "1"),
      "");
}

TEST(EventFileWithout, CutsTheEventAndItsExceptionsOut) {
  const std::string head = "BEGIN:VCALENDAR\r\nX-A:1\r\n";
  const std::string other = "BEGIN:VEVENT\r\nUID:2\r\nSUMMARY:o\r\n  dd\nEND:VEVENT\r\n";
  const std::string todo = "BEGIN:VTODO\nUID:1\nEND:VTODO\n";
  const std::string end = "END:VCALENDAR";
  const std::string master =
      "BEGIN:VEVENT\r\nUID:1\r\nBEGIN:VALARM\r\nUID:2\r\nEND:VALARM\r\nEND:VEVENT\r\n";
  const std::string exception = "BEGIN:VEVENT\r\nUID:1\r\nRECURRENCE-ID:20260101\r\nEND:VEVENT\r\n";
  EXPECT_EQ(EventFile::without(head + exception + other + master + todo + end, "1"),
            head + other + todo + end);
  EXPECT_EQ(EventFile::without(head + master + todo + end, "1"), head + todo + end);
}

TEST(EventFileIsBrokenOff, KnowsWhatIsOnlyTheBeginningOfAFile) {
  const auto event = CalEvent::event();
  event->setTitle("A");
  event->setStartDate(midnight(kZone, 2026, 2, 28));
  event->addAlarms({kNew});
  event->setLedgerIdentity({.myUID = "a", .calendarUID = "b", .date = kNow});
  const std::string ours = EventFile::newText(*event, kNow, kZone);
  for (std::size_t length = 0; length < ours.size() - 2; ++length) {
    EXPECT_TRUE(EventFile::isBrokenOff(ours.substr(0, length))) << length;
    EXPECT_TRUE(EventFile::isBrokenOff(ours.substr(0, length) + std::string(100, '\0'))) << length;
  }
  EXPECT_FALSE(EventFile::isBrokenOff(ours));
  EXPECT_FALSE(EventFile::isBrokenOff(ours.substr(0, ours.size() - 2)));
  EXPECT_TRUE(EventFile::isBrokenOff(ours + '\0'));
  EXPECT_FALSE(EventFile::isBrokenOff(eventText("1", "SUMMARY:a\r\n")));
  EXPECT_FALSE(EventFile::isBrokenOff("hello"));
}

TEST(EventFileIsOurs, GoesByIdentityUIDAndHeader) {
  const std::string identity = "X-ANNIVO-IDENTITY:0/a/b/1\r\n";
  const std::string drawn = CalEvent::event()->uid();
  const struct {
    const char* name;
    std::string text;
    bool isOurs;
  } cases[] = {
      {"the identity names the event", eventText("1", identity), true},
      {"the identity names another", eventText("2", identity), false},
      {"the identity is all that is left", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\n" + identity, true},
      {"the identity is broken off", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nX-ANNIVO-IDENTITY:0/a/b/1",
       false},
      {"the UID is one of ours", eventText(drawn, ""), true},
      {"the UID is broken off", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:" + drawn, false},
      {"a second event is theirs",
       "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:1\r\n" + identity +
           "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:2\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
       false},
      {"the header is ours",
       "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Annivo//Annivo Agent 2.0//", true},
      {"the header is broken off", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:", false},
      {"their event", eventText("1", ""), false},
      {"empty", "", false},
  };
  for (const auto& [name, text, isOurs] : cases) {
    EXPECT_EQ(EventFile::isOurs(text), isOurs) << name;
    EXPECT_EQ(EventFile::isOurs(text + std::string(9, '\0')), isOurs) << name;
  }
}

TEST(EventUID, IsKnownForOursAndNoOtherIs) {
  const std::string uid = freshEventUID();
  EXPECT_NE(uid, freshEventUID());
  EXPECT_TRUE(isOurEventUID(uid));
  for (std::size_t i = 0; i < uid.size(); ++i) {
    std::string other = uid;
    other[i] = other[i] == '7' ? '8' : '7';
    EXPECT_FALSE(isOurEventUID(other)) << other;
  }
  EXPECT_FALSE(isOurEventUID("6B1D7C52-2A0E-4C58-9F6D-1D3A5E0B7C11"));
  EXPECT_FALSE(isOurEventUID(""));
  // What is on disk already must still be known.
  EXPECT_TRUE(isOurEventUID("6B1D7C52-2A0E-4C58-9F6D-0E2A4DD2D4A1"));
}

}  // namespace
}  // namespace annivo
