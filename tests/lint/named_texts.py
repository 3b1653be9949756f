#!/usr/bin/env python3
"""Finds texts in the code that have a name in a header: keys of preferences, names of files and
folders. Exit status 1 and a line for each."""
import pathlib
import re
import sys

KEYS = "platform/foundation/PreferenceKeys.h"
NAMES = "platform/foundation/HomeFolders.h"
ROOMS = ("base", "codecs", "platform", "contacts", "calendar", "format", "run", "parent",
         "frameworks")
# Keys that are words of every day: these count only where something is looked up by them or paired
# with a value.
ORDINARY = {"type", "days", "time"}
# The folders that only HomeFolders puts together, whatever they begin or end with.
FOLDERS = re.compile(r'"[^"]*(Library/(Calendars|Preferences|Caches)|Application Support)')
# What looks so and is none, with the reason.
OTHERS = {("parent/settings/AlarmTable.cpp", "days"): "a name in the command's JSON",
          ("parent/settings/AlarmTable.cpp", "time"): "a name in the command's JSON",
          ("run/ZPKLimitSystem.cpp", "Annivo 2"): "the application's name",
          ("parent/command/Program.cpp", "Annivo 2"): "the application's name"}


def constants(root, header):
    return re.findall(r'inline constexpr const char\* k\w+ =\s*"([^"]+)";',
                      (root / header).read_text())


def key_pattern(key):
    literal = f'"{re.escape(key)}"'
    return re.compile(rf'\[\s*{literal}|\{{\s*{literal}\s*,|objectForKey\({literal}'
                      if key in ORDINARY else literal)


def patterns(root):
    """(text, header, pattern) of each text with a name."""
    for key in constants(root, KEYS):
        yield key, KEYS, key_pattern(key)
    for name in constants(root, NAMES):
        yield name, NAMES, re.compile(
            rf'"([^"]*/)?{re.escape(name)}(\.(?!app\b)\w+|/[^"]*)?"')
    yield "a folder of the home", NAMES, FOLDERS


def breaches(root):
    for header in (KEYS, NAMES):
        if not constants(root, header):
            yield f"{header}: there are no constants"
    known = list(patterns(root))
    for room in ROOMS:
        for path in sorted((root / room).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix not in (".h", ".cpp") or name in (KEYS, NAMES):
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                code = re.sub(r"(^|\s)//.*", "", line)
                for text, header, pattern in known:
                    if pattern.search(code) and (name, text) not in OTHERS:
                        yield f'{name}:{number}: "{text}" has a name in {header}'


def main():
    found = list(breaches(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
