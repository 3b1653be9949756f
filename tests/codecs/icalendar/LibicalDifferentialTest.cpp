// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <libical/ical.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "codecs/icalendar/ContentText.h"
#include "codecs/icalendar/ContentValues.h"
#include "codecs/icalendar/EventFile.h"
#include "tests/platform/calendarstore/CalendarHome.h"

namespace annivo {
namespace {

// libical as an independent reader of all that we write and as a writer of what we read.

struct Free {
  void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using Component = std::unique_ptr<icalcomponent, Free>;

const NSTimeZone kZone("Europe/Berlin");

class RandomEvents {
 public:
  explicit RandomEvents(unsigned seed) : random_(seed) {}

  std::string text(std::size_t longest) {
    static const std::vector<std::string> pieces = {"a",
                                                    "Z",
                                                    " ",
                                                    "9",
                                                    ",",
                                                    ";",
                                                    ":",
                                                    "\\",
                                                    "\"",
                                                    "'",
                                                    "\n",
                                                    "\r\n",
                                                    "\t",
                                                    "%41",
                                                    "=",
                                                    "END:VEVENT",
                                                    "\xC3\xA4",
                                                    "\xE2\x82\xAC",
                                                    "\xF0\x9F\x8E\x82",
                                                    "\xE2\x80\xA8",
                                                    "\x01",
                                                    "\xFF",
                                                    "\\n",
                                                    "^n"};
    std::string out;
    for (std::size_t i = random_() % (longest + 1); i > 0; --i)
      out += pieces[random_() % pieces.size()];
    return out;
  }
  CalAlarm alarm() {
    CalAlarm alarm{.relativeTrigger = static_cast<double>(random_() % 4000000) - 3500000};
    switch (random_() % 4) {
      case 0:
        alarm.emailAddress = text(20);
        break;
      case 1:
        alarm.url = fileURLWithPath("/" + text(30));
        break;
      case 2:
        alarm.sound = "S" + text(10);
        break;
      default:
        break;
    }
    return alarm;
  }
  std::shared_ptr<CalEvent> event() {
    auto event = CalEvent::event();
    event->setTitle(text(60));
    const int year = 1900 + static_cast<int>(random_() % 300);
    const Date day = midnight(kZone, year, 1, 1 + static_cast<int>(random_() % 366));
    event->setStartDate(day + std::chrono::seconds{random_() % 80000});
    event->setEndDate(*event->startDate());
    event->setIsAllDay(true);
    event->setUrl(urlWithString("addressbook://" + percentEncoded(text(20), ":")));
    event->setLedgerIdentity({.myUID = text(30), .calendarUID = text(30), .date = day});
    std::vector<CalAlarm> alarms;
    for (std::size_t i = random_() % 4; i > 0; --i) alarms.push_back(alarm());
    event->addAlarms(alarms);
    return event;
  }
  std::mt19937& engine() { return random_; }

 private:
  std::mt19937 random_;
};

icalproperty* property(icalcomponent* component, icalproperty_kind kind) {
  EXPECT_EQ(icalcomponent_count_properties(component, kind), 1)
      << icalproperty_kind_to_string(kind);
  return icalcomponent_get_first_property(component, kind);
}

void expectAlarm(icalcomponent* component, const CalAlarm& alarm) {
  icalproperty* trigger = property(component, ICAL_TRIGGER_PROPERTY);
  ASSERT_TRUE(trigger);
  EXPECT_EQ(icaldurationtype_as_int(icalproperty_get_trigger(trigger).duration),
            *alarm.relativeTrigger);
  icalproperty* action = property(component, ICAL_ACTION_PROPERTY);
  ASSERT_TRUE(action);
  if (alarm.emailAddress) {
    EXPECT_EQ(icalproperty_get_action(action), ICAL_ACTION_EMAIL);
    const std::string attendee =
        icalproperty_get_attendee(property(component, ICAL_ATTENDEE_PROPERTY));
    ASSERT_TRUE(attendee.starts_with("mailto:"));
    EXPECT_EQ(percentDecoded(attendee.substr(7)), *alarm.emailAddress);
  } else if (alarm.url || alarm.sound) {
    EXPECT_EQ(icalproperty_get_action(action),
              alarm.url ? ICAL_ACTION_PROCEDURE : ICAL_ACTION_AUDIO);
    icalattach* attach = icalproperty_get_attach(property(component, ICAL_ATTACH_PROPERTY));
    ASSERT_TRUE(icalattach_get_is_url(attach));
    const std::string url = icalattach_get_url(attach);
    if (alarm.url) {
      EXPECT_EQ(url, *alarm.url);
    } else {
      EXPECT_EQ(percentDecoded(url), *alarm.sound);
    }
  } else {
    EXPECT_EQ(icalproperty_get_action(action), ICAL_ACTION_DISPLAY);
    EXPECT_TRUE(property(component, ICAL_DESCRIPTION_PROPERTY));
  }
}

void expectDay(struct icaltimetype time, Date date, int later) {
  EXPECT_TRUE(time.is_date);
  const auto expected = dayText(dayOf(date, kZone) + std::chrono::days{later});
  char text[16];
  std::snprintf(text, sizeof text, "%04d%02d%02d", time.year, time.month, time.day);
  EXPECT_EQ(text, expected);
}

/// libical strips the white space at both ends of a value.
std::string withoutSpaceAtTheEnds(std::string text) {
  text.erase(text.find_last_not_of(" \t") + 1);
  text.erase(0, text.find_first_not_of(" \t"));
  return text;
}

void expectReadBySomebodyElse(const std::string& text, const CalEvent& event) {
  const Component calendar(icalparser_parse_string(text.c_str()));
  ASSERT_TRUE(calendar);
  ASSERT_EQ(icalcomponent_isa(calendar.get()), ICAL_VCALENDAR_COMPONENT);
  // A property with an empty value, which a title may be, is dropped by libical with a complaint.
  const std::string title = withoutSpaceAtTheEnds(unescapedText(escapedText(*event.title())));
  EXPECT_EQ(icalcomponent_count_errors(calendar.get()), title.empty() ? 1 : 0);
  EXPECT_EQ(icalcomponent_count_components(calendar.get(), ICAL_ANY_COMPONENT), 1);
  icalcomponent* vevent = icalcomponent_get_first_component(calendar.get(), ICAL_VEVENT_COMPONENT);
  ASSERT_TRUE(vevent);
  EXPECT_EQ(icalcomponent_get_uid(vevent), event.uid());
  if (!title.empty()) {
    EXPECT_EQ(icalproperty_get_summary(property(vevent, ICAL_SUMMARY_PROPERTY)), title);
  }
  expectDay(icalproperty_get_dtstart(property(vevent, ICAL_DTSTART_PROPERTY)), *event.startDate(),
            0);
  expectDay(icalproperty_get_dtend(property(vevent, ICAL_DTEND_PROPERTY)), *event.endDate(), 1);
  EXPECT_EQ(icalproperty_get_url(property(vevent, ICAL_URL_PROPERTY)), event.url());
  EXPECT_EQ(icalproperty_get_transp(property(vevent, ICAL_TRANSP_PROPERTY)),
            ICAL_TRANSP_TRANSPARENT);
  for (const auto kind : {ICAL_CREATED_PROPERTY, ICAL_DTSTAMP_PROPERTY, ICAL_LASTMODIFIED_PROPERTY,
                          ICAL_SEQUENCE_PROPERTY}) {
    EXPECT_TRUE(property(vevent, kind));
  }
  icalproperty* identity = property(vevent, ICAL_X_PROPERTY);
  ASSERT_TRUE(identity);
  EXPECT_STREQ(icalproperty_get_x_name(identity), "X-ANNIVO-IDENTITY");
  const auto value = identityFromText(icalproperty_get_x(identity));
  ASSERT_TRUE(value);
  EXPECT_EQ(value->identity, event.ledgerIdentity());
  EXPECT_EQ(value->eventUID, event.uid());
  const auto count = static_cast<int>(event.alarms().size());
  ASSERT_EQ(icalcomponent_count_components(vevent, ICAL_VALARM_COMPONENT), count);
  icalcomponent* alarm = icalcomponent_get_first_component(vevent, ICAL_VALARM_COMPONENT);
  for (const CalAlarm& each : event.alarms()) {
    expectAlarm(alarm, each);
    alarm = icalcomponent_get_next_component(vevent, ICAL_VALARM_COMPONENT);
  }
}

TEST(LibicalDifferential, EveryWrittenEventHasTheValuesMeant) {
  constexpr unsigned seed = 20261120;
  RandomEvents events(seed);
  for (int round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
    const auto event = events.event();
    const std::string text = EventFile::newText(*event, FixedClock().now(), kZone);
    expectReadBySomebodyElse(text, *event);
    const auto back = EventFile::events(text, kZone).value().at(0);
    EXPECT_EQ(back->title(), event->title());
    EXPECT_EQ(back->alarms(), event->alarms());
    EXPECT_EQ(back->url(), event->url());
    EXPECT_EQ(back->ledgerIdentity(), event->ledgerIdentity());

    back->setTitle(events.text(60));
    back->setAlarms({events.alarm(), events.alarm()});
    const auto edited = EventFile::edited(text, *back, FixedClock().now(), kZone);
    ASSERT_TRUE(edited);
    expectReadBySomebodyElse(*edited, *back);
  }
}

/// `text` with folds at random places outside of multi-byte characters.
std::string foldedAnew(const std::string& text, std::mt19937& random) {
  std::string unfolded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 3, "\r\n ") == 0) {
      i += 2;
    } else {
      unfolded += text[i];
    }
  }
  std::string out;
  for (std::size_t i = 0; i < unfolded.size(); ++i) {
    const bool inLine =
        i > 0 && unfolded[i] != '\r' && unfolded[i] != '\n' && unfolded[i - 1] != '\n';
    if (inLine && (unfolded[i] & 0xC0) != 0x80 && random() % 9 == 0) out += "\r\n ";
    out += unfolded[i];
  }
  return out;
}

TEST(LibicalDifferential, BothUnfoldAlikeWhereverALineIsFolded) {
  constexpr unsigned seed = 9;
  RandomEvents events(seed);
  for (int round = 0; round < 500 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
    const auto event = events.event();
    const std::string text =
        foldedAnew(EventFile::newText(*event, FixedClock().now(), kZone), events.engine());
    expectReadBySomebodyElse(text, *event);
    const auto back = EventFile::events(text, kZone).value().at(0);
    EXPECT_EQ(back->title(), event->title());
    EXPECT_EQ(back->alarms(), event->alarms());
  }
}

TEST(LibicalDifferential, WhatSomebodyElseWritesIsReadWithTheValuesMeant) {
  constexpr unsigned seed = 77;
  RandomEvents events(seed);
  for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
    const std::string title = plainestText(events.text(60));
    const std::string uid = "U" + std::to_string(round);
    const int trigger = static_cast<int>(events.engine()() % 4000000) - 3500000;
    const struct icaltimetype day = icaltime_from_string("20261120");
    const Component calendar(icalcomponent_vanew(
        ICAL_VCALENDAR_COMPONENT, icalproperty_new_version("2.0"),
        icalcomponent_vanew(
            ICAL_VEVENT_COMPONENT, icalproperty_new_dtend(icaltime_from_string("20261122")),
            icalproperty_new_summary(title.c_str()),
            icalcomponent_vanew(ICAL_VALARM_COMPONENT, icalproperty_new_action(ICAL_ACTION_DISPLAY),
                                icalproperty_new_trigger(icaltriggertype_from_int(trigger)),
                                static_cast<void*>(nullptr)),
            icalproperty_new_dtstart(day), icalproperty_new_uid(uid.c_str()),
            icalproperty_new_url("http://example.org/a;b?c"), static_cast<void*>(nullptr)),
        static_cast<void*>(nullptr)));
    const auto read = EventFile::events(icalcomponent_as_ical_string(calendar.get()), kZone);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), 1U);
    const CalEvent& event = *read->front();
    EXPECT_EQ(event.uid(), uid);
    EXPECT_EQ(event.title(), title);
    EXPECT_EQ(event.startDate(), midnight(kZone, 2026, 11, 20));
    EXPECT_EQ(event.endDate(), midnight(kZone, 2026, 11, 21));
    EXPECT_EQ(event.url(), "http://example.org/a;b?c");
    EXPECT_EQ(event.alarms(),
              std::vector{CalAlarm{.relativeTrigger = static_cast<double>(trigger)}});
  }
}

}  // namespace
}  // namespace annivo
