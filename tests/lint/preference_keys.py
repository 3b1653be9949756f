#!/usr/bin/env python3
"""Finds the texts of preference keys that stand in the code outside platform/foundation/
PreferenceKeys.h. Exit status 1 and a line for each."""
import pathlib
import re
import sys

HEADER = "platform/foundation/PreferenceKeys.h"
ROOMS = ("base", "codecs", "platform", "contacts", "calendar", "format", "run", "parent",
         "frameworks")
# Keys that are words of every day: these count only where something is looked up by them or paired
# with a value.
ORDINARY = {"type", "days", "time"}
# What looks so and is none.
OTHERS = {("parent/command/AlarmsCommand.cpp", "days"): "a name in the command's JSON",
          ("parent/command/AlarmsCommand.cpp", "time"): "a name in the command's JSON"}


def keys(root):
    text = (root / HEADER).read_text()
    return re.findall(r'inline constexpr const char\* k\w+ =\s*"([^"]+)";', text)


def pattern(key):
    literal = f'"{re.escape(key)}"'
    return re.compile(rf'\[\s*{literal}|\{{\s*{literal}\s*,|objectForKey\({literal}'
                      if key in ORDINARY else literal)


def breaches(root):
    patterns = {key: pattern(key) for key in keys(root)}
    if not patterns:
        yield f"{HEADER}: there are no keys"
    for room in ROOMS:
        for path in sorted((root / room).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix not in (".h", ".cpp") or name == HEADER:
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                code = re.sub(r"(^|\s)//.*", "", line)
                for key, found in patterns.items():
                    if found.search(code) and (name, key) not in OTHERS:
                        yield f'{name}:{number}: "{key}" has a name in {HEADER}'


def main():
    found = list(breaches(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
