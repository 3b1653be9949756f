# SPDX-License-Identifier: MIT
"""Two runs of an agent that was built with the thread sanitizer, over a thousand people: the first
writes all events, the second reads all of them ahead and changes none."""
import os
import plistlib
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

AGENT, SAMPLE_HOME = sys.argv[1:3]


class TheAgentOverAThousandPeople(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name) / "home"
        subprocess.run([SAMPLE_HOME, self.home, "--people", "1000"], check=True,
                       stdout=subprocess.DEVNULL)

    def run_agent(self):
        """A full pass: the agent knows of no earlier one. Gives the lines of its log."""
        own = self.home / "Library/Preferences/org.annivo.Annivo2.Agent.plist"
        own.write_bytes(plistlib.dumps({"doLog": 1}))
        ended = subprocess.run([AGENT], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               env={"HOME": str(self.home), "LANG": "en_US.UTF-8",
                                    "PATH": os.environ["PATH"]})
        self.assertNotIn("ThreadSanitizer", ended.stderr)
        self.assertEqual(ended.returncode, 0, ended.stderr[-2000:])
        return ended.stderr.splitlines()

    def events(self):
        files = self.home.glob("Library/Calendars/*.calendar/Events/*.ics")
        return {file: file.stat().st_mtime_ns for file in files}

    def test_reports_nothing(self):
        found = [line for line in self.run_agent() if "Event already in" in line]
        self.assertEqual(found, [])
        written = self.events()
        self.assertGreater(len(written), 1000)
        found = [line for line in self.run_agent() if "Event already in" in line]
        self.assertGreater(len(found), 1000)
        self.assertEqual(self.events(), written)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
