#!/usr/bin/env python3
"""Breaks each rule of includes.py in a folder of its own and expects to be told, once a rule."""
import pathlib
import subprocess
import sys
import tempfile

CHECK = pathlib.Path(__file__).with_name("includes.py")
TABLE = pathlib.Path(__file__).parents[2] / "docs/architecture.md"
CASES = [  # file, include line, whether it is a breach
    ("run/a.cpp", '#include "calendar/ZPKCalendarItems.h"', False),
    ("run/a.cpp", '#include "platform/Platform.h"', False),
    ("calendar/a.cpp", '#include "platform/LoggingSwitch.h"', False),
    ("calendar/a.cpp", '#include "run/myController.h"', True),
    ("calendar/a.cpp", '#include "contacts/ContactDateRecord.h"', True),
    ("format/a.cpp", '#include "contacts/ContactDateRecord.h"', False),
    ("format/a.cpp", '#include "contacts/ZPKAddressBookDates.h"', True),
    ("contacts/a.cpp", '#include "run/ZPKLimitSystem.h"', False),
    ("contacts/a.cpp", '#include "calendar/ZPKCalendarItems.h"', True),
    ("contacts/a.cpp", "#include <sqlite3.h>", True),
    ("contacts/a.cpp", "#include <unistd.h>", True),
    ("format/a.cpp", "#include <cctz/time_zone.h>", True),
    ("format/a.cpp", "#include <chrono>", False),
    ("format/a.cpp", "#include <ctime>", True),
    ("base/a.cpp", '#include "codecs/plist/PropertyList.h"', True),
    ("codecs/vcard/a.cpp", "#include <fstream>", True),
    ("codecs/vcard/a.cpp", '#include "platform/foundation/Clock.h"', True),
    ("platform/foundation/a.cpp", "#include <unistd.h>", False),
    ("platform/foundation/a.cpp", '#include "platform/appkit/NSAlert.h"', True),
    ("platform/calendarstore/a.cpp", "#include <pugixml.hpp>", True),
    ("codecs/vcard/a.cpp", "#include <pugixml.hpp>", True),
    ("codecs/plist/a.cpp", "#include <pugixml.hpp>", False),
    ("platform/foundation/a.cpp", '#include "run/myController.h"', True),
    ("run/a.cpp", '#include "myController.h"', True),
    ("parent/settings/a.cpp", '#include "parent/sources/Import.h"', True),
    ("parent/runs/a.cpp", '#include "parent/settings/Session.h"', False),
    ("parent/runs/a.cpp", '#include "parent/command/Console.h"', True),
    ("parent/a.cpp", "#include <string>", True),
    ("parent/command/a.cpp", "#include <CLI/CLI.hpp>", False),
    ("run/a.cpp", "#include <CLI/CLI.hpp>", True),
]


def status(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in {**files, "docs/architecture.md": TABLE.read_text()}.items():
            path = pathlib.Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n")
        run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
        return run.returncode, run.stdout


def main():
    wrong = []
    for name, line, breach in CASES:
        code, said = status({name: line})
        if (code == 1) != breach:
            wrong.append(f"{name}: {line}: exit status {code}, {said}")
    for count, breach in [(25, False), (26, True)]:
        code, said = status({f"format/unit{i}.h": "" for i in range(count)})
        if (code == 1) != breach:
            wrong.append(f"{count} units in a room: exit status {code}, {said}")
    for lines, breach in [(2999, False), (3100, True)]:
        rest = (10_100 - lines) // 3
        files = {f"{room}/a.h": "\n" * (rest - 1) for room in ("base", "run", "contacts")}
        code, said = status({**files, "format/a.h": "\n" * (lines - 1)})
        if (code == 1) != breach:
            wrong.append(f"{lines} of 10,100 lines in a room: exit status {code}, {said}")
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
