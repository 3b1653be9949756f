# SPDX-License-Identifier: MIT
"""A radicale server on this machine, and vdirsyncer between it and a calendar's Events folder."""
import base64
import subprocess
import urllib.error
import urllib.request

import icalendar

import interop

SERVER = """
[server]
hosts = 127.0.0.1:%(port)d
[auth]
type = none
[storage]
filesystem_folder = %(home)s/server
[logging]
level = warning
"""

SYNC = """
[general]
status_path = "%(home)s/status"
[pair events]
a = "local"
b = "server"
collections = [["events", "Events", "anniversaries"]]
conflict_resolution = "b wins"
[storage local]
type = "filesystem"
path = "%(calendar)s"
fileext = ".ics"
[storage server]
type = "caldav"
url = "http://127.0.0.1:%(port)d/ada/"
username = "ada"
password = "x"
"""


class CaldavTest(interop.HomeTest):
    def start_server(self):
        self.port = interop.free_port()
        self.write("radicale.conf", SERVER)
        server = subprocess.Popen(["radicale", "-C", self.home + "/radicale.conf"],
                                  env=self.environment, cwd=self.home)
        self.addCleanup(server.wait, 20)
        self.addCleanup(server.terminate)
        interop.wait_for_port(self.port, server)
        self.request("MKCALENDAR", "")

    def sync_for_the_first_time(self):
        self.write("vdirsyncer.conf", SYNC, calendar=self.calendar_folder())
        self.environment["VDIRSYNCER_CONFIG"] = self.home + "/vdirsyncer.conf"
        self.run_program("vdirsyncer", "discover", stdin=subprocess.DEVNULL)
        self.sync()

    def write(self, name, text, **more):
        with open(self.home + "/" + name, "w", encoding="utf-8") as file:
            file.write(text % dict(more, home=self.home, port=self.port))

    def sync(self):
        self.run_program("vdirsyncer", "sync", stdin=subprocess.DEVNULL)

    def request(self, method, item, body=None):
        """What the server answers; None where it has no such item."""
        url = "http://127.0.0.1:%d/ada/anniversaries/%s" % (self.port, urllib.request.quote(item))
        request = urllib.request.Request(url, data=body, method=method)
        request.add_header("Authorization", "Basic " + base64.b64encode(b"ada:x").decode())
        if body is not None:
            request.add_header("Content-Type", "text/calendar; charset=utf-8")
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            return opener.open(request, timeout=20).read()
        except urllib.error.HTTPError as error:
            if error.code == 404:
                return None
            raise

    def on_server(self, uid):
        answer = self.request("GET", uid + ".ics")
        return answer and icalendar.Calendar.from_ical(answer).walk("VEVENT")[0]
