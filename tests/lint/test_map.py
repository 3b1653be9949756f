#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the map from the code to its tests. A unit (a header with its sources) is tested by the files
of the mirrored folder that bear its name; where there is none, the table in tests/README.md says what
tests it. Exit status 1 and a line for each unit that nothing tests, each row without a need or with a
file that is gone, and each test file that stands for nothing."""
import re
import sys
from pathlib import Path

ROOMS = ("base", "codecs", "platform", "contacts", "calendar", "format", "run", "parent", "frameworks")
# The whole program; other programs; documents.
OF_NO_UNIT = ("tests/e2e/", "tests/interop/", "tests/docs/")


def rows(readme):
    """Unit -> test files, as the table has it."""
    table = {}
    for line in readme.read_text().splitlines():
        cells = [re.findall(r"`([^`]+)`", cell) for cell in line.strip("|").split("|")]
        if line.startswith("| `") and len(cells) == 2:
            for unit in cells[0]:
                table[unit] = cells[1]
    return table


def breaches(root):
    table = rows(root / "tests/README.md")
    tests = {path.relative_to(root).as_posix()[:-len(".cpp")]
             for path in (root / "tests").rglob("*Test.cpp")}
    units = {path.relative_to(root).as_posix()[:-len(".h")]
             for room in ROOMS for path in (root / room).rglob("*.h")}
    standing = {f"tests/{name}" for names in table.values() for name in names}
    for unit in sorted(units):
        named = {test for test in tests if test.startswith(f"tests/{unit}")}
        standing |= named
        if unit in table and all(f"tests/{test}" in named for test in table[unit]):
            yield f"tests/README.md: {unit} needs no row, its tests bear its name"
        if unit not in table and not named:
            yield f"{unit}.h: no test bears its name, and tests/README.md does not say what tests it"
    for unit in sorted(table.keys() - units):
        yield f"tests/README.md: there is no {unit}.h"
    for test in sorted(standing - tests):
        yield f"tests/README.md: there is no {test}.cpp"
    for test in sorted(tests - standing):
        if not test.startswith(OF_NO_UNIT):
            yield f"{test}.cpp: it bears no unit's name, and tests/README.md does not say what it tests"


if __name__ == "__main__":
    found = list(breaches(Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)
