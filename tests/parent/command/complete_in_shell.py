#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Presses TAB in a real shell and compares the words that a command then gets.

usage: complete_in_shell.py SHELL ANNIVO

In the place of the command lies a script that prints the words it is given, and asks the real one
for completions only.
"""
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time

CARD = (
    "BEGIN:VCARD\nVERSION:3.0\nFN:Ann\nBDAY:--0610\nCATEGORIES:Book club,Übung\nUID:u1\n"
    "END:VCARD\n"
)
# What is typed, and the words that the command gets. No file is offered but where one is meant.
CASES = [
    ("annivo prev\t", ["preview"]),
    ("annivo calendars cho\tbi\tWo\t", ["calendars", "choose", "birthdays", "Work"]),
    ("annivo calendars choose both Hom\t", ["calendars", "choose", "both", "Home office"]),
    ("annivo settings gro\tBo\t", ["settings", "group", "Book club"]),
    ("annivo settings group Book\\ c\t", ["settings", "group", "Book club"]),
    ("annivo settings group 'Bo\t", ["settings", "group", "Book club"]),
    ('annivo settings group "Book c\t', ["settings", "group", "Book club"]),
    ("annivo settings group Ü\t", ["settings", "group", "Übung"]),
    ("annivo settings logging of\t", ["settings", "logging", "off"]),
    ("annivo settings anniversary-title ord\t", ["settings", "anniversary-title", "ordinal-age"]),
    ("annivo alarms add mess\t--for anni\t", ["alarms", "add", "message", "--for", "anniversaries"]),
    ("annivo list --fr\t", ["list", "--from"]),
    ("annivo import some\t", ["import", "some cards.vcf"]),
    ("annivo settings file some\t", ["settings", "file", "some cards.vcf"]),
    ("annivo people some\t", ["people", "some"]),
]
SHELLS = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], "source <(annivo completions bash)"),
    "zsh": (
        ["zsh", "-f", "-i"],
        "autoload -U compinit; compinit -u -D; source <(annivo completions zsh)",
    ),
    "fish": (["fish", "--no-config", "-i"], "annivo completions fish | source"),
}
PATIENCE = 60  # seconds


class Terminal:
    def __init__(self, arguments, folder, environment):
        self.seen = ""
        self.process, self.file = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(arguments[0], arguments, environment)

    def type(self, keys):
        os.write(self.file, keys.encode())

    def wait_for(self, text):
        """Whether the text appears; what comes after it stays unread."""
        end = time.monotonic() + PATIENCE
        while text not in self.seen and time.monotonic() < end:
            if select.select([self.file], [], [], 0.5)[0]:
                try:
                    self.seen += os.read(self.file, 65536).decode(errors="replace")
                except OSError:
                    break
        found = text in self.seen
        self.seen = self.seen.partition(text)[2] if found else self.seen
        return found

    def end(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)


def prepare(folder, annivo):
    environment = {
        "HOME": str(folder), "PATH": f"{folder}/bin:/usr/bin:/bin", "TERM": "xterm",
        "LANG": "C.UTF-8", "TZ": "UTC", "PS1": "", "XDG_CONFIG_HOME": f"{folder}/.config",
        "HISTFILE": "/dev/null",
    }
    (folder / "some cards.vcf").write_text(CARD)
    for words in (["import", "some cards.vcf"], ["calendars", "create", "Work"],
                  ["calendars", "create", "Home office"]):
        subprocess.run([annivo, *words], cwd=folder, env=environment, check=True,
                       capture_output=True)
    (folder / "bin").mkdir()
    script = folder / "bin/annivo"
    script.write_text(
        f'#!/bin/sh\ncase "$1" in __complete | completions) exec "{annivo}" "$@" ;; esac\n'
        "printf '<%s>' \"$@\"\necho .\n")
    script.chmod(0o755)
    return environment


def main():
    shell, annivo = sys.argv[1], os.path.abspath(sys.argv[2])
    arguments, setup = SHELLS[shell]
    wrong = 0
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as name:
        folder = pathlib.Path(name)
        environment = prepare(folder, annivo)
        terminal = Terminal(arguments, folder, environment)
        # What is typed holds a quotation mark that what is printed has not.
        terminal.type(setup + "\recho rea'd'y\r")
        if not terminal.wait_for("ready"):
            sys.exit(f"{shell} does not start: {terminal.seen!r}")
        for typed, words in CASES:
            terminal.type(typed + "\r")
            if not terminal.wait_for("".join(f"<{word}>" for word in words) + "."):
                print(f"{typed!r} did not give {words}: {terminal.seen!r}")
                wrong += 1
                break
        terminal.end()
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
