# SPDX-License-Identifier: MIT
"""khal lists the events of the Events folder."""
import os

import interop

CONFIG = """
[calendars]
[[anniversaries]]
path = %s/Events
readonly = True

[locale]
timeformat = %%H:%%M
dateformat = %%Y-%%m-%%d
longdateformat = %%Y-%%m-%%d
datetimeformat = %%Y-%%m-%%d %%H:%%M
longdatetimeformat = %%Y-%%m-%%d %%H:%%M
local_timezone = Europe/Berlin
default_timezone = Europe/Berlin

[sqlite]
path = %s/khal.db
"""


class KhalTest(interop.HomeTest):
    def listed(self):
        """Start days and titles by UID, as khal gives them."""
        config = self.home + "/khal.conf"
        with open(config, "w", encoding="utf-8") as file:
            file.write(CONFIG % (self.calendar_folder(), self.home))
        out = self.run_program("khal", "-c", config, "list", "--day-format", "", "--format",
                               "{uid}|{start-date}|{end-date}|{title}", "2026-01-01", "365d")
        events = {}
        for line in out.splitlines():
            if line.count("|") == 3:  # not the second line of a title
                uid, start, end, title = line.split("|")
                events[uid] = (start, end, title)
        return events

    def test_lists_the_events(self):
        meant = self.tool("make", "50", "11")
        for uid in meant:
            title = "Birthday, of; " + uid
            self.tool("retitle", uid, title)
            meant[uid]["title"] = title
        listed = self.listed()
        self.assertEqual(set(listed), set(meant))
        for uid, event in meant.items():
            day = "-".join((event["start"][:4], event["start"][4:6], event["start"][6:]))
            self.assertEqual(listed[uid], (day, day, event["title"]))

    def test_follows_changes_and_removals(self):
        first, second, *_ = self.tool("make", "5", "12")
        self.assertEqual(len(self.listed()), 5)
        self.tool("retitle", first, "Other title")
        self.tool("remove", second)
        listed = self.listed()
        self.assertEqual(listed[first][2], "Other title")
        self.assertNotIn(second, listed)
        self.assertEqual(len(listed), 4)
        self.assertFalse(os.path.exists(self.event_path(second)))


if __name__ == "__main__":
    interop.main()
