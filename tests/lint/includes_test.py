#!/usr/bin/env python3
"""Shows that the include check catches each kind of breach and passes clean code."""
import pathlib
import subprocess
import sys
import tempfile

CHECK = pathlib.Path(__file__).with_name("includes.py")
CASES = [  # file, include line, whether it is a breach
    ("run/a.cpp", '#include "calendar/ZPKCalendarItems.h"', False),
    ("run/a.cpp", '#include "platform/Platform.h"', False),
    ("calendar/a.cpp", '#include "run/LoggingSwitch.h"', False),
    ("calendar/a.cpp", '#include "run/myController.h"', True),
    ("calendar/a.cpp", '#include "contacts/ContactDateRecord.h"', True),
    ("contacts/a.cpp", '#include "run/ZPKLimitSystem.h"', False),
    ("contacts/a.cpp", '#include "calendar/ZPKCalendarItems.h"', True),
    ("contacts/a.cpp", "#include <sqlite3.h>", True),
    ("contacts/a.cpp", "#include <unistd.h>", True),
    ("format/a.cpp", "#include <cctz/time_zone.h>", True),
    ("format/a.cpp", "#include <chrono>", False),
    ("format/a.cpp", "#include <ctime>", True),
    ("platform/foundation/a.cpp", "#include <unistd.h>", False),
    ("platform/foundation/a.cpp", '#include "platform/appkit/NSAlert.h"', True),
    ("platform/calendarstore/a.cpp", "#include <plist/plist.h>", True),
    ("platform/foundation/a.cpp", '#include "run/myController.h"', True),
    ("run/a.cpp", '#include "myController.h"', True),
    ("parent/a.cpp", "#include <CLI/CLI.hpp>", False),
    ("run/a.cpp", "#include <CLI/CLI.hpp>", True),
]


def main():
    wrong = []
    for name, line, breach in CASES:
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / name
            path.parent.mkdir(parents=True)
            path.write_text(line + "\n")
            run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
            if (run.returncode == 1) != breach:
                wrong.append(f"{name}: {line}: exit status {run.returncode}, {run.stdout}")
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
