# SPDX-License-Identifier: MIT
"""What the interoperability tests share: homes, the event tool, other programs with time limits."""
import contextlib
import glob
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

TOOL = os.environ["EVENT_TOOL"]


class HomeTest(unittest.TestCase):
    """A test with a temporary home, in which other programs keep their files too."""

    def setUp(self):
        self.home = tempfile.mkdtemp(prefix="annivo-interop-")
        self.addCleanup(shutil.rmtree, self.home)
        self.environment = dict(os.environ, HOME=self.home, TZ="Europe/Berlin", LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=self.home + "/config",
                                XDG_DATA_HOME=self.home + "/data",
                                XDG_CACHE_HOME=self.home + "/cache")
        for name in ("http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY"):
            self.environment.pop(name, None)

    def run_program(self, *arguments, **more):
        """The standard output of a program that must end well within a minute."""
        done = subprocess.run(arguments, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=60, cwd=self.home, **more)
        if done.returncode != 0:
            self.fail("%s ended with %d:\n%s\n%s" % (arguments, done.returncode,
                                                     done.stdout.decode(), done.stderr.decode()))
        return done.stdout.decode()

    def tool(self, command, *arguments):
        """The events that the event tool prints, by UID."""
        out = self.run_program(TOOL, command, self.home, *arguments)
        return {event["uid"]: event for event in map(json.loads, out.splitlines())}

    def calendar_folder(self):
        (folder,) = glob.glob(self.home + "/Library/Calendars/*.calendar")
        return folder

    def event_path(self, uid):
        return self.calendar_folder() + "/Events/" + uid + ".ics"


def free_port():
    with contextlib.closing(socket.socket()) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for_port(port, process):
    deadline = time.monotonic() + 30
    while time.monotonic() < deadline:
        if process.poll() is not None:
            raise RuntimeError("the server ended with %d" % process.returncode)
        with contextlib.closing(socket.socket()) as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        time.sleep(0.05)
    raise RuntimeError("the server does not listen")


def main():
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
