#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs what README.md tells a new user to type and compares what it shows.

usage: readme_test.py pipe|terminal PRODUCT

In the README "..." stands for any lines, or for the rest of a line.
"""
import re
import sys

from story import REPOSITORY, Story


def steps():
    """(command, expected lines) of the README's console blocks."""
    text = (REPOSITORY / "README.md").read_text()
    found = []
    for block in re.findall(r"^```console\n(.*?)^```", text, re.S | re.M):
        for line in block.splitlines():
            if line.startswith("$ "):
                found.append((line[2:], []))
            else:
                found[-1][1].append(line)
    return found


def pattern(lines):
    parts = []
    for line in lines:
        if line.strip() == "...":
            parts.append(r"(?:.*\n)*")
        else:
            parts.append(re.escape(line).replace(r"\.\.\.", ".*") + r"\n")
    return "".join(parts)


def main():
    where, product = sys.argv[1:]
    with Story(product) as story:
        run = story.in_pipe if where == "pipe" else story.on_terminal
        all_steps = steps()
        if len(all_steps) < 8:
            sys.exit("README.md tells no story")
        for command, expected in all_steps:
            status, said = run(command)
            said = re.sub(r"\x1b\[[0-9;]*m", "", said)
            if status != 0 or not re.fullmatch(pattern(expected), said):
                sys.exit(f"$ {command}\nended with status {status} and said\n{said}\n"
                         f"where README.md has\n" + "\n".join(expected))


if __name__ == "__main__":
    main()
