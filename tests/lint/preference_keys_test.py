#!/usr/bin/env python3
"""Writes literal keys into a folder of its own and expects preference_keys.py to tell of them."""
import pathlib
import subprocess
import sys
import tempfile

CHECK = pathlib.Path(__file__).with_name("preference_keys.py")
HEADER = "platform/foundation/PreferenceKeys.h"
KEYS = (pathlib.Path(__file__).parents[2] / HEADER).read_text()
CASES = [  # file, line, whether it is a breach
    ("run/a.cpp", 'prefs["appRunning"]', True),
    ("run/a.cpp", "prefs[keys::kAppRunning]", False),
    ("contacts/a.cpp", 'objectForKey("lastUpdate")', True),
    ("parent/settings/a.cpp", 'const char* kGroup = "selectedGroupUID";', True),
    ("frameworks/Sparkle/a.cpp", 'text("SUFeedURL")', True),
    ("platform/a.h", 'domain("org.annivo.Annivo2.Agent")', True),
    ("format/a.cpp", 'x("birth")', True),
    ("format/a.cpp", 'row["type"]', True),
    ("format/a.cpp", '{ "days", "2"}', True),
    ("format/a.cpp", 'counted(2, "day", "days")', False),
    ("run/a.cpp", '/// The switch "doLog".', False),
    ("run/a.cpp", 'call();  // "doLog" is on', False),
    ("run/a.cpp", '"the appRunning switch"', False),
    ("parent/command/AlarmsCommand.cpp", '{"days", alarm.days},', False),
    ("parent/command/AlarmsCommand.cpp", '{"type", alarm.kind},', True),
]


def status(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n")
        run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
        return run.returncode, run.stdout


def main():
    wrong = []
    for name, line, breach in CASES:
        code, said = status({HEADER: KEYS, name: line})
        if code != int(breach):
            wrong.append(f"{name}: {line}: exit status {code}, {said}")
    code, said = status({HEADER: ""})
    if code != 1:
        wrong.append(f"a header without keys: exit status {code}, {said}")
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
