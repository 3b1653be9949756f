# SPDX-License-Identifier: MIT
"""Every written file parses in python3-icalendar with the values meant.

The titles hold no backslash before a backslash, an "n", a comma or a semicolon: this reader undoes
escapes twice, and so takes an escaped backslash before an n for a line break.
"""
import datetime
import glob
import urllib.parse

import icalendar

import interop


class IcalendarTest(interop.HomeTest):
    def check_alarm(self, component, alarm):
        self.assertEqual(component["TRIGGER"].dt, datetime.timedelta(seconds=alarm["trigger"]))
        self.assertEqual(component["UID"], component["X-WR-ALARMUID"])
        action = component["ACTION"]
        if alarm["email"] is not None:
            self.assertEqual(action, "EMAIL")
            address = str(component["ATTENDEE"])
            self.assertTrue(address.startswith("mailto:"))
            self.assertEqual(urllib.parse.unquote(address[7:]), alarm["email"])
            self.assertIn("SUMMARY", component)
            self.assertIn("DESCRIPTION", component)
        elif alarm["url"] is not None:
            self.assertEqual(action, "PROCEDURE")
            self.assertEqual(component["ATTACH"], alarm["url"])
        elif alarm["sound"] is not None:
            self.assertEqual(action, "AUDIO")
            self.assertEqual(component["ATTACH"], alarm["sound"])
        else:
            self.assertEqual(action, "DISPLAY")
            self.assertIn("DESCRIPTION", component)

    def check_event(self, text, meant):
        calendar = icalendar.Calendar.from_ical(text)
        self.assertEqual(calendar["VERSION"], "2.0")
        self.assertEqual(calendar["CALSCALE"], "GREGORIAN")
        self.assertEqual(calendar.errors, [])
        (event,) = calendar.subcomponents
        self.assertEqual(event.name, "VEVENT")
        self.assertEqual(event.errors, [])
        self.assertEqual(event["UID"], meant["uid"])
        self.assertEqual(event["SUMMARY"], meant["title"])
        self.assertEqual(event["DTSTART"].dt.strftime("%Y%m%d"), meant["start"])
        self.assertEqual(event["DTEND"].dt.strftime("%Y%m%d"), meant["after"])
        self.assertNotIsInstance(event["DTSTART"].dt, datetime.datetime)
        self.assertEqual(event["URL"], meant["url"])
        self.assertEqual(event["TRANSP"], "TRANSPARENT")
        self.assertEqual(event["X-ANNIVO-IDENTITY"], meant["identity"])
        for stamp in ("CREATED", "DTSTAMP", "LAST-MODIFIED"):
            age = datetime.datetime.now(datetime.timezone.utc) - event[stamp].dt
            self.assertLess(abs(age), datetime.timedelta(minutes=10))
        self.assertEqual(len(event.subcomponents), len(meant["alarms"]))
        for component, alarm in zip(event.subcomponents, meant["alarms"]):
            self.assertEqual(component.name, "VALARM")
            self.check_alarm(component, alarm)
        return event

    def test_every_file_has_the_values_meant(self):
        events = self.tool("make", "400", "20261120")
        self.assertEqual(len(events), 400)
        self.assertEqual(len(glob.glob(self.calendar_folder() + "/Events/*")), 400)
        for uid, meant in events.items():
            with self.subTest(uid=uid), open(self.event_path(uid), "rb") as file:
                self.assertEqual(self.check_event(file.read(), meant)["SEQUENCE"], 0)

    def test_a_changed_file_has_the_new_values(self):
        for uid, meant in self.tool("make", "20", "7").items():
            title = "New; title, \\ with \n and \U0001F382 " + uid
            self.tool("retitle", uid, title)
            with self.subTest(uid=uid), open(self.event_path(uid), "rb") as file:
                event = self.check_event(file.read(), dict(meant, title=title))
                self.assertEqual(event["SEQUENCE"], 1)

    def test_a_file_that_it_wrote_is_read_alike(self):
        before = self.tool("make", "200", "3")
        for uid in before:
            with open(self.event_path(uid), "rb") as file:
                calendar = icalendar.Calendar.from_ical(file.read())
            with open(self.event_path(uid), "wb") as file:
                file.write(calendar.to_ical())
        self.assertEqual(self.tool("read"), before)


if __name__ == "__main__":
    interop.main()
