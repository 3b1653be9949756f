# SPDX-License-Identifier: MIT
"""Lets commands run as a person types them: on an empty home, at a fixed time, in a pipe or on a
terminal."""
import glob
import os
import pty
import select
import subprocess
import tempfile
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent.parent
COLUMNS = 100


def clock_library():
    found = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
    if not found:
        raise SystemExit("libfaketime is missing: scripts/setup --tests installs it")
    return found[0]


class Story:
    """An empty home. Commands run in the repository's folder, which nothing of them changes."""

    def __init__(self, product):
        self.folder = tempfile.TemporaryDirectory()
        self.home = Path(self.folder.name)
        self.environment = {
            "HOME": str(self.home),
            "PATH": f"{Path(product).resolve()}/Contents/Linux:/usr/bin:/bin",
            "LANG": "en_US.UTF-8", "TZ": "UTC", "TERM": "xterm",
            "LD_PRELOAD": clock_library(), "FAKETIME": "2026-11-20 18:46:00", "NO_FAKE_STAT": "1",
            "FAKETIME_DONT_FAKE_MONOTONIC": "1", "ASAN_OPTIONS": "verify_asan_link_order=0",
        }

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.folder.cleanup()

    def in_pipe(self, command):
        """Exit status, and what was said on both streams."""
        ended = subprocess.run(["/bin/bash", "-c", command], cwd=REPOSITORY, env=self.environment,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, text=True)
        return ended.returncode, ended.stdout

    def on_terminal(self, command):
        """The same on a terminal, with its colours."""
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(REPOSITORY)
            os.execve("/bin/bash", ["bash", "-c", f"stty cols {COLUMNS}; {command}"],
                      self.environment)
        said = b""
        while select.select([terminal], [], [], 120)[0]:
            try:
                piece = os.read(terminal, 65536)
            except OSError:
                break
            if not piece:
                break
            said += piece
        status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
        os.close(terminal)
        return status, said.decode().replace("\r\n", "\n")
