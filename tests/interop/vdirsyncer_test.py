# SPDX-License-Identifier: MIT
"""vdirsyncer syncs the Events folder with a radicale server, both ways."""
import glob
import os

import icalendar

import caldav
import interop

FOREIGN = ("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//x//y//EN\r\nBEGIN:VEVENT\r\n"
           "UID:made on the server\r\nDTSTAMP:20260101T000000Z\r\nDTSTART;VALUE=DATE:20260704\r\n"
           "SUMMARY:Their own\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n")


class VdirsyncerTest(caldav.CaldavTest):
    def setUp(self):
        super().setUp()
        self.start_server()
        self.meant = self.tool("make", "12", "99")
        self.sync_for_the_first_time()

    def test_the_first_sync_brings_all_events_to_the_server(self):
        for uid, event in self.meant.items():
            there = self.on_server(uid)
            self.assertEqual(there["X-ANNIVO-IDENTITY"], event["identity"])
            self.assertEqual(there["DTSTART"].dt.strftime("%Y%m%d"), event["start"])
            self.assertEqual(len(there.walk("VALARM")), len(event["alarms"]))
        self.assertEqual(self.tool("read"), self.meant)

    def test_changes_and_removals_of_ours_reach_the_server(self):
        first, second, *_ = self.meant
        self.tool("retitle", first, "Retitled here")
        self.tool("remove", second)
        self.sync()
        self.assertEqual(self.on_server(first)["SUMMARY"], "Retitled here")
        self.assertIsNone(self.on_server(second))

    def test_an_event_edited_on_the_server_is_still_recognised(self):
        for number, uid in enumerate(self.meant):
            calendar = icalendar.Calendar.from_ical(self.request("GET", uid + ".ics"))
            event = calendar.walk("VEVENT")[0]
            event.add("DESCRIPTION", "written on the server")
            if number == 0:
                event["SUMMARY"] = icalendar.vText("Retitled there")
                self.meant[uid].update(title="Retitled there", titleBytes="Retitled%20there")
            self.request("PUT", uid + ".ics", calendar.to_ical())  # its properties in another order
        self.sync()
        with open(self.event_path(uid), encoding="utf-8") as file:
            self.assertIn("DESCRIPTION:written on the server", file.read())
        self.assertEqual(self.tool("read"), self.meant)
        for uid, event in self.meant.items():
            self.assertEqual(self.tool("find", uid), {uid: event})
        self.tool("retitle", uid, "And retitled here")
        self.sync()
        self.assertEqual(self.on_server(uid)["SUMMARY"], "And retitled here")
        self.assertEqual(self.on_server(uid)["DESCRIPTION"], "written on the server")

    def test_events_made_and_removed_on_the_server_come_and_go(self):
        uid, *_ = self.meant
        self.request("DELETE", uid + ".ics")
        self.request("PUT", "theirs.ics", FOREIGN.encode())
        self.sync()
        self.assertFalse(os.path.exists(self.event_path(uid)))
        del self.meant[uid]
        self.assertEqual(self.tool("read"), self.meant)
        found = self.tool("find", "made on the server")
        self.assertEqual(found["made on the server"]["title"], "Their own")

    def test_a_second_sync_has_nothing_to_do(self):
        before = {path: os.stat(path).st_mtime_ns
                  for path in glob.glob(self.calendar_folder() + "/Events/*")}
        self.sync()
        self.assertEqual({path: os.stat(path).st_mtime_ns for path in before}, before)


if __name__ == "__main__":
    interop.main()
