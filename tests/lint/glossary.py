#!/usr/bin/env python3
"""Holds that docs/glossary.md explains every class whose name comes from another world, and names
none that is gone. Exit status 1 and a line for each that it does not."""
import pathlib
import re
import sys

DEFINITION = re.compile(r"^(?:class|struct|enum class) "
                        r"((?:NS|AB|Cal|CF|SU|ZPK|Anv|my)[A-Z]\w+|core_\w+|Gestalt)(?= [{:]| final)",
                        re.M)
ROOMS = ("base", "codecs", "platform", "run", "contacts", "calendar", "format")


def main():
    root = pathlib.Path(sys.argv[1])
    there = set()
    for room in ROOMS:
        for header in (root / room).rglob("*.h"):
            there.update(DEFINITION.findall(header.read_text()))
    table = (root / "docs/glossary.md").read_text().split("## Classes")[1]
    named = set()
    for line in table.splitlines():
        if line.startswith("| `"):
            named.update(re.findall(r"`(\w+)`", line.split("|")[1]))
    wrong = [f"docs/glossary.md does not explain {name}" for name in sorted(there - named)]
    wrong += [f"docs/glossary.md explains {name}, which is no class"
              for name in sorted(named - there)]
    print("\n".join(wrong))
    sys.exit(1 if wrong or not there else 0)


if __name__ == "__main__":
    main()
