#!/usr/bin/env python3
"""Writes texts that have a name into a folder of its own and expects named_texts.py to tell of
them."""
import pathlib
import subprocess
import sys
import tempfile

CHECK = pathlib.Path(__file__).with_name("named_texts.py")
ROOT = pathlib.Path(__file__).parents[2]
HEADERS = {header: (ROOT / header).read_text()
           for header in ("platform/foundation/PreferenceKeys.h",
                          "platform/foundation/HomeFolders.h")}
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
    ("parent/settings/AlarmTable.cpp", '{"days", alarm.days},', False),
    ("parent/settings/AlarmTable.cpp", '{"type", alarm.kind},', True),
    ("contacts/a.cpp", 'ends_with("Metadata")', True),
    ("contacts/a.cpp", 'folder + "/Sources/" + name', True),
    ("contacts/a.cpp", "ends_with(names::kMetadata)", False),
    ("platform/a.cpp", 'path + "/Contents/Info.plist"', True),
    ("calendar/a.cpp", 'folder + "/Annivo 2.xml"', True),
    ("calendar/a.cpp", 'name.ends_with(".ics.tmp")', True),
    ("calendar/a.cpp", 'home + "/Library/Calendars"', True),
    ("calendar/a.cpp", '"There is no folder Application Support."', True),
    ("calendar/a.cpp", '"Events this year: "', False),
    ("calendar/a.cpp", '"The Info.plist of a calendar"', False),
    ("run/ZPKLimitSystem.cpp", '.messageText = "Annivo 2",', False),
    ("run/a.cpp", '.messageText = "Annivo 2",', True),
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
        code, said = status({**HEADERS, name: line})
        if code != int(breach):
            wrong.append(f"{name}: {line}: exit status {code}, {said}")
    for header in HEADERS:
        code, said = status({**HEADERS, header: ""})
        if code != 1:
            wrong.append(f"{header} without constants: exit status {code}, {said}")
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
