#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the manual pages against mandoc's own check, and that of annivo against its commands.

usage: manual_test.py PRODUCT
"""
import json
import re
import subprocess
import sys

from story import REPOSITORY, Story

PAGES = [REPOSITORY / "docs/man" / name for name in ("annivo.1", "AnnivoAgent.1")]


def complaints():
    said = subprocess.run(["mandoc", "-Tlint", *PAGES], capture_output=True, text=True).stdout
    # The pages name one another, and need not be installed to be checked.
    known = re.compile(r"referenced manual not found: Xr (annivo|AnnivoAgent) 1")
    return [line for line in said.splitlines() if not known.search(line)]


def names(story):
    """Every command, option and setting that the program knows."""
    found = set()

    def add(*command):
        status, help_text = story.in_pipe(" ".join(["annivo", *command, "--help"]))
        if status != 0:
            sys.exit(help_text)
        found.update(re.findall(r"--[a-z]+", help_text))
        commands = help_text.partition("Commands:\n")[2]
        for name in re.findall(r"^  ([a-z]+)", commands, re.M):
            found.add(name)
            add(*command, name)

    add()
    found.update(json.loads(story.in_pipe("annivo settings --json")[1]))
    return found


def main():
    wrong = complaints()
    page = subprocess.run(["mandoc", "-Tascii", PAGES[0]], capture_output=True, text=True,
                          check=True).stdout
    words = set(re.findall(r"(?<![\w-])--?[a-z-]+[a-z]|[a-z-]+[a-z]", re.sub(".\b", "", page)))
    with Story(sys.argv[1]) as story:
        known = names(story)
    if len(known) < 40:
        sys.exit(f"only {len(known)} names were found")
    wrong += [f"annivo.1 does not tell of {name}" for name in sorted(known - words)]
    sys.exit("\n".join(wrong) or 0)


if __name__ == "__main__":
    main()
