# SPDX-License-Identifier: MIT
"""The agent still knows its events after a server has rewritten them."""
import glob
import os

import icalendar

import caldav
import interop


def contents(paths):
    found = {}
    for path in paths:
        with open(path, "rb") as file:
            found[path] = file.read()
    return found


class AgentTest(caldav.CaldavTest):
    def setUp(self):
        super().setUp()
        self.run_program(os.environ["SAMPLE_HOME"], self.home)
        self.run_agent()
        self.start_server()
        self.sync_for_the_first_time()
        self.ours = [uid for uid in self.tool("read") if os.path.exists(self.event_path(uid))]
        self.assertGreater(len(self.ours), 5)

    def run_agent(self):
        self.run_program(os.environ["AGENT"])

    def files(self):
        return contents(glob.glob(self.home + "/Library/Calendars/**/*.ics", recursive=True) +
                        glob.glob(self.home + "/Library/Application Support/Annivo 2/*"))

    def edit_on_server(self, uid, **properties):
        """Gives an event these properties; all are in another order after it."""
        calendar = icalendar.Calendar.from_ical(self.request("GET", uid + ".ics"))
        event = calendar.walk("VEVENT")[0]
        for name, value in properties.items():
            event[name] = icalendar.vText(value)
        self.request("PUT", uid + ".ics", calendar.to_ical())

    def test_events_that_the_server_rewrote_are_recognised_and_left_as_they_are(self):
        before = self.files()
        for uid in self.ours:
            self.edit_on_server(uid, DESCRIPTION="written on the server")
        self.sync()
        rewritten = self.files()
        self.assertEqual(set(rewritten), set(before))
        changed = [path for path in before if rewritten[path] != before[path]]
        self.assertEqual(len(changed), len(self.ours))
        self.run_agent()
        self.assertEqual(self.files(), rewritten)

    def test_an_event_that_was_retitled_on_the_server_gets_its_title_back(self):
        uid = self.ours[0]
        title = self.tool("find", uid)[uid]["title"]
        self.edit_on_server(uid, SUMMARY="Theirs", DESCRIPTION="written on the server")
        self.sync()
        rewritten = self.files()
        self.run_agent()
        after = self.files()
        self.assertEqual([path for path in after if after[path] != rewritten.get(path)],
                         [self.event_path(uid)])
        self.sync()
        self.assertEqual(self.on_server(uid)["SUMMARY"], title)
        self.assertEqual(self.on_server(uid)["DESCRIPTION"], "written on the server")

    def test_an_event_that_was_removed_on_the_server_is_made_anew(self):
        uid = self.ours[0]
        event = self.tool("find", uid)[uid]
        self.request("DELETE", uid + ".ics")
        self.sync()
        self.assertFalse(os.path.exists(self.event_path(uid)))
        self.run_agent()
        self.sync()
        anew = [other for other in self.tool("read").values()
                if (other["title"], other["start"]) == (event["title"], event["start"])]
        self.assertEqual(len(anew), 1)
        self.assertNotEqual(anew[0]["uid"], uid)
        self.assertIsNotNone(self.on_server(anew[0]["uid"]))


if __name__ == "__main__":
    interop.main()
